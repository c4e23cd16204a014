#include "root/host_root.h"

#include <pwd.h>
#include <unistd.h>

#include "root/environment.h"

namespace host {
namespace {

std::string AbsoluteFromEnvironment(const char* name) {
    std::string path = EnvironmentText(name);
    if (!path.starts_with('/')) path.clear();
    while (path.size() > 1 && path.back() == '/') path.pop_back();
    return path;
}

std::string Home() {
    const std::string home = AbsoluteFromEnvironment("HOME");
    if (!home.empty()) return home;
    char buffer[4096];
    passwd entry;
    passwd* found = nullptr;
    getpwuid_r(getuid(), &entry, buffer, sizeof buffer, &found);
    return found == nullptr ? "/tmp" : entry.pw_dir;
}

}  // namespace

std::string HostRoot() {
    const std::string chosen = AbsoluteFromEnvironment("QV_HOST_ROOT");
    if (!chosen.empty()) return chosen;
    const std::string state = AbsoluteFromEnvironment("XDG_STATE_HOME");
    return (state.empty() ? Home() + "/.local/state" : state) + "/qv_rtl";
}

bool HostRootKey::StillHolds() {
    constexpr const char* kNames[kVariables] = {"QV_HOST_ROOT", "XDG_STATE_HOME", "HOME"};
    bool holds = is_set_;
    for (int i = 0; i < kVariables; ++i) {
        const std::string now = EnvironmentText(kNames[i]);
        if (now != values_[i]) {
            values_[i] = now;
            holds = false;
        }
        // When this variable names a folder, the variables behind it do not matter.
        if (now.starts_with('/')) break;
    }
    is_set_ = true;
    return holds;
}

}  // namespace host
