// A damaged log of 5 MiB: the time to read it, beside a sound log; and the time of the append that
// repairs it, which holds the log's lock.
#include <algorithm>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "log_file/log_image.h"
#include "log_file/log_reader.h"
#include "log_file/log_recorder.h"
#include "mox_log/logger.h"
#include "support.h"

namespace {

using Image = std::vector<char>;

constexpr std::uint32_t kLimit = 0x500000;
constexpr DWORD kRecords = 44000;
constexpr int kPatches = 100;

void Append(const std::string& file) {
    Mox::InitLogger();
    {
        Mox::TLogRecorder recorder;
        recorder.Open(bench::Wide(file), kLimit);
        Mox::SetLogRecorder(&recorder);
        Mox::GetLogger()->Log('i', TEXT("log_bench"), 1, TEXT("text"), UnicodeString(), nullptr, 0);
        Mox::ClearLogRecorder(&recorder);
    }
    Mox::UninitLogger();
}

// A ring that is full, its records a millisecond apart.
const Image& Sound() {
    static const Image sound = [] {
        Mox::TLogImage image;
        Mox::TLogMsg message;
        message.level = 'i';
        message.source = TEXT("log_bench");
        for (DWORD i = 0; i < kRecords; ++i) {
            message.time.dwLowDateTime = i * 10000;
            message.time.dwHighDateTime = 0x01DA2B3C;
            message.text = UnicodeString::StringOfChar('x', static_cast<int>(20 + i * 37 % 100));
            image.Append(message);
        }
        const std::vector<std::uint8_t>& bytes = image.Finish(kLimit);
        return Image(bytes.begin(), bytes.end());
    }();
    return sound;
}

void Fill(std::minstd_rand& random, Image::iterator from, Image::iterator end) {
    std::generate(from, end, [&] { return static_cast<char>(random() >> 8); });
}

// Up to 512 bytes of noise at 100 places.
Image Patched() {
    Image image = Sound();
    std::minstd_rand random(1);
    for (int i = 0; i < kPatches; ++i) {
        const auto at =
            image.begin() + 96 + static_cast<std::ptrdiff_t>(random() % (image.size() - 1000));
        Fill(random, at, at + 1 + static_cast<std::ptrdiff_t>(random() % 512));
    }
    return image;
}

Image Headless() {
    Image image = Patched();
    std::fill_n(image.begin(), 96, '\0');
    return image;
}

Image Noise() {
    Image image = Sound();
    std::minstd_rand random(1);
    Fill(random, image.begin() + 96, image.end());
    return image;
}

template <auto kMake>
void Read(benchmark::State& state) {
    const Image image = kMake();
    int damage = 0;
    for (auto _ : state) {
        Mox::TLogReader reader;
        if (!reader.Assign(image.data(), image.size())) reader.StartWithoutHeader();
        while (reader.Next() != nullptr) {
        }
        damage = reader.SkipCount();
    }
    if ((damage == 0) != (image == Sound())) state.SkipWithError("damage was not seen");
}

template <auto kMake>
void Mend(benchmark::State& state) {
    const Image image = kMake();
    const std::string file = bench::NewFileName();
    std::int64_t longest = 0;
    for (auto _ : state) {
        std::ofstream(file, std::ios::binary).write(image.data(), std::ssize(image));
        const std::int64_t began = bench::Now();
        Append(file);
        const std::int64_t took = bench::Now() - began;
        longest = std::max(longest, took);
        state.SetIterationTime(1e-9 * static_cast<double>(took));
    }
    state.counters["worst_lock_ms"] = 1e-6 * static_cast<double>(longest);
}

#define QV_READ(row, make)                                  \
    BENCHMARK(Read<make>)->Name("log/read_" row "/ours");   \
    BENCHMARK(Read<Sound>)->Name("log/read_" row "/sound"); \
    BENCHMARK(Mend<make>)->Name("log/mend_" row "/ours")->UseManualTime()->Iterations(5)
QV_READ("patched", Patched);
QV_READ("headless", Headless);
QV_READ("noise", Noise);

}  // namespace
