// Damaged files: the next writer repairs the file, begins a new log, or does not touch it.
#include <algorithm>
#include <functional>
#include <random>

#include "log_file/damage_model.h"
#include "log_file/log_fixture.h"

using namespace test;

namespace {

class Mended : public LogFileTest {
  protected:
    LogImage AfterAppend(const LogImage& image) {
        return DamageModel(Name().c_str()).AfterAppend(image);
    }
    static std::string NewestText(const LogImage& image) {
        const DamageModel::Entries walked = DamageModel::Walked(image);
        return walked.empty() ? "" : walked.back().text;
    }
};

TEST_F(Mended, WhatWasNotTouchedIsShownAndKept) {
    std::mt19937 random(20261126);
    for (int run = 0; run < 150 && !HasFailure(); ++run) {
        LogImage input(2 + random() % 50);
        for (BYTE& byte : input) byte = static_cast<BYTE>(random());
        EXPECT_EQ(DamageModel(Name().c_str()).Try(input), "") << run;
    }
}

// All slots that are left are credible, but something does not bear them out.
TEST_F(Mended, TheFirstAppendSeesWhatTheSlotsAloneDoNotShow) {
    const std::function<void(Mox::TLogFileHeader&, LogImage&)> rows[] = {
        [](auto& h, auto&) { h.write_position = h.write_position + 8; },
        [](auto& h, auto&) { h.limit = h.limit | 0x10000000; },
        [](auto&, auto& image) { image.resize(image.size() - 5); },
    };
    for (const auto& row : rows) {
        Replace({});
        DamageModel(Name().c_str()).Append(DamageModel::Texts(150, 3));
        LogImage image = Image();
        Mox::TLogFileHeader header = Header();
        row(header, image);
        std::memcpy(image.data(), &header, sizeof(header));
        const LogImage mended = AfterAppend(image);
        EXPECT_EQ(NewestText(mended), "appended") << &row - rows;
        for (const DamageModel::Entry& e : DamageModel::Walked(mended))
            EXPECT_EQ(e.text.find('\0'), e.text.npos);
        EXPECT_EQ(Header().limit, DWORD{DamageModel::kLimit});
    }
}

// Without a header, only times and gaps show which record is the newest. The rows: a ring that has
// not wrapped, and one that has.
TEST_F(Mended, AClockThatWasSetBackDoesNotTurnTheOrder) {
    const struct { unsigned before, back, after; } rows[] = {{20, 19, 3}, {150, 100, 20}};
    for (const auto& row : rows) {
        DamageModel model(Name().c_str());
        Replace({});
        model.Append(DamageModel::Texts(row.before, 1));
        model.SetBack(row.back);
        model.Append(DamageModel::Texts(row.after, 2));
        LogImage image = Image();
        const DamageModel::Entries sound = DamageModel::Shown(image);
        std::fill_n(image.begin(), 96, BYTE{0});
        const DamageModel::Entries found = DamageModel::Shown(image);
        ASSERT_EQ(found.size(), sound.size()) << row.before;
        for (std::size_t i = 0; i < found.size(); ++i) EXPECT_EQ(found[i].offset, sound[i].offset);
    }
}

// A file without a record and without a header of a log belongs to another program.
TEST_F(Mended, WhatIsNoLogIsNotWritten) {
    const std::string png("\x89PNG\r\n\x1A\n\0\0\0\rIHDR", 16);
    const std::string files[] = {"text", std::string(5000, 'a'), png + std::string(300, '\0'),
                                 std::string("\1\0\0\0", 4)};
    for (const std::string& bytes : files) {
        const LogImage image(bytes.begin(), bytes.end());
        EXPECT_EQ(AfterAppend(image), image) << bytes.substr(0, 10);
    }
}

TEST_F(Mended, WhereNothingIsLeftACopyStays) {
    Record(6000);
    for (int i = 0; i < 50; ++i) Log("lost");
    Close();
    LogImage image = Image();
    std::fill(image.begin() + 96, image.end(), BYTE{'x'});
    const LogImage fresh = AfterAppend(image);
    EXPECT_EQ(NewestText(fresh), "appended");
    const Wide copy = Name() + TEXT(".damaged");
    const HANDLE file = OpenShared(copy);
    EXPECT_EQ(GetFileSize(file, nullptr), image.size());
    FileTest::Close(file);
    DeleteFileW(copy.c_str());
}

// The writer looks only at the first part of such a file. Damage behind it must not stop the writer
// for ever.
TEST_F(Mended, DamageInAFileThatIsTooLargeEndsTheRing) {
    constexpr DWORD kLarge = 66U << 20;
    LogImage image(kLarge);
    Mox::TLogFileHeader header{};
    header.version = Mox::TLogFileHeader::kVersion;
    header.counter = 5;
    header.count = 2;
    header.limit = kLarge;
    header.oldest = 65U << 20;
    header.wrap = kLarge;
    header.write_position = header.oldest - 10;
    std::memcpy(image.data(), &header, sizeof(header));
    EXPECT_EQ(NewestText(AfterAppend(image)), "appended");
}

}  // namespace
