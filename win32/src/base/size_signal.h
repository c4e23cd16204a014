// A write past the process's limit of file sizes (RLIMIT_FSIZE) fails, and does not end the process
// by a signal.
#pragma once

#include <signal.h>

namespace host {

// While it lives, SIGXFSZ does nothing, unless the program has its own handler. It installs an
// empty handler and does not ignore the signal: a program that this process starts would inherit
// that.
class SizeSignal {
  public:
    // The first call begins it, the unload of this library ends it.
    static void Hold() { static const SizeSignal held; }
    SizeSignal(const SizeSignal&) = delete;
    SizeSignal& operator=(const SizeSignal&) = delete;

  private:
    SizeSignal() { Replace(SIG_DFL, DoNothing); }
    ~SizeSignal() { Replace(DoNothing, SIG_DFL); }

    static void DoNothing(int) {}
    static void Replace(void (*before)(int), void (*after)(int)) {
        struct sigaction action = {};
        if (sigaction(SIGXFSZ, nullptr, &action) != 0 || action.sa_handler != before) return;
        action.sa_handler = after;
        action.sa_flags = SA_RESTART;
        sigaction(SIGXFSZ, &action, nullptr);
    }
};

}  // namespace host
