// A host root for this process alone, in memory: chosen before the library is initialised, so that
// nothing of the user's own is read or written. Its folder stays when the process dies of a
// finding; scripts/fuzz gives a folder in TMPDIR and removes it.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

namespace {

// The library must open no log of its own: the targets say when there is one.
constexpr char kRegistry[] =
    "Windows Registry Editor Version 5.00\n\n"
    "[HKEY_LOCAL_MACHINE\\Software\\Halvorn\\Vantrel]\n\"Logfile\"=\"Disabled\"\n";
constexpr char kVariable[] = "QV_HOST_ROOT=";

[[noreturn]] void Fail(const char* what) {
    perror(what);
    _exit(2);
}

void FillHostRoot(const char* root) {
    char path[4200];
    for (const char* folder : {"drive_c", "registry"}) {
        snprintf(path, sizeof(path), "%s/%s", root, folder);
        if (mkdir(path, 0700) != 0) Fail(path);
    }
    snprintf(path, sizeof(path), "%s/registry/HKEY_LOCAL_MACHINE.reg", root);
    const int file = open(path, O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    const auto size = static_cast<ssize_t>(strlen(kRegistry));
    if (write(file, kRegistry, strlen(kRegistry)) != size) Fail(path);
    close(file);
}

const char* ValueOf(char** environment, const char* variable) {
    const std::size_t length = strlen(variable);
    for (; *environment != nullptr; ++environment) {
        if (strncmp(*environment, variable, length) == 0) return *environment + length;
    }
    return nullptr;
}

// Runs before the constructors of any library, the C run-time's among them, which takes the
// environment of the process's start: so the process starts a second time, with its host root.
void MakeHostRoot(int, char** arguments, char** environment) {
    char name[40];
    char variable[4100];
    snprintf(name, sizeof(name), "/qv_fuzz.%d", getpid());
    const char* root = ValueOf(environment, kVariable);
    if (root != nullptr && strstr(root, name) != nullptr) return;
    const char* folder = ValueOf(environment, "TMPDIR=");
    snprintf(variable, sizeof(variable), "%s%s%s", kVariable, folder ? folder : "/dev/shm", name);
    root = variable + strlen(kVariable);
    if (mkdir(root, 0700) != 0) Fail(root);
    FillHostRoot(root);

    // The first of two entries of one name is the one that counts.
    char* changed[1024] = {variable};
    for (int i = 0; environment[i] != nullptr && i < 1022; ++i) changed[i + 1] = environment[i];
    execve("/proc/self/exe", arguments, changed);
    Fail("/proc/self/exe");
}

__attribute__((section(".preinit_array"), used)) void (*const kMakeHostRoot)(int, char**,
                                                                             char**) = MakeHostRoot;

__attribute__((destructor)) void RemoveHostRoot() {
    std::error_code ignored;
    std::filesystem::remove_all(std::getenv("QV_HOST_ROOT"), ignored);
}

}  // namespace
