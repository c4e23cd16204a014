#include "text/text_shuffle.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

#ifdef __SSE2__

#include <tmmintrin.h>

namespace host {

namespace {

// For each set of eight lanes (one bit each), the shuffle that closes the gaps between the lanes
// that are kept.
using Shuffles = std::array<std::array<std::uint8_t, 16>, 256>;

// A lane with this number becomes 0.
constexpr std::uint8_t kNone = 0x80;

// Keeps the units that are not in the set.
constexpr Shuffles kWithoutUnits = []() {
    Shuffles shuffles{};
    for (unsigned set = 0; set < shuffles.size(); ++set) {
        shuffles[set].fill(kNone);
        unsigned place = 0;
        for (unsigned lane = 0; lane < 8; ++lane) {
            if ((set >> lane & 1) != 0) continue;
            shuffles[set][place++] = static_cast<std::uint8_t>(2 * lane);
            shuffles[set][place++] = static_cast<std::uint8_t>(2 * lane + 1);
        }
    }
    return shuffles;
}();

// Keeps both bytes of the lanes in the set and the first byte of the others.
constexpr Shuffles kBothBytes = []() {
    Shuffles shuffles{};
    for (unsigned set = 0; set < shuffles.size(); ++set) {
        shuffles[set].fill(kNone);
        unsigned place = 0;
        for (unsigned lane = 0; lane < 8; ++lane) {
            shuffles[set][place++] = static_cast<std::uint8_t>(2 * lane);
            if ((set >> lane & 1) == 0) continue;
            shuffles[set][place++] = static_cast<std::uint8_t>(2 * lane + 1);
        }
    }
    return shuffles;
}();

#define QV_SSSE3 __attribute__((target("ssse3,popcnt")))

QV_SSSE3 inline __m128i Load(const void* from) {
    return _mm_loadu_si128(static_cast<const __m128i*>(from));
}

QV_SSSE3 inline void Store(void* to, __m128i value) {
    _mm_storeu_si128(static_cast<__m128i*>(to), value);
}

QV_SSSE3 inline unsigned TopBits(__m128i value) {
    return static_cast<unsigned>(_mm_movemask_epi8(value));
}

QV_SSSE3 inline __m128i Choose(__m128i mask, __m128i yes, __m128i no) {
    return _mm_or_si128(_mm_and_si128(mask, yes), _mm_andnot_si128(mask, no));
}

QV_SSSE3 inline std::size_t Bits(unsigned mask) {
    return static_cast<std::size_t>(__builtin_popcount(mask));
}

// Loads fewer than sixteen bytes as two pieces that overlap, and fills up with zeros. A copy
// through memory would be slower, because the load must wait for the stores.
QV_SSSE3 inline __m128i LoadPart(const void* from, std::size_t bytes) {
    const auto* const first = static_cast<const unsigned char*>(from);
    std::uint64_t low = 0;
    std::uint64_t high = 0;
    if (bytes >= 8) {
        std::memcpy(&low, first, 8);
        std::memcpy(&high, first + bytes - 8, 8);
        high = bytes == 8 ? 0 : high >> (8 * (16 - bytes));
    } else if (bytes >= 4) {
        std::uint32_t start, end;
        std::memcpy(&start, first, 4);
        std::memcpy(&end, first + bytes - 4, 4);
        low = start | static_cast<std::uint64_t>(end) << (8 * (bytes - 4));
    } else if (bytes > 0) {
        low = first[0] | static_cast<std::uint64_t>(first[bytes / 2]) << (8 * (bytes / 2)) |
              static_cast<std::uint64_t>(first[bytes - 1]) << (8 * (bytes - 1));
    }
    return _mm_set_epi64x(static_cast<long long>(high), static_cast<long long>(low));
}

QV_SSSE3 inline void StorePart(void* to, __m128i value, std::size_t bytes) {
    auto* const first = static_cast<unsigned char*>(to);
    const auto low = static_cast<std::uint64_t>(_mm_cvtsi128_si64(value));
    const auto high = static_cast<std::uint64_t>(_mm_cvtsi128_si64(_mm_srli_si128(value, 8)));
    if (bytes >= 8) {
        std::memcpy(first, &low, 8);
        const std::size_t shift = 8 * (bytes - 8);
        const std::uint64_t end = shift == 0    ? low
                                  : shift == 64 ? high
                                                : low >> shift | high << (64 - shift);
        std::memcpy(first + bytes - 8, &end, 8);
    } else if (bytes >= 4) {
        std::memcpy(first, &low, 4);
        const auto end = static_cast<std::uint32_t>(low >> (8 * (bytes - 4)));
        std::memcpy(first + bytes - 4, &end, 4);
    } else {
        for (std::size_t i = 0; i < bytes; ++i) {
            first[i] = static_cast<unsigned char>(low >> (8 * i));
        }
    }
}

// Widens eight bytes to units. Where `trail` is set, the unit is joined with the byte in front of
// it.
QV_SSSE3 inline __m128i Joined(__m128i bytes, __m128i before, __m128i trail) {
    const __m128i high = _mm_slli_epi16(_mm_and_si128(before, _mm_set1_epi16(0x1F)), 6);
    const __m128i low = _mm_and_si128(bytes, _mm_set1_epi16(0x3F));
    return Choose(trail, _mm_or_si128(high, low), bytes);
}

// The result for one block: one or two vectors with their number of valid units or bytes. `good` is
// false when the block holds other characters.
struct Decoded {
    bool good;
    __m128i low, high;
    std::size_t low_units, high_units;
    unsigned open;  // 1 when the last byte is a lead
};
struct Encoded {
    bool good;
    __m128i bytes;
    std::size_t size;
};

// Decodes sixteen bytes. The byte in front of them is a lead when `open` is 1. The next block
// always begins sixteen bytes later, so the processor can begin it before this one ends.
QV_SSSE3 inline Decoded DecodeBlock(__m128i bytes, __m128i previous, unsigned open) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i before = _mm_alignr_epi8(bytes, previous, 15);
    // Among the bytes from 0x80 on, trails are below 0xC0, and leads are 0xC2 to 0xDF.
    const __m128i trails = _mm_cmplt_epi8(bytes, _mm_set1_epi8(static_cast<char>(0xC0)));
    const __m128i leads =
        _mm_and_si128(_mm_cmpgt_epi8(bytes, _mm_set1_epi8(static_cast<char>(0xC1))),
                      _mm_cmplt_epi8(bytes, _mm_set1_epi8(static_cast<char>(0xE0))));
    const unsigned lead = TopBits(leads);
    const unsigned trail = (lead << 1 & 0xFFFF) | open;
    const bool good = TopBits(trails) == trail && TopBits(bytes) == (lead | trail);
    const __m128i low = Joined(_mm_unpacklo_epi8(bytes, zero), _mm_unpacklo_epi8(before, zero),
                               _mm_unpacklo_epi8(trails, trails));
    const __m128i high = Joined(_mm_unpackhi_epi8(bytes, zero), _mm_unpackhi_epi8(before, zero),
                                _mm_unpackhi_epi8(trails, trails));
    return {good,
            _mm_shuffle_epi8(low, Load(kWithoutUnits[lead & 0xFF].data())),
            _mm_shuffle_epi8(high, Load(kWithoutUnits[lead >> 8].data())),
            8 - Bits(lead & 0xFF),
            8 - Bits(lead >> 8),
            lead >> 15};
}

// Encodes eight units.
QV_SSSE3 inline Encoded EncodeBlock(__m128i units) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i beyond = _mm_and_si128(units, _mm_set1_epi16(static_cast<short>(0xF800)));
    const bool good = TopBits(_mm_cmpeq_epi16(beyond, zero)) == 0xFFFF;
    const __m128i twos = _mm_cmpgt_epi16(units, _mm_set1_epi16(0x7F));
    const __m128i lead = _mm_srli_epi16(units, 6);
    const __m128i trail = _mm_slli_epi16(_mm_and_si128(units, _mm_set1_epi16(0x3F)), 8);
    const __m128i pair =
        _mm_or_si128(_mm_or_si128(lead, trail), _mm_set1_epi16(static_cast<short>(0x80C0)));
    const unsigned two = TopBits(_mm_packs_epi16(twos, zero));
    return {good, _mm_shuffle_epi8(Choose(twos, pair, units), Load(kBothBytes[two].data())),
            8 + Bits(two)};
}

}  // namespace

bool CanShuffle() {
    return __builtin_cpu_supports("ssse3") && __builtin_cpu_supports("popcnt");
}

QV_SSSE3 Progress DecodeShuffled(const char* text, std::size_t left, WCHAR* out, std::size_t room) {
    Progress done{0, 0};
    __m128i previous = _mm_setzero_si128();
    unsigned open = 0;
    // 48 bytes become at least sixteen units. The next step overwrites the surplus units.
    while (left - done.read >= 48 && room - done.written >= 16) {
        const __m128i bytes = Load(text + done.read);
        const Decoded block = DecodeBlock(bytes, previous, open);
        if (!block.good) return {done.read - open, done.written};
        Store(out + done.written, block.low);
        Store(out + done.written + block.low_units, block.high);
        done.read += 16;
        done.written += block.low_units + block.high_units;
        previous = bytes;
        open = block.open;
    }
    while (done.read < left) {
        const std::size_t count = std::min<std::size_t>(left - done.read, 16);
        const char* const from = text + done.read;
        const __m128i bytes = count == 16 ? Load(from) : LoadPart(from, count);
        const Decoded block = DecodeBlock(bytes, previous, open);
        // The zeros that fill up the block are units at its end.
        const std::size_t units = block.low_units + block.high_units - (16 - count);
        if (!block.good || room - done.written < units) break;
        const std::size_t low = std::min(block.low_units, units);
        StorePart(out + done.written, block.low, 2 * low);
        StorePart(out + done.written + low, block.high, 2 * (units - low));
        done.read += count;
        done.written += units;
        previous = bytes;
        open = block.open;
    }
    return {done.read - open, done.written};
}

QV_SSSE3 Progress EncodeShuffled(const WCHAR* text, std::size_t left, char* out, std::size_t room) {
    Progress done{0, 0};
    // Sixteen units fill the sixteen bytes that are written.
    while (left - done.read >= 16 && room - done.written >= 16) {
        const Encoded block = EncodeBlock(Load(text + done.read));
        if (!block.good) return done;
        Store(out + done.written, block.bytes);
        done.read += 8;
        done.written += block.size;
    }
    while (done.read < left) {
        const std::size_t count = std::min<std::size_t>(left - done.read, 8);
        const WCHAR* const from = text + done.read;
        const Encoded block = EncodeBlock(count == 8 ? Load(from) : LoadPart(from, 2 * count));
        const std::size_t size = block.size - (8 - count);
        if (!block.good || room - done.written < size) return done;
        StorePart(out + done.written, block.bytes, size);
        done.read += count;
        done.written += size;
    }
    return done;
}

}  // namespace host

#else

namespace host {

bool CanShuffle() {
    return false;
}
Progress DecodeShuffled(const char*, std::size_t, WCHAR*, std::size_t) {
    return {0, 0};
}
Progress EncodeShuffled(const WCHAR*, std::size_t, char*, std::size_t) {
    return {0, 0};
}

}  // namespace host

#endif
