#include "progress.h"

#include <cstdio>
#include <utility>

#include "console.h"

namespace qv {

namespace {

constexpr auto kPatience = std::chrono::seconds(1);
constexpr auto kPause = std::chrono::milliseconds(200);
// The clock is not asked for every item.
constexpr std::uint64_t kItemsPerLook = 64;
constexpr const char* kClearLine = "\r\x1b[K";

}  // namespace

Progress::Progress(std::string unit)
    : unit_(std::move(unit)),
      next_(Clock::now() + kPatience),
      wanted_(IsTerminal(Stream::kError) && !IsTerminal(Stream::kOutput)) {}

Progress::~Progress() {
    if (shown_) std::fputs(kClearLine, stderr);
}

void Progress::Add(std::uint64_t count) {
    const std::uint64_t looks = done_ / kItemsPerLook;
    done_ += count;
    if (wanted_ && done_ / kItemsPerLook != looks && Clock::now() >= next_) Show();
}

void Progress::Show() {
    std::fprintf(stderr, "%s%llu %s", kClearLine, static_cast<unsigned long long>(done_),
                 unit_.c_str());
    std::fflush(stderr);
    shown_ = true;
    next_ = Clock::now() + kPause;
}

}  // namespace qv
