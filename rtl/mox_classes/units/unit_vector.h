// Sixteen bytes of text at a time, for comparing, searching and counting: every x86-64 has SSE2,
// any other machine takes the plain loops below. A mask has two bits for each unit, the first unit
// lowest.
#pragma once

#include <windows.h>

#include <algorithm>
#include <bit>
#include <cstddef>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace System {

constexpr int kUnitStep = 8;      // units that one look takes in
constexpr int kByteStep = 16;     // the same in bytes
constexpr int kMostBlocks = 127;  // that are counted in bytes of 0 to 255, two at most at a time

#ifdef __SSE2__

// Marks of eight units, put together before they become a mask.
struct TUnitMarks {
    __m128i marks;

    TUnitMarks operator&(const TUnitMarks& other) const {
        return {_mm_and_si128(marks, other.marks)};
    }
    TUnitMarks operator|(const TUnitMarks& other) const {
        return {_mm_or_si128(marks, other.marks)};
    }
    unsigned Mask() const { return static_cast<unsigned>(_mm_movemask_epi8(marks)); }
};

struct TUnits8 {
    __m128i units;

    explicit TUnits8(const WCHAR* from)
        : units(_mm_loadu_si128(reinterpret_cast<const __m128i*>(from))) {}
    explicit TUnits8(WCHAR unit) : units(_mm_set1_epi16(static_cast<short>(unit))) {}
    TUnitMarks Same(const TUnits8& other) const { return {_mm_cmpeq_epi16(units, other.units)}; }
    unsigned Equal(const TUnits8& other) const { return Same(other).Mask(); }
    unsigned NotAbove(const TUnits8& other) const {
        const __m128i above = _mm_subs_epu16(units, other.units);
        return static_cast<unsigned>(
            _mm_movemask_epi8(_mm_cmpeq_epi16(above, _mm_setzero_si128())));
    }
};

// UTF-16 units that `blocks` times sixteen bytes of UTF-8 begin; at most kMostBlocks.
inline int UnitsBegun(const char* from, int blocks) {
    const __m128i four = _mm_set1_epi8(static_cast<char>(0xF0));
    __m128i counts = _mm_setzero_si128();
    for (int i = 0; i < blocks; ++i, from += kByteStep) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
        const __m128i leads = _mm_cmpgt_epi8(bytes, _mm_set1_epi8(static_cast<char>(0xBF)));
        const __m128i pairs = _mm_cmpeq_epi8(_mm_max_epu8(bytes, four), bytes);
        counts = _mm_sub_epi8(counts, _mm_add_epi8(leads, pairs));
    }
    const __m128i sums = _mm_sad_epu8(counts, _mm_setzero_si128());
    return _mm_cvtsi128_si32(sums) + _mm_extract_epi16(sums, 4);
}

#else

struct TUnitMarks {
    unsigned marks;

    TUnitMarks operator&(const TUnitMarks& other) const { return {marks & other.marks}; }
    TUnitMarks operator|(const TUnitMarks& other) const { return {marks | other.marks}; }
    unsigned Mask() const { return marks; }
};

struct TUnits8 {
    WCHAR units[kUnitStep];

    explicit TUnits8(const WCHAR* from) { std::copy_n(from, kUnitStep, units); }
    explicit TUnits8(WCHAR unit) { std::fill_n(units, kUnitStep, unit); }
    TUnitMarks Same(const TUnits8& other) const { return {Equal(other)}; }
    unsigned Equal(const TUnits8& other) const {
        return Mask([&](int i) { return units[i] == other.units[i]; });
    }
    unsigned NotAbove(const TUnits8& other) const {
        return Mask([&](int i) { return units[i] <= other.units[i]; });
    }
    template <class Test>
    static unsigned Mask(Test test) {
        unsigned mask = 0;
        for (int i = 0; i < kUnitStep; ++i) {
            if (test(i)) mask |= 3U << (2 * i);
        }
        return mask;
    }
};

inline int UnitsBegun(const char* from, int blocks) {
    int units = 0;
    for (const char* const end = from + blocks * kByteStep; from != end; ++from) {
        const auto byte = static_cast<unsigned char>(*from);
        units += ((byte & 0xC0) != 0x80) + (byte >= 0xF0);
    }
    return units;
}

#endif

constexpr unsigned kAllUnits = 0xFFFF;

inline int FirstUnit(unsigned mask) {
    return std::countr_zero(mask) / 2;
}

}  // namespace System
