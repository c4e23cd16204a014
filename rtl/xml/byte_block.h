// Vectors of bytes: how the scanner and the writer look at a whole block at a time.
//
// SSE2 belongs to every x86-64 processor; elsewhere a block is one 64-bit number.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#if defined(__SSE2__)

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
    // kHalf 16-bit units, each ASCII one as its byte, any other one as an odd byte; zeros behind.
    static TByteBlock OfUnits(const void* units) {
        return TByteBlock(_mm_packus_epi16(_mm_loadu_si128(static_cast<const __m128i*>(units)),
                                           _mm_setzero_si128()));
    }
    // The first kHalf bytes.
    void StoreHalf(void* bytes) const { _mm_storel_epi64(static_cast<__m128i*>(bytes), bytes_); }
    TByteMarks Is(char octet) const {
        return TByteMarks(_mm_cmpeq_epi8(bytes_, _mm_set1_epi8(octet)));
    }
    static TByteMarks None() { return TByteMarks(_mm_setzero_si128()); }
    TByteMarks NotAscii() const { return TByteMarks(bytes_); }
    // 0, or not ASCII.
    TByteMarks Odd() const { return TByteMarks(_mm_cmplt_epi8(bytes_, _mm_set1_epi8(1))); }
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
    explicit TByteBlock(__m128i bytes) : bytes_(bytes) {}

    __m128i bytes_;
};

#else

class TByteMarks {
  public:
    explicit TByteMarks(std::uint64_t marks) : marks_(marks & 0x8080808080808080u) {}
    TByteMarks operator|(TByteMarks other) const { return TByteMarks(marks_ | other.marks_); }
    TByteMarks operator~() const { return TByteMarks(~marks_); }
    std::uint64_t Bits() const { return marks_; }
    static std::ptrdiff_t First(std::uint64_t bits) { return std::countr_zero(bits) / 8; }

  private:
    std::uint64_t marks_;
};

class TByteBlock {
  public:
    static constexpr std::ptrdiff_t kSize = 8;
    static constexpr std::ptrdiff_t kHalf = kSize / 2;

    explicit TByteBlock(const unsigned char* bytes) { std::memcpy(&bytes_, bytes, sizeof bytes_); }
    static TByteBlock OfUnits(const void* units) {
        std::uint16_t wide[kHalf] = {};
        std::memcpy(wide, units, sizeof wide);
        unsigned char bytes[kSize] = {};
        for (int i = 0; i < kHalf; ++i) {
            bytes[i] = static_cast<unsigned char>(wide[i] < 0x80 ? wide[i] : 0x80);
        }
        return TByteBlock(bytes);
    }
    void StoreHalf(void* bytes) const { std::memcpy(bytes, &bytes_, kHalf); }
    TByteMarks Is(char octet) const {
        return ~TByteMarks(Above(bytes_ ^ Each(static_cast<unsigned char>(octet)), 0) |
                           (bytes_ ^ Each(static_cast<unsigned char>(octet))));
    }
    static TByteMarks None() { return TByteMarks(0); }
    TByteMarks NotAscii() const { return TByteMarks(bytes_); }
    TByteMarks Same(const TByteBlock& other) const {
        const std::uint64_t different = bytes_ ^ other.bytes_;
        return ~TByteMarks(Above(different, 0) | different);
    }
    TByteMarks Odd() const { return NotAscii() | Is('\0'); }
    TByteMarks Blank() const { return ~(TByteMarks(Above(bytes_, 32)) | Odd()); }
    void Widen(void* units) const {
        std::uint16_t wide[kSize] = {};
        for (int i = 0; i < kSize; ++i) {
            wide[i] = static_cast<std::uint16_t>((bytes_ >> (8 * i)) & 0xFF);
        }
        std::memcpy(units, wide, sizeof wide);
    }
    static void WidenHalf(const unsigned char* bytes, void* units) {
        std::uint16_t wide[kHalf] = {};
        for (int i = 0; i < kHalf; ++i) wide[i] = bytes[i];
        std::memcpy(units, wide, sizeof wide);
    }

  private:
    static constexpr std::uint64_t Each(unsigned char octet) { return 0x0101010101010101u * octet; }
    // Marks the bytes whose lower seven bits are above the limit; no byte carries into the next.
    static std::uint64_t Above(std::uint64_t bytes, unsigned char limit) {
        return (bytes & Each(0x7F)) + Each(static_cast<unsigned char>(0x7F - limit));
    }

    std::uint64_t bytes_ = 0;
};

#endif

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
