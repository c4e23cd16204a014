#include "root/runtime_directory.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>

#include "root/host_root.h"

namespace host {

UniqueFd OpenRuntimeDirectory(const char* name) {
    const std::string run = HostRoot() + "/run";
    std::error_code error;
    std::filesystem::create_directories(HostRoot(), error);
    if (error) {
        errno = error.value();
        return UniqueFd();
    }
    const std::string folder = run + '/' + name;
    for (const std::string& made : {run, folder}) {
        if (mkdir(made.c_str(), 0700) != 0 && errno != EEXIST) return UniqueFd();
    }
    return UniqueFd(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NOFOLLOW));
}

UniqueFd LockRuntimeDirectory(int folder) {
    UniqueFd lock(openat(folder, "lock", O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
    int result = lock ? 0 : -1;
    while (lock && (result = flock(lock.get(), LOCK_EX)) != 0 && errno == EINTR) {
    }
    return result == 0 ? std::move(lock) : UniqueFd();
}

}  // namespace host
