// Writing to a pipe that nobody reads is a failing call, not the end of the process.
#pragma once

#include <signal.h>

#include <cerrno>
#include <ctime>

namespace host {

// Keeps SIGPIPE from the calling thread while it lives, and takes back the one that a write in
// between raised. A signal that was waiting before stays.
class HeldPipeSignal {
  public:
    HeldPipeSignal() {
        sigset_t pending;
        sigemptyset(&pipe_);
        sigaddset(&pipe_, SIGPIPE);
        sigpending(&pending);
        waiting_ = sigismember(&pending, SIGPIPE) == 1;
        pthread_sigmask(SIG_BLOCK, &pipe_, &before_);
    }
    HeldPipeSignal(const HeldPipeSignal&) = delete;
    HeldPipeSignal& operator=(const HeldPipeSignal&) = delete;
    // Keeps errno, the write's.
    ~HeldPipeSignal() {
        const int kept = errno;
        const timespec no_time{};
        if (!waiting_) sigtimedwait(&pipe_, nullptr, &no_time);
        pthread_sigmask(SIG_SETMASK, &before_, nullptr);
        errno = kept;
    }

  private:
    sigset_t pipe_;
    sigset_t before_;
    bool waiting_;
};

}  // namespace host
