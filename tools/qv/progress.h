// A line on standard error that tells how far a long piece of work is.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace qv {

// Shows nothing during the first second, when standard error is no terminal, or when standard
// output is one, where the results themselves are to be seen. The end takes the line away.
class Progress {
  public:
    // `unit` follows the number: "12000 records".
    explicit Progress(std::string unit);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress();

    void Add(std::uint64_t count = 1);

  private:
    using Clock = std::chrono::steady_clock;

    void Show();

    std::string unit_;
    std::uint64_t done_ = 0;
    Clock::time_point next_;
    bool wanted_;
    bool shown_ = false;
};

}  // namespace qv
