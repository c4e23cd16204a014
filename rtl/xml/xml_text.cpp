#include "xml/xml_text.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "xml/byte_block.h"

namespace {

struct TEscape {
    std::string_view bytes;
    WCHAR unit;
};
constexpr TEscape kEscapes[] = {
    {"&lt;", TEXT('<')},   {"&gt;", TEXT('>')},    {"&amp;", TEXT('&')},
    {"&quot;", TEXT('"')}, {"&apos;", TEXT('\'')},
};

// Decodes a decimal reference of a few digits into `out`. Returns the position behind it, or null.
const unsigned char* DecodeNumber(const unsigned char* at, const unsigned char* end, WCHAR* out) {
    constexpr std::uint32_t kMost = 0xFFFF;
    std::uint32_t value = 0;
    for (; at < end && *at >= '0' && *at <= '9' && value <= kMost; ++at) {
        value = value * 10 + (*at - std::uint32_t{'0'});
    }
    if (at == end || *at != ';' || value == 0 || value > kMost) return nullptr;
    *out = static_cast<WCHAR>(value);
    return at + 1;
}

// Decodes one of the common references at `at` into `out`. Returns the position behind it, or null.
const unsigned char* DecodeReference(const unsigned char* at, const unsigned char* end,
                                     WCHAR* out) {
    if (end - at > 2 && at[1] == '#') return DecodeNumber(at + 2, end, out);
    for (const TEscape& row : kEscapes) {
        const std::size_t size = row.bytes.size();
        if (static_cast<std::size_t>(end - at) < size) continue;
        if (std::memcmp(at, row.bytes.data(), size) != 0) continue;
        *out = row.unit;
        return at + size;
    }
    return nullptr;
}

bool IsTail(unsigned char octet) {
    return (octet & 0xC0) == 0x80;
}

// Decodes the character at `at`, which is not ASCII, into `out`. Returns the position behind it, or
// null when the bytes are not well-formed.
const unsigned char* DecodeCharacter(const unsigned char* at, const unsigned char* end,
                                     WCHAR*& out) {
    const std::uint32_t lead = *at;
    const std::ptrdiff_t left = end - at;
    if (lead < 0xE0) {
        if (lead < 0xC2 || left < 2 || !IsTail(at[1])) return nullptr;
        *out++ = static_cast<WCHAR>((lead & 0x1F) << 6 | (at[1] & 0x3Fu));
        return at + 2;
    }
    if (left < 3 || !IsTail(at[1]) || !IsTail(at[2])) return nullptr;
    if (lead < 0xF0) {
        const std::uint32_t point = (lead & 0xF) << 12 | (at[1] & 0x3Fu) << 6 | (at[2] & 0x3Fu);
        if (point < 0x800 || (point >= 0xD800 && point < 0xE000)) return nullptr;
        *out++ = static_cast<WCHAR>(point);
        return at + 3;
    }
    if (left < 4 || !IsTail(at[3])) return nullptr;
    const std::uint32_t point =
        (lead & 0x1F) << 18 | (at[1] & 0x3Fu) << 12 | (at[2] & 0x3Fu) << 6 | (at[3] & 0x3Fu);
    if (point < 0x10000 || point > 0x10FFFF) return nullptr;
    *out++ = static_cast<WCHAR>(0xD800 + ((point - 0x10000) >> 10));
    *out++ = static_cast<WCHAR>(0xDC00 + (point & 0x3FF));
    return at + 4;
}

// Marks the terminator and the characters that a text must not hold as they are. One comparison
// finds two of the three.
template <char terminator>
TByteMarks Ends(const TByteBlock& block) {
    if constexpr (terminator == '<') return block.IsEither('<', '>') | block.Is('&');
    return block.IsEither('"', '&') | block.Is('>');
}

}  // namespace

template <char terminator>
const unsigned char* TXmlText::Decode(const unsigned char* at, const unsigned char* end,
                                      bool utf8) {
    WCHAR* out = units_;
    while (at != nullptr && at < end && out < units_ + kMost) {
        if (end - at >= TByteBlock::kSize) {
            const TByteBlock block(at);
            block.Widen(out);
            const auto bits = (block.Odd() | Ends<terminator>(block)).Bits();
            const std::ptrdiff_t plain = bits == 0 ? TByteBlock::kSize : TByteMarks::First(bits);
            at += plain;
            out += plain;
            if (bits == 0) continue;
        }
        const unsigned char octet = *at;
        if (octet == static_cast<unsigned char>(terminator)) {
            end_ = out;
            return at;
        }
        if (octet == 0 || octet == '>' || (octet >= 0x80 && !utf8)) return nullptr;
        if (octet >= 0x80) {
            // Scripts other than Latin have runs of such characters.
            while (at != nullptr && at < end && *at >= 0x80 && out < units_ + kMost) {
                at = DecodeCharacter(at, end, out);
            }
        } else if (octet == '&') {
            at = DecodeReference(at, end, out++);
        } else {
            *out++ = octet;
            ++at;
        }
    }
    return nullptr;
}

template const unsigned char* TXmlText::Decode<'<'>(const unsigned char*, const unsigned char*,
                                                    bool);
template const unsigned char* TXmlText::Decode<'"'>(const unsigned char*, const unsigned char*,
                                                    bool);

UnicodeString TXmlText::Trimmed() const {
    const WCHAR* first = units_;
    const WCHAR* last = end_;
    while (first < last && *first <= 0x20) ++first;
    while (first < last && last[-1] <= 0x20) --last;
    return UnicodeString(first, last - first);
}
