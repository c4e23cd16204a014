#include "root/host_root.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>

#include "root/environment.h"

namespace host {
namespace {

// The host root of a process that has none: no file can be made below this path.
constexpr char kNowhere[] = "/dev/null";

std::string WithoutEnd(std::string path) {
    while (path.size() > 1 && path.back() == '/') path.pop_back();
    return path;
}

std::string AbsoluteFromEnvironment(const char* name) {
    const std::string path = EnvironmentText(name);
    return path.starts_with('/') ? WithoutEnd(path) : "";
}

// The current folder at the first call. So a program that changes its folder keeps its registry.
const std::string& StartFolder() {
    static const std::string& folder = *new std::string([] {
        std::error_code ignored;
        return std::filesystem::current_path(ignored).string();
    }());
    return folder;
}

std::string Chosen() {
    const std::string path = WithoutEnd(EnvironmentText("QV_HOST_ROOT"));
    if (path.empty() || path.starts_with('/')) return path;
    return (std::filesystem::path(StartFolder()) / path).lexically_normal();
}

void SayThatThereIsNoRoot() {
    static const bool said = std::fprintf(stderr,
                                          "qv_rtl: no folder for registry and files: QV_HOST_ROOT "
                                          "and HOME are not set, and user %u has no entry\n",
                                          unsigned{getuid()}) > 0;
    static_cast<void>(said);
}

std::string Home() {
    const std::string chosen = AbsoluteFromEnvironment("HOME");
    if (!chosen.empty()) return chosen;
    char buffer[4096];
    passwd entry;
    passwd* found = nullptr;
    getpwuid_r(getuid(), &entry, buffer, sizeof buffer, &found);
    const std::string home = found == nullptr ? "" : WithoutEnd(entry.pw_dir);
    return home.starts_with('/') ? home : "";
}

}  // namespace

std::string HostRoot() {
    const std::string chosen = Chosen();
    if (!chosen.empty()) return chosen;
    std::string state = AbsoluteFromEnvironment("XDG_STATE_HOME");
    if (state.empty()) {
        const std::string home = Home();
        if (home.empty()) SayThatThereIsNoRoot();
        state = home.empty() ? kNowhere : home + "/.local/state";
    }
    return state + "/qv_rtl";
}

bool HasHostRoot() {
    return !HostRoot().starts_with(kNowhere);
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
        if (now.starts_with('/') || (i == 0 && !now.empty())) break;
    }
    is_set_ = true;
    return holds;
}

}  // namespace host
