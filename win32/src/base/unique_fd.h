// The one owner of a file descriptor.
#pragma once

#include <unistd.h>

#include <cerrno>
#include <utility>

namespace host {

class UniqueFd {
  public:
    UniqueFd() = default;
    explicit UniqueFd(int fd) : fd_(fd) {}
    UniqueFd(UniqueFd&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    UniqueFd& operator=(UniqueFd&& other) noexcept {
        UniqueFd old(std::exchange(fd_, std::exchange(other.fd_, -1)));
        return *this;
    }
    // Keeps errno, so that a function that fails can close first and report afterwards.
    ~UniqueFd() {
        const int kept = errno;
        if (fd_ >= 0) close(fd_);
        errno = kept;
    }
    int get() const { return fd_; }
    int release() { return std::exchange(fd_, -1); }
    explicit operator bool() const { return fd_ >= 0; }

  private:
    int fd_ = -1;
};

}  // namespace host
