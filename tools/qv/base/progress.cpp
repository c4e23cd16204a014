#include "base/progress.h"

#include <cstdio>
#include <utility>

#include "base/console.h"
#include "base/host.h"

namespace qv {

namespace {

constexpr auto kPatience = std::chrono::seconds(1);
constexpr auto kPause = std::chrono::milliseconds(200);
constexpr const char* kClearLine = "\r\x1b[K";
const auto kStart = std::chrono::steady_clock::now();

}  // namespace

Progress::Progress(std::string what, std::size_t total)
    : what_(std::move(what)),
      total_(total),
      next_(kStart + kPatience),
      wanted_(IsTerminal(Stream::kError)) {}

Progress::~Progress() {
    if (shown_) std::fputs(kClearLine, stderr);
}

void Progress::Add() {
    ++done_;
    if (wanted_ && Clock::now() >= next_) Show();
}

void Progress::Show() {
    const std::string of = total_ == 0 ? std::string() : " of " + std::to_string(total_);
    const std::string line = what_ + ": " + std::to_string(done_) + of;
    std::fputs((kClearLine + line).c_str(), stderr);
    std::fflush(stderr);
    shown_ = true;
    next_ = Clock::now() + kPause;
}

}  // namespace qv
