// A progress line on standard error for long work.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace qv {

// Appears after the program's first second, and only when standard error is a terminal. The
// destructor removes the line. Nothing else may be written to the terminal while an object lives.
class Progress {
  public:
    // "records: 12000", or with a total "printers set: 12 of 50".
    explicit Progress(std::string what, std::size_t total = 0);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress();

    void Add();

  private:
    using Clock = std::chrono::steady_clock;

    void Show();

    std::string what_;
    std::size_t total_;
    std::size_t done_ = 0;
    Clock::time_point next_;
    bool wanted_;
    bool shown_ = false;
};

}  // namespace qv
