// A write to a pipe without a reader fails, and does not end the process by a signal.
#pragma once

#include <signal.h>

#include <cerrno>
#include <ctime>

namespace host {

// Blocks SIGPIPE for the calling thread while it lives. Its destructor removes the signal that a
// write has raised. A signal that was pending before stays.
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
    // Keeps the errno of the write.
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
