// The converters' inner steps, sixteen bytes at a time with SSE2, which every x86-64 has. Other
// machines take the plain loops at the end.
//
// Each step reads and writes a fixed amount; the caller must have that room. Compared with the loop
// over units, ASCII is 12 times and text of three-byte characters 5 times as fast.
#pragma once

#include <windows.h>

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#ifndef __has_feature  // g++ has none and says it in a macro of its own
#define __has_feature(feature) 0
#endif

namespace host {

#if defined(__SANITIZE_ADDRESS__) || __has_feature(address_sanitizer)
constexpr bool kAddressesAreChecked = true;
#else
constexpr bool kAddressesAreChecked = false;
#endif

constexpr std::size_t kAsciiStep = 16;  // read and written by the ASCII steps, in characters
constexpr std::size_t kCjkUnits = 4;    // converted by the three-byte steps
constexpr std::size_t kCjkBytes = 16;   // read or written by them, of which 12 count

#ifdef __SSE2__

inline __m128i Load16(const void* from) {
    return _mm_loadu_si128(static_cast<const __m128i*>(from));
}

inline void Store16(void* to, __m128i value) {
    _mm_storeu_si128(static_cast<__m128i*>(to), value);
}

// Bit i is set when byte i is.
inline unsigned ByteMask(__m128i value) {
    return static_cast<unsigned>(_mm_movemask_epi8(value));
}

inline std::size_t FirstBit(unsigned mask) {
    return mask == 0 ? kAsciiStep : static_cast<std::size_t>(std::countr_zero(mask));
}

// Length of the ASCII at the start of the sixteen characters.
inline std::size_t AsciiPrefix(const char* from) {
    return FirstBit(ByteMask(Load16(from)));
}

// The same, and widens the characters. The units behind the ASCII have no meaning.
inline std::size_t WidenAscii(const char* from, WCHAR* to) {
    const __m128i bytes = Load16(from);
    Store16(to, _mm_unpacklo_epi8(bytes, _mm_setzero_si128()));
    Store16(to + 8, _mm_unpackhi_epi8(bytes, _mm_setzero_si128()));
    return FirstBit(ByteMask(bytes));
}

// A byte for each of sixteen units: all ones when the unit is ASCII.
inline __m128i AsciiUnits(__m128i low, __m128i high) {
    const __m128i beyond = _mm_set1_epi16(static_cast<short>(0xFF80));
    const __m128i zero = _mm_setzero_si128();
    return _mm_packs_epi16(_mm_cmpeq_epi16(_mm_and_si128(low, beyond), zero),
                           _mm_cmpeq_epi16(_mm_and_si128(high, beyond), zero));
}

inline std::size_t AsciiPrefix(const WCHAR* from) {
    return FirstBit(ByteMask(AsciiUnits(Load16(from), Load16(from + 8))) ^ 0xFFFF);
}

inline std::size_t NarrowAscii(const WCHAR* from, char* to) {
    const __m128i low = Load16(from);
    const __m128i high = Load16(from + 8);
    Store16(to, _mm_packus_epi16(low, high));
    return FirstBit(ByteMask(AsciiUnits(low, high)) ^ 0xFFFF);
}

// The length of a text. It reads sixteen bytes at multiples of sixteen. These lie in one page, so
// reading bytes around the text is safe. Under the address sanitizer it reads only the text, so
// that the sanitizer finds a text without an end.
__attribute__((no_sanitize("thread"))) inline std::size_t UnitsBeforeZero(const WCHAR* text) {
    if constexpr (kAddressesAreChecked) return std::char_traits<WCHAR>::length(text);
    const auto place = reinterpret_cast<std::uintptr_t>(text);
    if (place % sizeof(WCHAR) != 0) return std::char_traits<WCHAR>::length(text);
    const auto* block = reinterpret_cast<const __m128i*>(place & ~std::uintptr_t{15});
    const __m128i zero = _mm_setzero_si128();
    unsigned zeros = ByteMask(_mm_cmpeq_epi16(_mm_load_si128(block), zero)) >> (place & 15);
    if (zeros != 0) return FirstBit(zeros) / sizeof(WCHAR);
    do {
        zeros = ByteMask(_mm_cmpeq_epi16(_mm_load_si128(++block), zero));
    } while (zeros == 0);
    const auto* bytes = reinterpret_cast<const char*>(block) + FirstBit(zeros);
    return static_cast<std::size_t>(bytes - reinterpret_cast<const char*>(text)) / sizeof(WCHAR);
}

// Whether any of four 32-bit numbers is no character of three bytes: below 0x800 or a surrogate.
inline bool AnyNotCjk(__m128i units) {
    const __m128i high = _mm_and_si128(units, _mm_set1_epi32(0xF800));
    return ByteMask(_mm_or_si128(_mm_cmpeq_epi32(high, _mm_setzero_si128()),
                                 _mm_cmpeq_epi32(high, _mm_set1_epi32(0xD800)))) != 0;
}

inline __m128i Load4(const char* from) {
    std::int32_t value;
    std::memcpy(&value, from, sizeof value);
    return _mm_cvtsi32_si128(value);
}

// Four characters of three bytes each; false when one of them is anything else.
inline bool DecodeCjk(const char* from, WCHAR* to) {
    const __m128i text = _mm_unpacklo_epi64(_mm_unpacklo_epi32(Load4(from), Load4(from + 3)),
                                            _mm_unpacklo_epi32(Load4(from + 6), Load4(from + 9)));
    const __m128i frame = _mm_and_si128(text, _mm_set1_epi32(0x00C0C0F0));
    if (ByteMask(_mm_cmpeq_epi32(frame, _mm_set1_epi32(0x008080E0))) != 0xFFFF) return false;
    const __m128i units =
        _mm_or_si128(_mm_and_si128(_mm_slli_epi32(text, 12), _mm_set1_epi32(0xF000)),
                     _mm_or_si128(_mm_and_si128(_mm_srli_epi32(text, 2), _mm_set1_epi32(0x0FC0)),
                                  _mm_and_si128(_mm_srli_epi32(text, 16), _mm_set1_epi32(0x003F))));
    if (AnyNotCjk(units)) return false;
    const __m128i extended = _mm_srai_epi32(_mm_slli_epi32(units, 16), 16);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(to), _mm_packs_epi32(extended, extended));
    return true;
}

inline bool EncodeCjk(const WCHAR* from, char* to) {
    const __m128i units = _mm_unpacklo_epi16(
        _mm_loadl_epi64(reinterpret_cast<const __m128i*>(from)), _mm_setzero_si128());
    if (AnyNotCjk(units)) return false;
    const __m128i bytes = _mm_or_si128(
        _mm_or_si128(_mm_srli_epi32(units, 12), _mm_set1_epi32(0x008080E0)),
        _mm_or_si128(_mm_and_si128(_mm_slli_epi32(units, 2), _mm_set1_epi32(0x00003F00)),
                     _mm_and_si128(_mm_slli_epi32(units, 16), _mm_set1_epi32(0x003F0000))));
    // Three bytes of every four: two characters close up in each half.
    const __m128i first = _mm_and_si128(bytes, _mm_set1_epi64x(0x0000000000FFFFFF));
    const __m128i second =
        _mm_and_si128(_mm_srli_epi64(bytes, 8), _mm_set1_epi64x(0x0000FFFFFF000000));
    const __m128i pairs = _mm_or_si128(first, second);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(to), pairs);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(to + 6), _mm_srli_si128(pairs, 8));
    return true;
}

#else

template <class Unit>
std::size_t AsciiPrefix(const Unit* from) {
    std::size_t length = 0;
    while (length < kAsciiStep && static_cast<std::make_unsigned_t<Unit> >(from[length]) < 0x80) {
        ++length;
    }
    return length;
}

inline std::size_t WidenAscii(const char* from, WCHAR* to) {
    for (std::size_t i = 0; i < kAsciiStep; ++i) to[i] = static_cast<unsigned char>(from[i]);
    return AsciiPrefix(from);
}

inline std::size_t NarrowAscii(const WCHAR* from, char* to) {
    for (std::size_t i = 0; i < kAsciiStep; ++i) to[i] = static_cast<char>(from[i]);
    return AsciiPrefix(from);
}

inline std::size_t UnitsBeforeZero(const WCHAR* text) {
    return std::char_traits<WCHAR>::length(text);
}

// Convert nothing: the loop over units does it.
inline bool DecodeCjk(const char*, WCHAR*) {
    return false;
}
inline bool EncodeCjk(const WCHAR*, char*) {
    return false;
}

#endif

}  // namespace host
