#include "xml/xml_sink.h"

#include <array>
#include <cstring>
#include <limits>
#include <utility>

#include "mox_classes/streams.h"
#include "xml/byte_block.h"
#include "xml/xml_writer.h"

namespace {

// What makes a write worth while. It stays within a processor's own cache.
constexpr std::size_t kPiece = 65536;
// So many units are encoded before the room is checked again, and so many can one of them become.
constexpr std::ptrdiff_t kRun = 1024;
constexpr std::size_t kMostPerUnit = 6;

constexpr WCHAR kReplacement = 0xFFFD;

// What a code unit below 128 becomes; null is the unit itself. A carriage return is left out.
constexpr std::array<const char*, 128> kEscapes = [] {
    std::array<const char*, 128> texts{};
    texts['>'] = "&gt;";
    texts['<'] = "&lt;";
    texts['"'] = "&quot;";
    texts['&'] = "&amp;";
    texts['\''] = "&apos;";
    return texts;
}();

bool IsLead(WCHAR unit) {
    return (unit & 0xFC00) == 0xD800;
}

bool IsTrail(WCHAR unit) {
    return (unit & 0xFC00) == 0xDC00;
}

int Clamped(long long amount) {
    return static_cast<int>(std::min<long long>(amount, std::numeric_limits<int>::max()));
}

// The bytes that leave the block as they are end at the first mark.
template <bool escape>
[[gnu::always_inline]] inline auto Marked(const TByteBlock& block) {
    if constexpr (escape) {
        return (block.Odd() | block.Is('<') | block.Is('>') | block.Is('&') | block.Is('"') |
                block.Is('\'') | block.Is('\r') | block.Is('\n'))
            .Bits();
    } else {
        return block.Odd().Bits();
    }
}

void Store(const TByteBlock& block, const WCHAR*, char* out) {
    block.StoreHalf(out);
}

void Store(const TByteBlock&, const WCHAR* units, WCHAR* out) {
    std::memcpy(out, units, TByteBlock::kHalf * sizeof(WCHAR));
}

char* PutUtf8(char32_t point, char* out) {
    const auto tail = [&](int shift) {
        *out++ = static_cast<char>(0x80 | ((point >> shift) & 0x3F));
    };
    if (point < 0x800) {
        *out++ = static_cast<char>(0xC0 | (point >> 6));
    } else if (point < 0x10000) {
        *out++ = static_cast<char>(0xE0 | (point >> 12));
        tail(6);
    } else {
        *out++ = static_cast<char>(0xF0 | (point >> 18));
        tail(12);
        tail(6);
    }
    tail(0);
    return out;
}

}  // namespace

template <class Unit>
Unit* TXmlSink<Unit>::PutOdd(WCHAR unit, Unit* out) {
    if constexpr (sizeof(Unit) == sizeof(WCHAR)) {
        *out = unit;
        return out + 1;
    } else {
        if (lead_ != 0) {
            const WCHAR lead = std::exchange(lead_, WCHAR{0});
            if (IsTrail(unit)) {
                return PutUtf8(0x10000 + ((lead - 0xD800u) << 10) + (unit - 0xDC00u), out);
            }
            out = PutUtf8(kReplacement, out);
        }
        if (unit < 0x80) return out;
        if (!IsLead(unit)) return PutUtf8(IsTrail(unit) ? kReplacement : unit, out);
        lead_ = unit;
        return out;
    }
}

template <class Unit>
template <bool escape>
int TXmlSink<Unit>::PutUnits(const WCHAR* text, int length) {
    int lines = 1;
    for (const WCHAR* const end = text + length; text < end;) {
        const WCHAR* const run_end = text + std::min<std::ptrdiff_t>(end - text, kRun);
        Reserve(static_cast<std::size_t>(run_end - text) * kMostPerUnit + kOdd + TByteBlock::kHalf);
        Unit* out = at_;
        const WCHAR* plain_from = text;  // from here on every unit has become itself
        while (text < run_end) {
            if (lead_ == 0 && run_end - plain_from >= TByteBlock::kHalf) {
                // The last block overlaps the one before it.
                const std::ptrdiff_t back =
                    std::max<std::ptrdiff_t>(TByteBlock::kHalf - (run_end - text), 0);
                text -= back;
                out -= back;
                const TByteBlock block = TByteBlock::OfUnits(text);
                Store(block, text, out);
                const std::ptrdiff_t plain = TByteMarks::First(Marked<escape>(block));
                text += plain;
                out += plain;
                if (plain == TByteBlock::kHalf) continue;
            }
            const WCHAR unit = *text++;
            plain_from = text;
            if (escape && unit == TEXT('\r')) continue;
            if (unit >= 0x80 || lead_ != 0) out = PutOdd(unit, out);
            if (unit >= 0x80) continue;
            const char* replacement = escape ? kEscapes[unit] : nullptr;
            if (replacement == nullptr) {
                *out++ = static_cast<Unit>(unit);
                if (unit == TEXT('\n')) ++lines;
            } else {
                while (*replacement != 0) *out++ = static_cast<Unit>(*replacement++);
            }
        }
        at_ = out;
    }
    return lines;
}

template <class Unit>
void TXmlSink<Unit>::Put(const UnicodeString& text, int length) {
    PutUnits<false>(text.t_str(), length);
}

template <class Unit>
int TXmlSink<Unit>::PutEscaped(const UnicodeString& text) {
    const WCHAR* first = text.t_str();
    const WCHAR* last = first + text.Length();
    while (first < last && last[-1] <= 0x20) --last;
    while (first < last && *first <= 0x20) ++first;
    return PutUnits<true>(first, static_cast<int>(last - first));
}

template <class Unit>
void TXmlSink<Unit>::MakeRoom(std::size_t units) {
    const auto used = static_cast<std::size_t>(at_ - first_);
    if (stream_ != nullptr && used >= kPiece) return Flush();
    const std::size_t size = std::max(static_cast<std::size_t>(end_ - first_) * 2, used + units);
    auto larger = std::make_unique_for_overwrite<Unit[]>(size);
    std::copy(first_, at_, larger.get());
    long_text_ = std::move(larger);
    first_ = long_text_.get();
    at_ = first_ + used;
    end_ = first_ + size;
}

template <class Unit>
void TXmlSink<Unit>::Flush() {
    const auto bytes = static_cast<int>((at_ - first_) * static_cast<int>(sizeof(Unit)));
    at_ = first_;
    if (bytes > 0) written_ += stream_->Write(first_, bytes);
}

template <class Unit>
int TXmlSink<Unit>::Finish() {
    if (lead_ != 0) PutMarkup("");
    Flush();
    return Clamped(written_);
}

template <>
int TXmlSink<WCHAR>::FinishInto(UnicodeString& out) {
    const std::ptrdiff_t length = at_ - first_;
    const UnicodeString text(first_, length);
    if (out.IsEmpty()) {
        out = text;
    } else {
        out += text;
    }
    return Clamped(length);
}

template class TXmlSink<char>;
template class TXmlSink<WCHAR>;

int UnicodeStringToStream(Classes::TStream* stream, const UnicodeString& text,
                          TCodePage code_page) {
    switch (code_page) {
        case System::kCodePageAnsi:
        case System::kCodePageUtf8: {
            TXmlSink<char> sink(stream);
            sink.Put(text);
            return sink.Finish();
        }
        case System::kCodePageUtf16: {
            TXmlSink<WCHAR> sink(stream);
            sink.Put(text);
            return sink.Finish();
        }
        default:
            return 0;
    }
}
