// Text on its way out: UTF-16 units become UTF-8, or stay what they are, and are escaped.
#pragma once

#include <windows.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

#include "xml/byte_block.h"

namespace xml_encode {

// So many units can one unit become, and so many more may be written behind the last one.
inline constexpr std::size_t kMostPerUnit = 6;
inline constexpr std::size_t kSlack = 16;

inline constexpr WCHAR kReplacement = 0xFFFD;

// What a code unit below 128 becomes; null is the unit itself. A carriage return is left out.
inline constexpr std::array<const char*, 128> kEscapes = [] {
    std::array<const char*, 128> texts{};
    texts['>'] = "&gt;";
    texts['<'] = "&lt;";
    texts['"'] = "&quot;";
    texts['&'] = "&amp;";
    texts['\''] = "&apos;";
    texts['\r'] = "";
    return texts;
}();

inline bool IsLead(WCHAR unit) {
    return (unit & 0xFC00) == 0xD800;
}

inline bool IsTrail(WCHAR unit) {
    return (unit & 0xFC00) == 0xDC00;
}

inline char* PutPoint(char32_t point, char* out) {
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

// What goes on from one piece of a text to the next.
struct TState {
    int lines = 1;
    WCHAR lead = 0;  // UTF-8: a lead surrogate at the end, whose other half may follow
};

// Ends the lead surrogate that is still open with what comes next, which may not be its other half.
// A carriage return that is left out does not come between the two.
template <bool escape, class Unit>
[[gnu::always_inline]] inline Unit* PutTrail(const WCHAR*& at, const WCHAR* end, Unit* out,
                                             TState& state) {
    while (escape && at < end && *at == TEXT('\r')) ++at;
    if (at == end) return out;
    const WCHAR lead = std::exchange(state.lead, WCHAR{0});
    if constexpr (sizeof(Unit) == sizeof(char)) {
        if (!IsTrail(*at)) return PutPoint(kReplacement, out);
        return PutPoint(0x10000 + ((lead - 0xD800u) << 10) + (*at++ - 0xDC00u), out);
    }
    return out;
}

// One unit that is not put as it is, or that is counted.
template <bool escape, class Unit>
[[gnu::always_inline]] inline Unit* PutSpecial(const WCHAR*& at, const WCHAR* end, Unit* out,
                                               TState& state) {
    const WCHAR unit = *at++;
    if (unit < 0x80) {
        if (unit == TEXT('\n')) ++state.lines;
        const char* replacement = escape ? kEscapes[unit] : nullptr;
        if (replacement == nullptr) *out++ = static_cast<Unit>(unit);
        while (replacement != nullptr && *replacement != 0) {
            *out++ = static_cast<Unit>(*replacement++);
        }
        return out;
    }
    if constexpr (sizeof(Unit) == sizeof(WCHAR)) {
        *out = unit;
        return out + 1;
    } else {
        if (!IsLead(unit)) return PutPoint(IsTrail(unit) ? kReplacement : unit, out);
        state.lead = unit;
        return PutTrail<escape>(at, end, out, state);
    }
}

// Marks the units of a block that are no plain ASCII; with `escape` also those that are escaped,
// left out or counted, and for want of a comparison all control characters up to these.
template <bool escape>
[[gnu::always_inline]] inline TByteMarks Marked(const TByteBlock& bytes) {
    if constexpr (!escape) return bytes.Odd();
    return bytes.Below('\r' + 1) | bytes.IsEither('<', '>') | bytes.IsEither('&', '\'') |
           bytes.Is('"');
}

// `count` units, up to eight, of a block whose first `skip` units stand in front of them; false
// when one of them is no plain ASCII, whatever has been written by then.
template <bool escape, class Unit>
[[gnu::always_inline]] inline bool PutPlainBlock(const TUnitBlock& block, std::ptrdiff_t skip,
                                                 std::ptrdiff_t count, const WCHAR* at, Unit* out) {
    const TByteBlock bytes = block.Narrow();
    if constexpr (sizeof(Unit) == sizeof(WCHAR)) {
        std::copy_n(at, count, out);
    } else {
        bytes.StoreHalf(out, skip);
    }
    return ((Marked<escape>(bytes).Bits() >> skip) & ((1u << count) - 1)) == 0;
}

// The same with accents: every unit as two bytes, of which the second is passed over when it is 0.
[[gnu::always_inline]] inline char* PutPairs(const TUnitBlock& block, std::ptrdiff_t skip,
                                             std::ptrdiff_t count, char* out) {
    std::uint16_t pairs[TUnitBlock::kSize];
    block.StorePairs(pairs);
    const auto put = [&](std::uint16_t pair) {
        std::memcpy(out, &pair, sizeof pair);
        out += 1 + (pair >> 15);
    };
    if (count == TUnitBlock::kSize) {
        for (const std::uint16_t pair : pairs) put(pair);
    } else {
        for (std::ptrdiff_t i = skip; i < skip + count; ++i) put(pairs[i]);
    }
    return out;
}

// The same with one accent, unit `accent` of them, which most blocks with accents have: what stands
// in front of it is in place, what stands behind it is put whole.
[[gnu::always_inline]] inline char* PutAccent(const TByteBlock& bytes, std::ptrdiff_t skip,
                                              std::ptrdiff_t count, std::ptrdiff_t accent,
                                              const WCHAR* at, char* out) {
    const WCHAR unit = at[accent];
    out[accent] = static_cast<char>(0xC0 | (unit >> 6));
    out[accent + 1] = static_cast<char>(0x80 | (unit & 0x3F));
    bytes.StoreHalfBehind(out + accent + 2, skip + accent);
    return out + count + 1;
}

// The same for any text: stops at the first unit that PutSpecial has to put. True when there is
// none.
template <bool escape, class Unit>
[[gnu::always_inline]] inline bool PutBlock(const TUnitBlock& block, std::ptrdiff_t skip,
                                            std::ptrdiff_t count, const WCHAR*& at, Unit*& out) {
    const TByteBlock bytes = block.Narrow();
    const unsigned odd = bytes.Odd().Bits();
    unsigned special = Marked<escape>(bytes).Bits() & ~odd;
    if constexpr (sizeof(Unit) == sizeof(char)) special |= block.FromThreeBytes();
    special = (special >> skip) & ((1u << count) - 1);
    const std::ptrdiff_t plain = special == 0 ? count : std::countr_zero(special);
    if constexpr (sizeof(Unit) == sizeof(WCHAR)) {
        out = std::copy_n(at, plain, out);
    } else {
        const unsigned accents = (odd >> skip) & ((1u << plain) - 1);  // and zeros
        const std::ptrdiff_t first = std::countr_zero(accents);
        bytes.StoreHalf(out, skip);
        if (accents == 0) {
            out += plain;
        } else if ((accents & (accents - 1)) == 0 && at[first] != 0) {
            out = PutAccent(bytes, skip, plain, first, at, out);
        } else {
            out = PutPairs(block, skip, plain, out);
        }
    }
    at += plain;
    return special == 0;
}

// Puts the units of a string's block up to the first that is no plain ASCII; true when there is
// none. In front of the first unit of such a block lie twelve bytes of its header and behind the
// last one a terminator, so that a vector that ends behind any unit but the last lies within the
// block: the last units of a text, and a text of less than eight, which most are, take one step as
// well.
template <bool escape, class Unit>
[[gnu::always_inline]] inline bool PutPlain(const WCHAR*& at, const WCHAR* end, Unit*& out) {
    constexpr std::ptrdiff_t kSize = TUnitBlock::kSize;
    for (; end - at >= kSize; at += kSize, out += kSize) {
        if (!PutPlainBlock<escape>(TUnitBlock(at), 0, kSize, at, out)) return false;
    }
    const std::ptrdiff_t count = end - at;
    if (count == 0) return true;
    const std::ptrdiff_t skip = kSize - 1 - count;
    if (!PutPlainBlock<escape>(TUnitBlock(at - skip), skip, count, at, out)) return false;
    at += count;
    out += count;
    return true;
}

// Puts the units of a string's block.
template <bool escape, class Unit>
Unit* PutUnits(const WCHAR* at, const WCHAR* end, Unit* out, TState& state) {
    constexpr std::ptrdiff_t kSize = TUnitBlock::kSize;
    if (state.lead != 0) out = PutTrail<escape>(at, end, out, state);
    while (at < end) {
        const std::ptrdiff_t count = end - at;
        const std::ptrdiff_t skip = kSize - 1 - count;
        const bool all = count >= kSize
                             ? PutBlock<escape>(TUnitBlock(at), 0, kSize, at, out)
                             : PutBlock<escape>(TUnitBlock(at - skip), skip, count, at, out);
        if (!all) out = PutSpecial<escape>(at, end, out, state);
    }
    return out;
}

}  // namespace xml_encode
