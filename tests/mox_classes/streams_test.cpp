// Streams: sizes, positions and their limits; exact reads; copies; open modes.
#include "mox_classes/containers/streams.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

#include "mox_classes/containers/memory_stream.h"
#include "support/fresh_host_root.h"
#include "support/thrown_text.h"

namespace {

using Classes::TFileStream;
using Classes::TMemoryStream;
using Classes::TSeekOrigin;
using Classes::TStream;
using test::ThrownText;

constexpr unsigned short kBeginning = 0, kCurrent = 1, kEnd = 2;

// Shows the capacity, which is the deriving classes' business, and counts the pieces in which it is
// read.
class OpenStream : public TMemoryStream {
  public:
    std::vector<int> pieces;
    int Capacity() const { return FCapacity; }
    int Read(void* buffer, int count) override {
        pieces.push_back(count);
        return TMemoryStream::Read(buffer, count);
    }
};

void Fill(TStream& stream, int bytes) {
    const std::string data(static_cast<std::size_t>(bytes), 'd');
    stream.WriteBuffer(data.data(), bytes);
}

std::string ContentOf(const TMemoryStream& stream, std::size_t bytes) {
    return {static_cast<const char*>(stream.GetMemory()), bytes};
}

}  // namespace

TEST(MemoryStream, GrowsInStepsAndReleasesAll) {
    OpenStream stream;
    Fill(stream, 1);
    EXPECT_EQ(stream.GetSize(), 1);
    EXPECT_EQ(stream.Capacity(), 8192);
    Fill(stream, 8191);
    EXPECT_EQ(stream.Capacity(), 8192);
    Fill(stream, 1);
    EXPECT_EQ(stream.Capacity(), 16384);
    EXPECT_EQ(ContentOf(stream, 8193), std::string(8193, 'd'));
    stream.SetSize(0);
    EXPECT_EQ(stream.Capacity(), 0);
    EXPECT_EQ(stream.GetMemory(), nullptr);
    EXPECT_EQ(stream.GetPosition(), 0);
    Fill(stream, 3);
    stream.Clear();
    EXPECT_EQ(stream.GetSize() + stream.GetPosition() + stream.Capacity(), 0);
}

TEST(MemoryStream, SetSizePullsThePositionBack) {
    TMemoryStream stream;
    stream.SetPosition(100);
    stream.SetSize(10);
    EXPECT_EQ(stream.GetPosition(), 10);
    stream.SetPosition(5);
    stream.SetSize(10);
    EXPECT_EQ(stream.GetPosition(), 5);
    EXPECT_EQ(ThrownText([&] { stream.SetSize(-1); }), TEXT("Out of range"));
    EXPECT_EQ(stream.GetSize(), 10);
}

TEST(MemoryStream, PositionsOutsideTheBlockReadNothing) {
    TMemoryStream stream;
    char unit = 0;
    EXPECT_EQ(stream.Seek(-1, kBeginning), -1);
    EXPECT_EQ(stream.Read(&unit, 1), 0);
    EXPECT_EQ(stream.Write(&unit, 1), 0);
    stream.SetPosition(3);
    EXPECT_EQ(stream.Read(&unit, 1), 0);
    EXPECT_EQ(stream.Write("x", 1), 1);
    EXPECT_EQ(ContentOf(stream, 4), std::string("\0\0\0x", 4));
}

TEST(MemoryStream, NothingWrapsNear2GiB) {
    TMemoryStream stream;
    EXPECT_EQ(ThrownText([&] { stream.SetPosition(std::int64_t{1} << 31); }), TEXT("Out of range"));
    EXPECT_EQ(ThrownText([&] { stream.SetSize64(std::int64_t{1} << 31); }), TEXT("Out of range"));
    EXPECT_EQ(stream.Seek(-(std::int64_t{1} << 31), TSeekOrigin::Beginning), INT_MIN);
    EXPECT_EQ(stream.Seek(-1, kCurrent), -1);
    EXPECT_EQ(stream.GetPosition(), INT_MIN);
    stream.SetPosition(INT_MAX);
    EXPECT_EQ(stream.Write("x", 1), 0);
    EXPECT_EQ(stream.Seek(1, kCurrent), -1);
    EXPECT_EQ(stream.GetPosition(), INT_MAX);
    EXPECT_EQ(stream.GetSize(), 0);
}

TEST(MemoryStream, WritesAPartOfItselfWhileItMoves) {
    TMemoryStream stream;
    Fill(stream, 8190);
    stream.WriteBuffer("ab", 2);
    stream.SaveToStream(&stream);
    EXPECT_EQ(stream.GetSize(), 16384);
    EXPECT_EQ(ContentOf(stream, 16384).substr(16382), "ab");
}

TEST(Stream, ExactReadsOrNone) {
    TMemoryStream stream;
    Fill(stream, 5);
    stream.SetPosition(1);
    char buffer[10] = {};
    EXPECT_EQ(ThrownText([&] { stream.ReadBuffer(buffer, 10); }), TEXT("Stream read failed"));
    EXPECT_EQ(std::string(buffer), "dddd");
    stream.ReadBuffer(buffer, 0);
    stream.Seek(-1, kBeginning);
    EXPECT_EQ(ThrownText([&] { stream.WriteBuffer(buffer, 1); }), TEXT("Stream write failed"));
    EXPECT_EQ(stream.Seek(-2, kEnd), 3);
    EXPECT_EQ(stream.Seek(7, 9), 3) << "an unknown origin moves nothing";
}

TEST(Stream, CopyFromMovesBoundedPieces) {
    OpenStream source;
    Fill(source, 100000);
    TMemoryStream target;
    EXPECT_EQ(target.CopyFrom(&source, 0), 100000);
    EXPECT_EQ(source.pieces, (std::vector<int>{61440, 38560}));
    EXPECT_EQ(target.GetSize(), 100000);
    EXPECT_EQ(ThrownText([&] { target.CopyFrom(&source, 1); }), TEXT("Stream read failed"));
    EXPECT_EQ(ThrownText([&] { target.CopyFrom(&source, -1); }), TEXT("Out of range"));
    TMemoryStream empty;
    EXPECT_EQ(target.CopyFrom(&empty, 0), 0);
}

namespace {

class FileStream : public testing::Test {
  protected:
    // A name in the temporary folder, which on Linux lies inside the fresh root.
    FileStream() {
        WCHAR folder[MAX_PATH + 1] = {};
        GetTempPathW(MAX_PATH, folder);
        name_ = UnicodeString(folder) + TEXT("qv_stream_test.bin");
    }
    ~FileStream() override { DeleteFileW(name_.t_str()); }
    // The code with which opening fails.
    UnicodeString Failure(unsigned short mode) {
        const UnicodeString text = ThrownText([&] { TFileStream(name_, mode); });
        return text.SubString(1, text.Pos(TEXT("]")));
    }

    test::FreshHostRoot root_;
    UnicodeString name_;
};

}  // namespace

TEST_F(FileStream, KeepsPositionAndSize) {
    TMemoryStream memory;
    Fill(memory, 10);
    memory.SaveToFile(name_);
    TFileStream file(name_, 2);
    file.SetPosition(4);
    EXPECT_EQ(file.GetSize(), 10);
    EXPECT_EQ(file.GetPosition(), 4);
    file.SetSize(6);
    EXPECT_EQ(file.GetPosition(), 6);
    EXPECT_EQ(file.Seek(-1, kBeginning), -1);
    EXPECT_EQ(file.Seek(std::int64_t{3} << 31, TSeekOrigin::Beginning), std::int64_t{3} << 31);
    EXPECT_EQ(file.Seek(0, kCurrent), -1) << "no 32-bit form";
    EXPECT_EQ(file.Read(&memory, 0) + file.Write(&memory, -1), 0);
    file.SetPosition(5);
    char last = 0;
    EXPECT_EQ(file.Read(&last, 1), 1);
    EXPECT_EQ(last, 'd');
}

TEST_F(FileStream, LoadsIntoMemory) {
    {
        TFileStream file(name_, TFileStream::kCreate, 0);
        file.WriteBuffer("hello", 5);
    }
    TMemoryStream memory;
    memory.SetPosition(2);
    memory.LoadFromFile(name_);
    EXPECT_EQ(ContentOf(memory, 5), "hello");
    EXPECT_EQ(memory.GetPosition(), 2);
}

TEST_F(FileStream, ModesSayWhatOthersMayDo) {
    EXPECT_EQ(Failure(0), TEXT("[2]"));
    EXPECT_EQ(Failure(3), TEXT("[87]"));
    EXPECT_EQ(Failure(0x50), TEXT("[87]"));
    {
        TFileStream creator(name_, TFileStream::kCreate);
        EXPECT_EQ(Failure(0x40), TEXT("[32]")) << "the creator shares nothing";
    }
    TFileStream reader(name_, 0x20);
    TFileStream second_reader(name_, 0x40);
    EXPECT_EQ(Failure(0x41), TEXT("[32]"));
    EXPECT_EQ(reader.Write("x", 1), 0);
}
