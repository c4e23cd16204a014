// The folder that holds this host's state: drive C, registry, spooler, shared names.
#pragma once

#include <string>

namespace host {

// QV_HOST_ROOT, else qv_rtl under XDG_STATE_HOME, else under ~/.local/state; absolute, without a
// separator at its end. Read from the environment on each call; the folder may not exist yet. A
// relative QV_HOST_ROOT starts at the current folder of the first call; relative names in the other
// variables are ignored. Without these variables and without a home in the user's entry: a path
// below which no file can be made, and a line on standard error.
std::string HostRoot();
bool HasHostRoot();

// Tells whether HostRoot() has changed, for code that keeps something made from it. One thread at a
// time.
class HostRootKey {
  public:
    // False at the first call, and once after each change of the environment.
    bool StillHolds();

  private:
    static constexpr int kVariables = 3;
    std::string values_[kVariables];
    bool is_set_ = false;
};

}  // namespace host
