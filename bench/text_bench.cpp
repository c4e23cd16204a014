// Strings: conversion, copies, growth, comparison, search, numbers and formatting.
#include "support.h"

#include <unicode/unistr.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "mox_classes/text/utf8_text.h"

namespace {

// UTF-8 of about `size` bytes, whole characters, of one kind of text.
std::string Repeated(std::string_view sample, std::size_t size) {
    std::string text;
    while (text.size() + sample.size() <= size) text += sample;
    return text + std::string(size - text.size(), '.');
}

constexpr std::string_view kAscii = "Printer status: ready, 12 pages. ";
constexpr std::string_view kLatin =
    "Druckauftr\xC3\xA4ge l\xC3\xB6schen oder "
    "\xC3\xA0 imprimer en fran\xC3\xA7"
    "ais, s'il vous pla\xC3\xAEt. ";
constexpr std::string_view kCjk =
    "\xE5\x8D\xB0\xE5\x88\xB7\xE3\x82\xB8\xE3\x83\xA7\xE3\x83\x96\xE3\x81\xAE\xE7\x8A\xB6\xE6\x85"
    "\x8B\xE3\x82\x92\xE7\xA2\xBA\xE8\xAA\x8D\xE3\x81\x97\xE3\x81\xA6\xE3\x81\x8F\xE3\x81\xA0\xE3"
    "\x81\x95\xE3\x81\x84\xE3\x80\x82";
constexpr std::string_view kShort =
    "Gro\xC3\x9F"
    "er Drucker, 2. Stock, links";
static_assert(kShort.size() == 32);

// To a string and back into a buffer that is there already.
void RoundTripOurs(benchmark::State& state, const std::string& utf8) {
    std::string back(utf8.size(), '\0');
    const int size = static_cast<int>(utf8.size());
    for (auto _ : state) {
        const UnicodeString text = System::StringFromUtf8(utf8.data(), size);
        const int written = WideCharToMultiByte(CP_UTF8, 0, text.t_str(), text.Length(),
                                                back.data(), size, nullptr, nullptr);
        benchmark::DoNotOptimize(written);
    }
    if (back != utf8) state.SkipWithError("not the same text");
}

void RoundTripIcu(benchmark::State& state, const std::string& utf8) {
    std::string back(utf8.size(), '\0');
    const int size = static_cast<int>(utf8.size());
    for (auto _ : state) {
        const icu::UnicodeString text = icu::UnicodeString::fromUTF8(icu::StringPiece(utf8));
        int written = 0;
        UErrorCode error = U_ZERO_ERROR;
        u_strToUTF8(back.data(), size, &written, text.getBuffer(), text.length(), &error);
        benchmark::DoNotOptimize(written);
    }
    if (back != utf8) state.SkipWithError("not the same text");
}

void RegisterRoundTrip(const std::string& row, const std::string& utf8) {
    const auto ours = [utf8](benchmark::State& state) { RoundTripOurs(state, utf8); };
    const auto icu = [utf8](benchmark::State& state) { RoundTripIcu(state, utf8); };
    benchmark::RegisterBenchmark(("text/" + row + "/ours").c_str(), ours);
    benchmark::RegisterBenchmark(("text/" + row + "/icu").c_str(), icu);
}

const bool round_trips_registered = [] {
    constexpr std::size_t kKilobyte = 1024;
    constexpr std::size_t kMegabyte = 1024 * kKilobyte;
    RegisterRoundTrip("utf8_32", std::string(kShort));
    RegisterRoundTrip("utf8_1k_ascii", Repeated(kAscii, kKilobyte));
    RegisterRoundTrip("utf8_1k_latin", Repeated(kLatin, kKilobyte));
    RegisterRoundTrip("utf8_1k_cjk", Repeated(kCjk, kKilobyte));
    RegisterRoundTrip("utf8_1m_ascii", Repeated(kAscii, kMegabyte));
    RegisterRoundTrip("utf8_1m_latin", Repeated(kLatin, kMegabyte));
    RegisterRoundTrip("utf8_1m_cjk", Repeated(kCjk, kMegabyte));
    return true;
}();

void CopyOurs(benchmark::State& state) {
    const UnicodeString text = bench::Wide("a text of some length");
    for (auto _ : state) {
        UnicodeString copy = text;
        benchmark::DoNotOptimize(copy);
    }
}

void CopyAtomicPair(benchmark::State& state) {
    std::atomic<int> count{1};
    for (auto _ : state) {
        benchmark::DoNotOptimize(count.fetch_add(1));
        benchmark::DoNotOptimize(count.fetch_sub(1));
    }
}

constexpr int kAppends = 10000;

void AppendOurs(benchmark::State& state) {
    const UnicodeString one = bench::Wide("x");
    for (auto _ : state) {
        UnicodeString text;
        for (int i = 0; i < kAppends; ++i) text += one;
        if (text.Length() != kAppends) state.SkipWithError("not appended");
    }
}

// Two strings grow in turn, so neither is always the last block of the heap.
void AppendInTurnOurs(benchmark::State& state) {
    const UnicodeString one = bench::Wide("x");
    for (auto _ : state) {
        UnicodeString texts[2];
        for (int i = 0; i < kAppends; ++i) texts[i % 2] += one;
        if (texts[1].Length() != kAppends / 2) state.SkipWithError("not appended");
    }
}

// The blocks that strings have: header, characters, terminator, exactly.
template <int strings>
void AppendRealloc(benchmark::State& state) {
    for (auto _ : state) {
        char* blocks[strings] = {};
        for (std::size_t i = 0; i < kAppends; ++i) {
            char*& block = blocks[i % strings];
            const std::size_t length = i / strings + 1;
            block = static_cast<char*>(std::realloc(block, 12 + 2 * length + 2));
            std::memcpy(block + 12 + 2 * (length - 1), u"x", 4);
        }
        benchmark::DoNotOptimize(blocks);
        for (char* block : blocks) std::free(block);
    }
}

// `size` characters with `tail` at their end.
std::string WithTail(std::size_t size, std::string_view tail) {
    return Repeated(kAscii, size - tail.size()) + std::string(tail);
}

std::u16string Standard(const UnicodeString& text) {
    return {text.t_str(), static_cast<std::size_t>(text.Length())};
}

void EqualOurs(benchmark::State& state) {
    const UnicodeString a = bench::Wide(Repeated(kAscii, static_cast<std::size_t>(state.range(0))));
    UnicodeString b = a;
    b.Unique();
    for (auto _ : state) {
        bool equal = a == b;
        benchmark::DoNotOptimize(equal);
        if (!equal) state.SkipWithError("not equal");
    }
}

void EqualStandard(benchmark::State& state) {
    const std::u16string a =
        Standard(bench::Wide(Repeated(kAscii, static_cast<std::size_t>(state.range(0)))));
    const std::u16string b = a;
    for (auto _ : state) {
        bool equal = a == b;
        benchmark::DoNotOptimize(equal);
        if (!equal) state.SkipWithError("not equal");
    }
}

constexpr std::string_view kNeedle = "Printer queue";

void PosOurs(benchmark::State& state) {
    const UnicodeString text = bench::Wide(WithTail(1000, kNeedle));
    const UnicodeString needle = bench::Wide(kNeedle);
    for (auto _ : state) {
        int position = text.Pos(needle);
        benchmark::DoNotOptimize(position);
        if (position != 1000 - static_cast<int>(kNeedle.size()) + 1) state.SkipWithError("lost");
    }
}

void PosStandard(benchmark::State& state) {
    const std::u16string text = Standard(bench::Wide(WithTail(1000, kNeedle)));
    const std::u16string needle = Standard(bench::Wide(kNeedle));
    for (auto _ : state) {
        std::size_t position = text.find(needle);
        benchmark::DoNotOptimize(position);
        if (position != 1000 - kNeedle.size()) state.SkipWithError("lost");
    }
}

// Numbers of every length in turn.
int NextNumber(unsigned& seed) {
    seed = seed * 1664525u + 1013904223u;
    return static_cast<int>(seed >> (seed & 31u));
}

void NumberOurs(benchmark::State& state) {
    unsigned seed = 1;
    for (auto _ : state) {
        UnicodeString text(NextNumber(seed));
        benchmark::DoNotOptimize(text);
    }
}

void NumberSnprintf(benchmark::State& state) {
    unsigned seed = 1;
    char text[32];
    for (auto _ : state) {
        std::snprintf(text, sizeof text, "%d", NextNumber(seed));
        benchmark::DoNotOptimize(text);
    }
}

void FormatOurs(benchmark::State& state) {
    const UnicodeString name = bench::Wide("LaserJet 4000 in room 12");
    unsigned seed = 1;
    for (auto _ : state) {
        UnicodeString text;
        text.printf(TEXT("%s %d"), name, NextNumber(seed));
        benchmark::DoNotOptimize(text);
    }
}

void FormatSnprintf(benchmark::State& state) {
    const std::string name = "LaserJet 4000 in room 12";
    unsigned seed = 1;
    char text[64];
    for (auto _ : state) {
        std::snprintf(text, sizeof text, "%s %d", name.c_str(), NextNumber(seed));
        benchmark::DoNotOptimize(text);
    }
}

BENCHMARK(CopyOurs)->Name("text/copy/ours");
BENCHMARK(CopyAtomicPair)->Name("text/copy/atomic_pair");
BENCHMARK(AppendOurs)->Name("text/append/ours");
BENCHMARK(AppendRealloc<1>)->Name("text/append/realloc");
BENCHMARK(AppendInTurnOurs)->Name("text/append_in_turn/ours");
BENCHMARK(AppendRealloc<2>)->Name("text/append_in_turn/realloc");
BENCHMARK(EqualOurs)->Name("text/equal_100/ours")->Arg(100);
BENCHMARK(EqualStandard)->Name("text/equal_100/u16string")->Arg(100);
BENCHMARK(EqualOurs)->Name("text/equal_1000/ours")->Arg(1000);
BENCHMARK(EqualStandard)->Name("text/equal_1000/u16string")->Arg(1000);
BENCHMARK(PosOurs)->Name("text/pos/ours");
BENCHMARK(PosStandard)->Name("text/pos/u16string");
BENCHMARK(NumberOurs)->Name("text/number/ours");
BENCHMARK(NumberSnprintf)->Name("text/number/snprintf");
BENCHMARK(FormatOurs)->Name("text/format/ours");
BENCHMARK(FormatSnprintf)->Name("text/format/snprintf");

}  // namespace
