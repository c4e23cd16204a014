#include "text_shuffle.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

#ifdef __SSE2__

#include <tmmintrin.h>

namespace host {

namespace {

// For each set of eight lanes, as bits: the shuffle that closes up what is kept.
using Shuffles = std::array<std::array<std::uint8_t, 16>, 256>;

// What no lane shuffles in: a zero.
constexpr std::uint8_t kNone = 0x80;

// Units, without the lanes of the set.
constexpr Shuffles kWithoutUnits = [] {
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

// Bytes: both of the lanes of the set, the first of the others.
constexpr Shuffles kBothBytes = [] {
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

QV_SSSE3 inline unsigned ByteMask(__m128i value) {
    return static_cast<unsigned>(_mm_movemask_epi8(value));
}

QV_SSSE3 inline __m128i Choose(__m128i mask, __m128i yes, __m128i no) {
    return _mm_or_si128(_mm_and_si128(mask, yes), _mm_andnot_si128(mask, no));
}

QV_SSSE3 inline std::size_t Bits(unsigned mask) {
    return static_cast<std::size_t>(__builtin_popcount(mask));
}

// Eight bytes as units; where `trail` is set, joined with the byte before.
QV_SSSE3 inline __m128i Joined(__m128i bytes, __m128i before, __m128i trail) {
    const __m128i high = _mm_slli_epi16(_mm_and_si128(before, _mm_set1_epi16(0x1F)), 6);
    const __m128i low = _mm_and_si128(bytes, _mm_set1_epi16(0x3F));
    return Choose(trail, _mm_or_si128(high, low), bytes);
}

// Sixteen bytes into sixteen units, of which the first count; nothing read when other characters
// are among them. A lead at the end waits for its trail.
QV_SSSE3 inline Progress DecodeBlock(__m128i bytes, WCHAR* to) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i before = _mm_slli_si128(bytes, 1);
    // Of the bytes from 0x80: trails are below 0xC0, leads from 0xC2 to 0xDF.
    const __m128i trails = _mm_cmplt_epi8(bytes, _mm_set1_epi8(static_cast<char>(0xC0)));
    const __m128i leads =
        _mm_and_si128(_mm_cmpgt_epi8(bytes, _mm_set1_epi8(static_cast<char>(0xC1))),
                      _mm_cmplt_epi8(bytes, _mm_set1_epi8(static_cast<char>(0xE0))));
    const unsigned lead = ByteMask(leads);
    const unsigned trail = lead << 1 & 0xFFFF;
    if (ByteMask(trails) != trail || ByteMask(bytes) != (lead | trail)) return {0, 0};
    const __m128i low = Joined(_mm_unpacklo_epi8(bytes, zero), _mm_unpacklo_epi8(before, zero),
                               _mm_unpacklo_epi8(trails, trails));
    const __m128i high = Joined(_mm_unpackhi_epi8(bytes, zero), _mm_unpackhi_epi8(before, zero),
                                _mm_unpackhi_epi8(trails, trails));
    const unsigned lead_low = lead & 0xFF;
    Store(to, _mm_shuffle_epi8(low, Load(kWithoutUnits[lead_low].data())));
    Store(to + 8 - Bits(lead_low), _mm_shuffle_epi8(high, Load(kWithoutUnits[lead >> 8].data())));
    return {16 - (lead >> 15), 16 - Bits(lead)};
}

// Eight units into sixteen bytes, likewise.
QV_SSSE3 inline Progress EncodeBlock(__m128i units, char* to) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i beyond = _mm_and_si128(units, _mm_set1_epi16(static_cast<short>(0xF800)));
    if (ByteMask(_mm_cmpeq_epi16(beyond, zero)) != 0xFFFF) return {0, 0};
    const __m128i twos = _mm_cmpgt_epi16(units, _mm_set1_epi16(0x7F));
    const __m128i lead = _mm_srli_epi16(units, 6);
    const __m128i trail = _mm_slli_epi16(_mm_and_si128(units, _mm_set1_epi16(0x3F)), 8);
    const __m128i pair =
        _mm_or_si128(_mm_or_si128(lead, trail), _mm_set1_epi16(static_cast<short>(0x80C0)));
    const unsigned two = ByteMask(_mm_packs_epi16(twos, zero));
    Store(to, _mm_shuffle_epi8(Choose(twos, pair, units), Load(kBothBytes[two].data())));
    return {8, 8 + Bits(two)};
}

QV_SSSE3 inline Progress Convert(__m128i block, WCHAR* to) {
    return DecodeBlock(block, to);
}
QV_SSSE3 inline Progress Convert(__m128i block, char* to) {
    return EncodeBlock(block, to);
}

// Blocks straight into the buffer while `loose` or more are left, which fill what a block writes
// too much; the rest by way of a block beside it, filled up with zeros.
template <class From, class To>
QV_SSSE3 Progress ConvertBlocks(const From* text, std::size_t left, To* out, std::size_t room,
                                std::size_t loose) {
    constexpr std::size_t kStep = 16 / sizeof(From);
    constexpr std::size_t kWritten = 16;
    Progress done{0, 0};
    while (left - done.read >= loose && room - done.written >= kWritten) {
        const Progress step = Convert(Load(text + done.read), out + done.written);
        if (step.read == 0) return done;
        done.read += step.read;
        done.written += step.written;
    }
    while (done.read < left) {
        From source[kStep] = {};
        To target[kWritten];
        const std::size_t count = std::min(left - done.read, kStep);
        std::memcpy(source, text + done.read, count * sizeof(From));
        Progress step = Convert(Load(source), target);
        if (step.read == 0) return done;
        if (count < kStep) step = {count, step.written - (kStep - count)};
        if (room - done.written < step.written) return done;
        std::memcpy(out + done.written, target, step.written * sizeof(To));
        done.read += step.read;
        done.written += step.written;
    }
    return done;
}

}  // namespace

bool CanShuffle() {
    return __builtin_cpu_supports("ssse3") && __builtin_cpu_supports("popcnt");
}

QV_SSSE3 Progress DecodeShuffled(const char* text, std::size_t left, WCHAR* out, std::size_t room) {
    // 48 bytes become sixteen units at least, whatever they are.
    return ConvertBlocks(text, left, out, room, 48);
}

QV_SSSE3 Progress EncodeShuffled(const WCHAR* text, std::size_t left, char* out, std::size_t room) {
    return ConvertBlocks(text, left, out, room, 16);
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
