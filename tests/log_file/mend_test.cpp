// Damage of every kind against a model: what was not touched is shown, in its order, and the next
// writer keeps it so that a reader that only follows the links can walk the ring.
#include <algorithm>
#include <random>

#include "log_file/log_fixture.h"
#include "log_file/log_record.h"

using namespace test;

namespace {

constexpr DWORD kLimit = 6000;

struct Entry {
    std::string text;
    DWORD offset, size;
};
using Entries = std::vector<Entry>;

Entries Shown(const LogImage& image) {
    Entries entries;
    Mox::TLogReader reader;
    if (!reader.Assign(image.data(), image.size()) && !reader.StartWithoutHeader()) return entries;
    while (const Mox::TLogMsg* message = reader.Next()) {
        entries.push_back({Narrow(message->text), reader.Place().offset, reader.Place().size});
    }
    return entries;
}

// As readers of old walk: from the oldest slot, by the links, as often as the header counts.
Entries Walked(const LogImage& image) {
    Mox::TLogFileHeader h{};
    std::memcpy(&h, image.data(), sizeof(h));
    Entries entries;
    DWORD at = h.oldest;
    for (DWORD i = 0; i < h.count; ++i) {
        if (at == h.wrap) at = 96;
        DWORD link = 0;
        if (at + 4 > image.size()) break;
        std::memcpy(&link, image.data() + at, sizeof(link));
        if (link <= at + 4 || link > image.size()) break;
        Mox::TLogMsg* message = Mox::TLogMsg::Alloc();
        Mox::DecodeLogMsg(*message, image.data() + at + 4, link - at - 4);
        entries.push_back({Narrow(message->text), at, link - at});
        message->Free();
        at = link;
    }
    EXPECT_EQ(at, DWORD{h.write_position});
    return entries;
}

// Whether all of `wanted` are among `found`, in this order.
std::string Missing(const Entries& wanted, const Entries& found) {
    auto at = found.begin();
    for (const Entry& entry : wanted) {
        at = std::find_if(at, found.end(), [&](const Entry& e) { return e.text == entry.text; });
        if (at == found.end()) return entry.text + " at " + std::to_string(entry.offset);
        ++at;
    }
    return {};
}

class Mended : public LogFileTest {
  protected:
    std::size_t Random(std::size_t below) { return random_() % below; }

    void Fill() {
        Replace({});
        Record(kLimit);
        const std::size_t count = 20 + Random(150);
        const bool equal = Random(3) == 0;
        for (std::size_t i = 0; i < count; ++i) {
            const std::string text = std::to_string(1000 + i);
            Log(text + std::string(equal ? 20 : Random(90), '.'));
            Sleep(i % 16 == 0 ? 1 : 0);
        }
        Close();
        sound_ = Image();
        before_ = Shown(sound_);
    }
    LogImage WithPatches(LogImage image, std::size_t from, std::size_t end) {
        for (std::size_t i = 1 + Random(10); i > 0; --i) {
            const std::size_t at = from + Random(end - from);
            const bool noise = Random(2) == 0;
            for (std::size_t b = at; b < std::min(end, at + 1 + Random(64)); ++b) {
                image[b] = static_cast<BYTE>(noise ? Random(256) : 0);
            }
        }
        return image;
    }
    LogImage Damaged() {
        LogImage image = sound_;
        switch (Random(5)) {
            case 0:
                image[Random(32)] ^= static_cast<BYTE>(1U << Random(8));
                return image;
            case 1:
                std::fill(image.begin(), image.begin() + 96, static_cast<BYTE>(Random(2) * 255));
                return image;
            case 2:
                image.resize(96 + Random(image.size() - 96));
                return image;
            default:
                return WithPatches(image, 96, image.size());
        }
    }
    // Those of `entries` none of whose bytes changed.
    Entries Untouched(const Entries& entries, const LogImage& image) const {
        Entries untouched;
        for (const Entry& e : entries) {
            const bool there = e.offset + e.size <= image.size();
            if (there && std::equal(image.begin() + e.offset, image.begin() + e.offset + e.size,
                                    sound_.begin() + e.offset)) {
                untouched.push_back(e);
            }
        }
        return untouched;
    }
    LogImage AfterAppend(const LogImage& image) {
        Replace(image);
        Record(kLimit);
        Log("appended");
        Close();
        return Image();
    }

    std::mt19937 random_{20261126};
    LogImage sound_;
    Entries before_;
};

TEST_F(Mended, WhatWasNotTouchedIsShownAndKept) {
    for (int run = 0; run < 150; ++run) {
        if (run % 5 == 0) Fill();
        const Entries kept_sound = Walked(AfterAppend(sound_));
        const LogImage image = Damaged();
        const Entries untouched = Untouched(before_, image);
        if (untouched.empty()) continue;
        EXPECT_EQ(Missing(untouched, Shown(image)), "") << run;

        const LogImage mended = AfterAppend(image);
        const Entries walked = Walked(mended);
        Entries wanted = Untouched(kept_sound, image);
        wanted.erase(std::remove_if(wanted.begin(), wanted.end(),
                                    [](const Entry& e) { return e.text == "appended"; }),
                     wanted.end());
        EXPECT_EQ(Missing(wanted, walked), "") << run;
        ASSERT_FALSE(walked.empty()) << run;
        EXPECT_EQ(walked.back().text, "appended") << run;
        EXPECT_LE(mended.size(), kLimit) << run;
        if (HasFailure()) return;
    }
}

// What holds no record and is no log's header is somebody else's.
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
    Fill();
    LogImage image = sound_;
    std::fill(image.begin() + 96, image.end(), BYTE{'x'});
    const LogImage fresh = AfterAppend(image);
    EXPECT_EQ(Walked(fresh).back().text, "appended");
    const Wide copy = Name() + TEXT(".damaged");
    const HANDLE file = OpenShared(copy);
    EXPECT_EQ(GetFileSize(file, nullptr), image.size());
    FileTest::Close(file);
    DeleteFileW(copy.c_str());
}

// Damage that lies behind what is looked at must not keep the writer for ever.
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
    EXPECT_EQ(Walked(AfterAppend(image)).back().text, "appended");
}

}  // namespace
