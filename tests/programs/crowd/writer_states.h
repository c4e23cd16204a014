// The state of each writer of a stress run, in shared memory.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>

#include "log_file/log_format.h"
#include "numbered_records.h"
#include "processes.h"

namespace stress {

// The change counter of a log file, read without its lock.
class TCounter {
  public:
    explicit TCounter(const std::string& file) : fd_(open(file.c_str(), O_RDONLY | O_CLOEXEC)) {}
    TCounter(const TCounter&) = delete;
    TCounter& operator=(const TCounter&) = delete;
    ~TCounter() { close(fd_); }

    std::uint64_t Read() const {
        std::uint64_t counter = 0;
        const auto size =
            pread(fd_, &counter, sizeof(counter), offsetof(Mox::TLogFileHeader, counter));
        return size == sizeof(counter) ? counter : 0;
    }

  private:
    int fd_;
};

// One writer: how far it is.
class TWriterState {
  public:
    struct TCall {
        std::uint32_t number;   // of the record; 0: there was no call
        std::uint64_t counter;  // the file's change counter before the call
    };

    // Only for the writer itself.
    void LogNext(std::uint32_t writer, const TCounter& counter) {
        const std::uint64_t before = counter.Read() << kNumberBits;
        const std::uint32_t number = Started().number + 1;
        started_.store(before | number);
        const std::uint64_t began = Now();
        LogNumber({writer, number});
        const std::uint64_t took = Now() - began;
        if (took > longest_.load()) longest_.store(took);
        returned_.store(before | number);
    }

    // For a writer that has ended: its last record.
    void HasLogged(std::uint32_t number) {
        started_.store(number);
        returned_.store(number);
    }

    // The last call, and the last one that has returned.
    TCall Started() const { return Call(started_.load()); }
    TCall Returned() const { return Call(returned_.load()); }
    // Microseconds that one Log call took.
    std::uint64_t Longest() const { return longest_.load(); }

  private:
    static constexpr unsigned kNumberBits = 24;
    static TCall Call(std::uint64_t both) {
        return {static_cast<std::uint32_t>(both & ((1U << kNumberBits) - 1)), both >> kNumberBits};
    }

    std::atomic<std::uint64_t> started_{0};
    std::atomic<std::uint64_t> returned_{0};
    std::atomic<std::uint64_t> longest_{0};
};

}  // namespace stress
