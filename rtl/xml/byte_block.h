// Vectors of bytes: how the scanner and the writer look at a whole block at a time. SSE2 belongs to
// every x86-64 processor, and the library is built for no other.
#pragma once

#include <emmintrin.h>

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

// Marks on the bytes of a block.
class TByteMarks {
  public:
    explicit TByteMarks(__m128i marks) : marks_(marks) {}
    TByteMarks operator|(TByteMarks other) const {
        return TByteMarks(_mm_or_si128(marks_, other.marks_));
    }
    TByteMarks operator~() const { return TByteMarks(_mm_xor_si128(marks_, _mm_set1_epi8(-1))); }
    // One bit for each byte, the first byte's lowest.
    unsigned Bits() const { return static_cast<unsigned>(_mm_movemask_epi8(marks_)); }
    static std::ptrdiff_t First(unsigned bits) { return std::countr_zero(bits); }

  private:
    __m128i marks_;
};

class TByteBlock {
  public:
    static constexpr std::ptrdiff_t kSize = 16;
    static constexpr std::ptrdiff_t kHalf = kSize / 2;

    explicit TByteBlock(const unsigned char* bytes)
        : bytes_(_mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes))) {}
    // Those of the first kHalf bytes that stand behind `skip`, and zeros.
    void StoreHalf(void* bytes, std::ptrdiff_t skip) const {
        const auto half = static_cast<std::uint64_t>(_mm_cvtsi128_si64(bytes_)) >> (8 * skip);
        std::memcpy(bytes, &half, sizeof half);
    }
    // Those that stand behind the byte `last` of them.
    void StoreHalfBehind(void* bytes, std::ptrdiff_t last) const {
        const auto half = static_cast<std::uint64_t>(_mm_cvtsi128_si64(bytes_)) >> (8 * last) >> 8;
        std::memcpy(bytes, &half, sizeof half);
    }
    TByteMarks Is(char octet) const {
        return TByteMarks(_mm_cmpeq_epi8(bytes_, _mm_set1_epi8(octet)));
    }
    // One of two characters that differ in one bit.
    TByteMarks IsEither(char a, char b) const {
        const __m128i both = _mm_or_si128(bytes_, _mm_set1_epi8(static_cast<char>(a ^ b)));
        return TByteMarks(_mm_cmpeq_epi8(both, _mm_set1_epi8(static_cast<char>(a | b))));
    }
    static TByteMarks None() { return TByteMarks(_mm_setzero_si128()); }
    TByteMarks NotAscii() const { return TByteMarks(bytes_); }
    // 0, or not ASCII.
    TByteMarks Odd() const { return Below(1); }
    // 0 to less than an ASCII character, or not ASCII.
    TByteMarks Below(char octet) const {
        return TByteMarks(_mm_cmplt_epi8(bytes_, _mm_set1_epi8(octet)));
    }
    // 1 to 32.
    TByteMarks Blank() const {
        const __m128i less = _mm_sub_epi8(bytes_, _mm_set1_epi8(1));
        return TByteMarks(_mm_cmpeq_epi8(_mm_min_epu8(less, _mm_set1_epi8(31)), less));
    }
    TByteMarks Same(const TByteBlock& other) const {
        return TByteMarks(_mm_cmpeq_epi8(bytes_, other.bytes_));
    }
    // The bytes as 16-bit units.
    void Widen(void* units) const {
        auto* out = static_cast<__m128i*>(units);
        _mm_storeu_si128(out, _mm_unpacklo_epi8(bytes_, _mm_setzero_si128()));
        _mm_storeu_si128(out + 1, _mm_unpackhi_epi8(bytes_, _mm_setzero_si128()));
    }
    // kHalf bytes as 16-bit units.
    static void WidenHalf(const unsigned char* bytes, void* units) {
        const __m128i half = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(bytes));
        _mm_storeu_si128(static_cast<__m128i*>(units),
                         _mm_unpacklo_epi8(half, _mm_setzero_si128()));
    }

  private:
    friend class TUnitBlock;
    explicit TByteBlock(__m128i bytes) : bytes_(bytes) {}

    __m128i bytes_;
};

// 16-bit units.
class TUnitBlock {
  public:
    static constexpr std::ptrdiff_t kSize = 8;

    explicit TUnitBlock(const void* units)
        : units_(_mm_loadu_si128(static_cast<const __m128i*>(units))) {}
    // Each ASCII unit as its byte, any other one as an odd byte; zeros behind.
    TByteBlock Narrow() const { return TByteBlock(_mm_packus_epi16(units_, _mm_setzero_si128())); }
    // One bit for each unit of 0x800 or more, the first unit's lowest.
    unsigned FromThreeBytes() const {
        const __m128i above = _mm_subs_epu16(units_, _mm_set1_epi16(0x7FF));
        const __m128i none = _mm_cmpeq_epi16(above, _mm_setzero_si128());
        return ~TByteMarks(_mm_packs_epi16(none, none)).Bits() & 0xFF;
    }
    // The UTF-8 of each unit below 0x800 in two bytes, of which ASCII fills the first.
    void StorePairs(void* pairs) const {
        const __m128i lead = _mm_or_si128(_mm_set1_epi16(0xC0), _mm_srli_epi16(units_, 6));
        const __m128i tail =
            _mm_or_si128(_mm_set1_epi16(0x80), _mm_and_si128(_mm_set1_epi16(0x3F), units_));
        const __m128i both = _mm_or_si128(lead, _mm_slli_epi16(tail, 8));
        const __m128i ascii = _mm_cmplt_epi16(units_, _mm_set1_epi16(0x80));
        _mm_storeu_si128(static_cast<__m128i*>(pairs),
                         _mm_or_si128(_mm_and_si128(ascii, units_), _mm_andnot_si128(ascii, both)));
    }

  private:
    __m128i units_;
};

// The first byte from `at` on that is one of the wanted ASCII characters, 0 or not ASCII; `end`
// when there is none.
template <class... Chars>
inline const unsigned char* FindOrOdd(const unsigned char* at, const unsigned char* end,
                                      Chars... wanted) {
    for (; end - at >= TByteBlock::kSize; at += TByteBlock::kSize) {
        const TByteBlock block(at);
        const auto bits = (block.Odd() | ... | block.Is(wanted)).Bits();
        if (bits != 0) return at + TByteMarks::First(bits);
    }
    const auto passed = [&](unsigned char octet) {
        return octet != 0 && octet < 0x80 && ((octet != static_cast<unsigned char>(wanted)) && ...);
    };
    while (at < end && passed(*at)) ++at;
    return at;
}

// The first byte from `at` on that is not one of 1 to 32.
inline const unsigned char* SkipBlank(const unsigned char* at, const unsigned char* end) {
    if (at<end&& * at> 0x20) return at;
    for (; end - at >= TByteBlock::kSize; at += TByteBlock::kSize) {
        const auto bits = (~TByteBlock(at).Blank()).Bits();
        if (bits != 0) return at + TByteMarks::First(bits);
    }
    while (at < end && *at != 0 && *at <= 0x20) ++at;
    return at;
}

// Whether two texts of `count` bytes are the same. Both may be read up to `readable` bytes.
inline bool SameBytes(const unsigned char* a, const unsigned char* b, std::ptrdiff_t count,
                      std::ptrdiff_t readable) {
    if (count > TByteBlock::kSize || readable < TByteBlock::kSize) {
        return std::memcmp(a, b, static_cast<std::size_t>(count)) == 0;
    }
    const auto different = (~TByteBlock(a).Same(TByteBlock(b))).Bits();
    return different == 0 || TByteMarks::First(different) >= count;
}
