// The one owner of a file descriptor.
//
// A descriptor belongs to the process that opened it. In a child of fork the owners are empty, and
// the descriptors of the parent are closed: a lock or a connection must not live on in a process
// that does not use it. An owner that needs its descriptor in the child opens it anew from
// Inherited().
#pragma once

#include <unistd.h>

#include <cerrno>
#include <utility>

#include "base/fork_count.h"
#include "base/owned_fds.h"

namespace host {

class UniqueFd {
  public:
    UniqueFd() = default;
    explicit UniqueFd(int fd) : fd_(fd), process_(ForkCount()) { NoteFd(fd); }
    UniqueFd(UniqueFd&& other) noexcept
        : fd_(std::exchange(other.fd_, -1)), process_(other.process_) {}
    UniqueFd& operator=(UniqueFd&& other) noexcept {
        UniqueFd old(std::move(*this));
        fd_ = std::exchange(other.fd_, -1);
        process_ = other.process_;
        return *this;
    }
    // Keeps errno, so that a function that fails can close first and report afterwards.
    ~UniqueFd() {
        const int kept = errno;
        const int fd = release();
        if (fd >= 0) close(fd);
        errno = kept;
    }
    int get() const { return process_ == ForkCount() ? fd_ : -1; }
    int release() {
        const int fd = get();
        ForgetFd(fd);
        fd_ = -1;
        return fd;
    }
    explicit operator bool() const { return get() >= 0; }

    // In the handler of fork, in the child: the parent's descriptor, which is still open.
    int Inherited() const { return fd_; }

  private:
    int fd_ = -1;
    unsigned process_ = 0;
};

}  // namespace host
