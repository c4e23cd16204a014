// Damage of every kind against a model: what was not touched is shown, in its order, and the next
// writer keeps it so that a reader that only follows the links can walk the ring. A test and a fuzz
// target make the damage.
#pragma once

#include <windows.h>

#include <algorithm>
#include <cstring>
#include <span>
#include <string>
#include <vector>

#include "log_file/log_format.h"
#include "log_file/log_reader.h"
#include "log_file/log_record.h"
#include "log_file/log_recorder.h"
#include "mox_classes/containers/streams.h"

namespace test {

using LogImage = std::vector<BYTE>;

inline LogImage LoadImage(const UnicodeString& file) {
    Classes::TFileStream stream(file, 0x40);
    LogImage image(static_cast<std::size_t>(stream.GetSize()));
    if (!image.empty()) stream.ReadBuffer(image.data(), static_cast<int>(image.size()));
    return image;
}

inline void SaveImage(const UnicodeString& file, const LogImage& image) {
    Classes::TFileStream stream(file, Classes::TFileStream::kCreate);
    if (!image.empty()) stream.WriteBuffer(image.data(), static_cast<int>(image.size()));
}

class DamageModel {
  public:
    static constexpr DWORD kLimit = 6000;

    struct Entry {
        std::string text;
        DWORD offset, size;
        bool notice;  // of a repair
    };
    using Entries = std::vector<Entry>;

    explicit DamageModel(const UnicodeString& file) : file_(file) {}

    // The first bytes choose a log, the others the damage. Returns an empty text when only damaged
    // records are lost; else the record that was lost, and its place.
    std::string Try(std::span<const BYTE> input) {
        Fill(Next(input));
        const LogImage image = Damaged(input);
        const Entries untouched = Untouched(Shown(sound_), image);
        if (untouched.empty()) return {};
        std::string fault = Missing(untouched, Shown(image));
        if (!fault.empty()) return "not shown: " + fault;
        Entries kept = Untouched(Walked(AfterAppend(sound_)), image);
        kept.erase(std::remove_if(kept.begin(), kept.end(), IsAppended), kept.end());
        const LogImage mended = AfterAppend(image);
        fault = Kept(kept, mended);
        if (!fault.empty()) return "after the repair: " + fault;
        const LogImage begun = WithSomeFillers(image, mended);
        fault = Missing(untouched, Shown(begun));
        if (!fault.empty()) return "not shown after a repair that was killed: " + fault;
        fault = Kept(kept, AfterAppend(begun));
        return fault.empty() ? fault : "after a repair that was killed: " + fault;
    }

    // As readers of old walk: from the oldest slot, by the links, as often as the header counts.
    // Nothing when that does not end at the write position.
    static Entries Walked(const LogImage& image) {
        Mox::TLogFileHeader h{};
        std::memcpy(&h, image.data(), std::min(image.size(), sizeof(h)));
        Entries entries;
        DWORD at = h.oldest;
        for (DWORD i = 0; i < h.count; ++i) {
            if (at == h.wrap) at = Mox::kFirstSlot;
            DWORD link = 0;
            if (at + Mox::kLinkSize > image.size()) return {};
            std::memcpy(&link, image.data() + at, sizeof(link));
            if (link <= at + Mox::kLinkSize || link > image.size()) return {};
            Mox::TLogMsg* message = Mox::TLogMsg::Alloc();
            const DWORD record = at + Mox::kLinkSize;
            Mox::DecodeLogMsg(*message, image.data() + record, link - record);
            entries.push_back(MakeEntry(*message, at, link - at));
            message->Free();
            at = link;
        }
        return at == h.write_position ? entries : Entries();
    }
    LogImage AfterAppend(const LogImage& image) {
        SaveImage(file_, image);
        Append({"appended"});
        return LoadImage(file_);
    }
    // Different ones, for every third kind of equal length.
    static std::vector<std::string> Texts(unsigned count, unsigned kind) {
        std::vector<std::string> texts;
        for (unsigned i = 0, random = kind; i < count; ++i) {
            random = random * 1103515245U + 12345U;
            const unsigned length = kind % 3 == 0 ? 20 : (random >> 16) % 90;
            texts.push_back(std::to_string(1000 + i) + std::string(length, '.'));
        }
        return texts;
    }
    // With times a millisecond apart.
    void Append(const std::vector<std::string>& texts) {
        Mox::TLogRecorder recorder;
        recorder.Open(file_, kLimit);
        for (const std::string& text : texts) {
            Mox::TLogMsg* message = Mox::TLogMsg::Alloc();
            time_ += 10000;
            std::memcpy(&message->time, &time_, sizeof(time_));
            message->level = 'i';
            message->text = UnicodeString(text.c_str());
            bool owned = true;
            Mox::LogRecorderProc(nullptr, message, &recorder, &owned);
        }
    }
    void SetBack(unsigned milliseconds) { time_ -= milliseconds * 10000U; }

    static Entries Shown(const LogImage& image) {
        Entries entries;
        Mox::TLogReader reader;
        if (!reader.Assign(image.data(), image.size()) && !reader.StartWithoutHeader()) return {};
        while (const Mox::TLogMsg* message = reader.Next()) {
            entries.push_back(MakeEntry(*message, reader.Place().offset, reader.Place().size));
        }
        return entries;
    }

  private:
    static BYTE Next(std::span<const BYTE>& input) {
        if (input.empty()) return 0;
        const BYTE first = input.front();
        input = input.subspan(1);
        return first;
    }
    static std::size_t Below(std::size_t bound, std::span<const BYTE>& input) {
        const std::size_t high = Next(input);
        return bound == 0 ? 0 : (high << 8 | Next(input)) % bound;
    }
    static Entry MakeEntry(const Mox::TLogMsg& message, DWORD offset, DWORD size) {
        std::string text;
        for (int i = 1; i <= message.text.Length(); ++i) text += static_cast<char>(message.text[i]);
        return {text, offset, size, message.level == '>'};
    }
    static bool IsAppended(const Entry& entry) { return entry.text == "appended"; }

    void Fill(BYTE kind) {
        SaveImage(file_, {});
        Append(Texts(20 + kind % 150U, kind));
        sound_ = LoadImage(file_);
    }

    LogImage Damaged(std::span<const BYTE> input) const {
        LogImage image = sound_;
        const BYTE kind = Next(input);
        if (kind % 5 == 0) {
            image[Below(32, input)] ^= static_cast<BYTE>(1U << kind / 32U);
            Mox::TLogFileHeader h{};
            std::memcpy(&h, image.data(), sizeof(h));
            // A damaged limit that equals the end of the ring looks like a correct one.
            if (h.limit == h.write_position) return sound_;
        } else if (kind % 5 == 1) {
            std::fill_n(image.begin(), Mox::kHeaderSize, static_cast<BYTE>(kind / 128 * 255));
        } else if (kind % 5 == 2) {
            image.resize(Mox::kFirstSlot + Below(image.size() - Mox::kFirstSlot, input));
        }
        // Each patch: where, how long, with what. Behind the header, unless that is sound.
        while (kind % 5 > 2 && !input.empty()) {
            std::size_t at = Mox::kFirstSlot + Below(image.size() - Mox::kFirstSlot, input);
            const std::size_t end = std::min<std::size_t>(image.size(), at + 1 + Next(input) % 64);
            unsigned noise = Next(input);
            for (const bool zeros = noise % 2 == 0; at < end; ++at, noise = noise * 167 + 13)
                image[at] = static_cast<BYTE>(zeros ? 0 : noise);
        }
        return image;
    }

    // Those of `entries` none of whose bytes changed.
    Entries Untouched(const Entries& entries, const LogImage& image) const {
        Entries untouched;
        for (const Entry& e : entries) {
            const auto at = static_cast<std::ptrdiff_t>(e.offset);
            const auto end = at + static_cast<std::ptrdiff_t>(e.size);
            const bool there = end <= std::ssize(image) && end <= std::ssize(sound_);
            if (there && std::equal(image.begin() + at, image.begin() + end, sound_.begin() + at))
                untouched.push_back(e);
        }
        return untouched;
    }

    // The one of `wanted` that is not among `found`, in this order and once; empty when all are.
    static std::string Missing(const Entries& wanted, const Entries& found) {
        auto at = found.begin();
        for (const Entry& entry : wanted) {
            const auto same = [&](const Entry& e) { return e.text == entry.text; };
            at = std::find_if(at, found.end(), same);
            if (at == found.end() || std::count_if(found.begin(), found.end(), same) != 1)
                return entry.text + " at " + std::to_string(entry.offset);
            ++at;
        }
        return {};
    }

    static std::string Kept(const Entries& wanted, const LogImage& mended) {
        const Entries walked = Walked(mended);
        if (walked.empty() || !IsAppended(walked.back())) return "the links cannot be followed";
        if (mended.size() > kLimit) return "the file has passed its limit";
        return Missing(wanted, walked);
    }

    // Of the records that fill gaps only every second one.
    static LogImage WithSomeFillers(LogImage image, const LogImage& mended) {
        bool fills = true;
        for (const Entry& e : Walked(mended)) {
            const auto at = static_cast<std::ptrdiff_t>(e.offset);
            const bool filler = e.notice && e.text.substr(0, 3) != "The";
            if (filler && fills && e.offset + e.size <= image.size())
                std::copy_n(mended.begin() + at, e.size, image.begin() + at);
            fills = fills != filler;
        }
        return image;
    }

    const UnicodeString file_;
    std::uint64_t time_ = 0x01DA2B3C4D5E6F70;
    LogImage sound_;
};

}  // namespace test
