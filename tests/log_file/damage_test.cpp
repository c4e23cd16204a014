// A damaged log file: the writer goes on within the limit. The reader shows the sound records and
// names the bytes that it left out.
#include <algorithm>

#include "log_file/log_fixture.h"

using namespace test;

namespace {

constexpr DWORD kLimit = 1000;
constexpr DWORD kSlot = 4 + 30 + 7 + 2 + 20;  // of a text of 20 characters

using Damage = std::function<void(Mox::TLogFileHeader&, LogImage&)>;

class Damaged : public LogFileTest {
  protected:
    // A ring that has wrapped: slots at the front, the oldest behind the write position.
    void Fill() {
        Record(kLimit);
        for (int i = 0; i < 20; ++i) Log(Numbered(i));
        Close();
        ASSERT_NE(Header().wrap, 0u);
        ASSERT_EQ(Read().texts.size(), Header().count);
    }
    static std::string Numbered(int i) {
        const std::string digits = std::to_string(i);
        return digits + std::string(20 - digits.size(), '.');
    }
    void Break(const Damage& damage) {
        LogImage image = Image();
        Mox::TLogFileHeader header = Header();
        damage(header, image);
        std::memcpy(image.data(), &header, std::min(image.size(), sizeof(header)));
        Replace(image);
    }
};

void SetLink(LogImage& image, DWORD slot, DWORD link) {
    std::memcpy(image.data() + slot, &link, sizeof(link));
}

const struct {
    const char* what;
    Damage damage;
} kDamages[] = {
    {"write position past the limit", [](auto& h, auto&) { h.write_position = 5000; }},
    {"write position inside the header", [](auto& h, auto&) { h.write_position = 10; }},
    {"write position inside a slot", [](auto& h, auto&) { h.write_position -= 7; }},
    {"oldest inside a slot", [](auto& h, auto&) { h.oldest += 5; }},
    {"oldest past the wrap", [](auto& h, auto&) { h.oldest = 990; }},
    {"wrap past the limit", [](auto& h, auto&) { h.wrap = 0x7FFFFFFF; }},
    {"no wrap", [](auto& h, auto&) { h.wrap = 0; }},
    {"count too high", [](auto& h, auto&) { h.count = 0xFFFFFFFF; }},
    {"count one too high", [](auto& h, auto&) { h.count = h.count + 1; }},
    {"count too low", [](auto& h, auto&) { h.count = 1; }},
    {"count nothing", [](auto& h, auto&) { h.count = 0; }},
    {"another version", [](auto& h, auto&) { h.version = 2; }},
    {"limit below the header", [](auto& h, auto&) { h.limit = 50; }},
    {"links in a circle", [](auto& h, auto& i) { SetLink(i, h.oldest, h.oldest); }},
    {"link backwards", [](auto& h, auto& i) { SetLink(i, h.oldest, 96); }},
    {"link far away", [](auto& h, auto& i) { SetLink(i, h.oldest, 0xFFFFFFF0); }},
    {"slots overwritten", [](auto&, auto& i) { std::fill(i.begin() + 96, i.end(), BYTE{'x'}); }},
    {"file cut short", [](auto&, auto& i) { i.resize(300); }},
    {"header cut short", [](auto&, auto& i) { i.resize(40); }},
    {"header of zeros", [](auto& h, auto&) { h = {}; }},
};

TEST_F(Damaged, TheReaderSaysSoAndTheWriterGoesOnWithinTheLimit) {
    for (const auto& row : kDamages) {
        Replace({});
        Fill();
        Break(row.damage);
        const ReadBack damaged = Read();
        EXPECT_TRUE(!damaged.skips.empty() || damaged.texts.empty()) << row.what;
        EXPECT_TRUE(!damaged.skips.empty() || !damaged.error.empty()) << row.what;
        EXPECT_LT(damaged.texts.size(), 20u) << row.what;
        Record(kLimit);
        for (int i = 100; i < 140; ++i) {
            Log(Numbered(i));
            ASSERT_LE(Image().size(), kLimit) << row.what;
            const Texts texts = Read().texts;
            ASSERT_FALSE(texts.empty()) << row.what;
            ASSERT_EQ(texts.back(), Numbered(i)) << row.what;
        }
        Close();
        DeleteFileW((Name() + TEXT(".damaged")).c_str());
        const ReadBack read = Read();
        EXPECT_EQ(read.texts.size(), (kLimit - 96) / kSlot) << row.what;
        EXPECT_TRUE(read.skips.empty()) << row.what << ": " << read.skips.front();
        EXPECT_EQ(Header().limit, kLimit) << row.what;
    }
}

TEST_F(Damaged, NoFileAndNoLogAreErrors) {
    EXPECT_EQ(Read().error.substr(0, 3), "[2]");
    Replace(LogImage(200, 'x'));
    EXPECT_EQ(Read().error, "the file is no log, or one of another version");
    Replace({});
    EXPECT_TRUE(Read().error.empty());
}

}  // namespace
