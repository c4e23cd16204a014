// Strings and messages as the log file stores them, and the format page's example.
#include "log_file/log_record.h"

#include <fstream>
#include <sstream>

#include "log_file/log_fixture.h"
#include "mox_classes/memory/memory.h"
#include "support/source_folder.h"

using namespace test;
using Mox::TLogMsg;

namespace {

std::string Written(const UnicodeString& text, int code_page) {
    const auto page = static_cast<System::TCodePage>(code_page);
    std::string bytes(static_cast<std::size_t>(Mox::WriteUnicodeString(nullptr, text, page)), '\0');
    void* cursor = bytes.data();
    EXPECT_EQ(Mox::WriteUnicodeString(&cursor, text, page), static_cast<int>(bytes.size()));
    EXPECT_EQ(cursor, bytes.data() + bytes.size());
    return bytes;
}

// The string that these bytes hold, and in `used` how far the cursor went.
UnicodeString ReadString(std::string bytes, std::size_t& used) {
    bytes.resize(bytes.size() + 8);
    void* cursor = bytes.data();
    const UnicodeString text = Mox::ReadUnicodeString(&cursor);
    used = static_cast<std::size_t>(static_cast<char*>(cursor) - bytes.data());
    return text;
}

TEST(LogRecord, StringsAreTaggedByEncodingAndWidth) {
    const UnicodeString e_acute = WCHAR(0xE9);
    const struct {
        UnicodeString text;
        int code_page;
        std::string bytes;
    } rows[] = {{UnicodeString(), 0, std::string(1, '\0')},
                {UnicodeString(), 1200, std::string(1, '\0')},
                {e_acute, 0, "\x11\x02\xC3\xA9"},
                {e_acute, 12345, "\x11\x02\xC3\xA9"},
                {e_acute, 1200, std::string("\x31\x01\xE9\x00", 4)},
                {e_acute, 1201, std::string("\x21\x01\x00\xE9", 4)},
                {TEXT("a"), 20127,
                 "\xF1\x01"
                 "a"}};
    for (const auto& row : rows) EXPECT_EQ(Written(row.text, row.code_page), row.bytes);
    const UnicodeString long_text = UnicodeString::StringOfChar('x', 300);
    EXPECT_EQ(Written(long_text, 0).substr(0, 4), std::string("\x12\x2C\x01x", 4));
    EXPECT_EQ(Written(UnicodeString::StringOfChar('x', 70000), 0).substr(0, 5),
              std::string("\x14\x70\x11\x01\x00", 5));
}

TEST(LogRecord, EveryReadableEncodingComesBack) {
    const struct {
        std::string bytes;
        UnicodeString text;
        std::size_t used;
    } rows[] = {{std::string(1, '\0'), UnicodeString(), 1},
                {"\x11\x02\xC3\xA9", WCHAR(0xE9), 4},
                {std::string("\x32\x01\x00\xE9\x00", 5), WCHAR(0xE9), 5},
                {std::string("\x21\x01\x00\xE9", 4), WCHAR(0xE9), 4},
                {std::string("\x54\x01\x00\x00\x00\xE9\x00\x00\x00", 9), WCHAR(0xE9), 9},
                {std::string("\x41\x01\x00\x00\x00\xE9", 6), WCHAR(0xE9), 6},
                {"\xF1\x01"
                 "a",
                 UnicodeString(), 1},
                {"\x13\x01"
                 "a",
                 UnicodeString(), 1},
                {"\x71\x01"
                 "a",
                 UnicodeString(), 1}};
    for (const auto& row : rows) {
        std::size_t used = 0;
        EXPECT_EQ(ReadString(row.bytes, used), row.text);
        EXPECT_EQ(used, row.used);
    }
}

TLogMsg Sample() {
    TLogMsg message;
    message.time = {0x01234567, 0x01DA0000};
    message.level = 'X';
    message.processId = 11;
    message.threadId = 22;
    message.sessionId = 0xFFFFFFFF;
    message.line = 44;
    message.source = TEXT("source");
    message.text = UnicodeString::StringOfChar('t', 400);
    return message;
}

std::string Written(TLogMsg& message) {
    std::string bytes(static_cast<std::size_t>(Mox::WriteLogMsg(nullptr, &message)), '\0');
    void* cursor = bytes.data();
    EXPECT_EQ(Mox::WriteLogMsg(&cursor, &message), static_cast<int>(bytes.size()));
    return bytes;
}

TEST(LogRecord, EveryFieldOfAMessageComesBack) {
    BYTE block[16] = {1, 2, 3};
    TLogMsg message = Sample();
    message.data = block;
    message.dataSize = -16;
    std::string bytes = Written(message);
    EXPECT_EQ(bytes[0], 0x62);
    TLogMsg read;
    void* cursor = bytes.data();
    EXPECT_EQ(Mox::ReadLogMsg(&read, &cursor), static_cast<int>(bytes.size()));
    EXPECT_EQ(cursor, bytes.data() + bytes.size());
    EXPECT_EQ(std::memcmp(&read.time, &message.time, sizeof(read.time)), 0);
    EXPECT_EQ(read.level, 'X');
    EXPECT_EQ(read.ProcessId(), 11u);
    EXPECT_EQ(read.ThreadId(), 22u);
    EXPECT_EQ(read.SessionId(), 0xFFFFFFFFu);
    EXPECT_EQ(read.line, 44);
    EXPECT_EQ(read.source, message.source);
    EXPECT_EQ(read.text, message.text);
    EXPECT_EQ(read.dataLabel, UnicodeString());
    ASSERT_EQ(read.dataSize, 16);
    EXPECT_EQ(std::memcmp(read.data, block, 16), 0);
    System::FreeMemory(read.data);
}

TEST(LogRecord, ALabelIsStoredOnlyForABlock) {
    TLogMsg message = Sample();
    const std::size_t bare = Written(message).size();
    message.dataSize = -5;
    EXPECT_EQ(Written(message).size(), bare + 1);
    BYTE block[16] = {};
    message.data = block;
    message.dataSize = 16;
    EXPECT_EQ(Written(message).size(), bare + 1 + 16);
}

TEST(LogRecord, BytesThatAreNoRecordAreSteppedOver) {
    for (const char tag : {'\x60', '\x63', '\x71', '\x00'}) {
        std::string bytes(8, tag);
        TLogMsg message;
        void* cursor = bytes.data();
        EXPECT_EQ(Mox::ReadLogMsg(&message, &cursor), 1);
        EXPECT_EQ(cursor, bytes.data() + 1);
    }
}

TEST(LogRecord, ATruncatedRecordIsNotReadPastItsEnd) {
    TLogMsg message = Sample();
    message.text = TEXT("text");
    const std::string whole = Written(message);
    for (std::size_t size = 0; size <= whole.size(); ++size) {
        const std::vector<char> part(whole.begin(), whole.begin() + static_cast<int>(size));
        TLogMsg read;
        EXPECT_EQ(Mox::DecodeLogMsg(read, part.data(), size) == nullptr, size == whole.size());
        std::vector<char> body(part);
        void* cursor = body.data();
        EXPECT_EQ(Mox::ReadLogMsg(&read, &cursor, static_cast<int>(size)), static_cast<int>(size));
        if (read.dataSize > 0) System::FreeMemory(read.data);
    }
}

// The bytes of the page's example: lines of an offset and up to 16 bytes.
LogImage PageExample() {
    std::ifstream page(test::SourceFolder() + "/docs/formats/log_file.md");
    LogImage image;
    bool inside = false;
    for (std::string line; std::getline(page, line);) {
        if (line.rfind("```", 0) == 0) {
            inside = line == "```hex";
        } else if (inside) {
            std::istringstream bytes(line.substr(line.find(' ')));
            for (unsigned byte = 0; bytes >> std::hex >> byte;) {
                image.push_back(static_cast<BYTE>(byte));
            }
        }
    }
    return image;
}

TEST(LogRecord, ThePagesExampleIsReadAndWrittenBack) {
    const LogImage image = PageExample();
    ASSERT_GT(image.size(), 100u);
    Mox::TLogFileHeader header{};
    std::memcpy(&header, image.data(), sizeof(header));
    EXPECT_EQ(header.write_position, image.size());
    Mox::TLogReader reader;
    ASSERT_TRUE(reader.Assign(image.data(), image.size()));
    std::string rewritten;
    DWORD count = 0;
    while (const TLogMsg* message = reader.Next()) {
        ++count;
        TLogMsg copy = *message;
        const std::string record = Written(copy);
        const auto link = static_cast<DWORD>(96 + rewritten.size() + 4 + record.size());
        rewritten.append(reinterpret_cast<const char*>(&link), sizeof(link)).append(record);
    }
    EXPECT_EQ(reader.SkipCount(), 0);
    EXPECT_EQ(count, header.count);
    EXPECT_EQ(rewritten, std::string(image.begin() + 96, image.end()));
}

}  // namespace
