// The lock of a log file's header, as other processes see it.
#pragma once

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <string>
#include <vector>

#include "log_file/log_format.h"
#include "processes.h"

namespace stress {

inline struct flock HeaderRange() {
    struct flock header = {};
    header.l_type = F_WRLCK;
    header.l_whence = SEEK_SET;
    header.l_len = Mox::kHeaderSize;
    return header;
}

// A copy of a log file, made under its lock. Empty without a file.
inline std::vector<std::uint8_t> CopyUnderLock(const std::string& file) {
    const int fd = open(file.c_str(), O_RDWR | O_CLOEXEC);
    if (fd < 0) return {};
    struct flock header = HeaderRange();
    std::vector<std::uint8_t> bytes;
    if (fcntl(fd, F_OFD_SETLKW, &header) == 0) {
        bytes.resize(static_cast<std::size_t>(lseek(fd, 0, SEEK_END)));
        const auto size = pread(fd, bytes.data(), bytes.size(), 0);
        bytes.resize(size < 0 ? 0 : static_cast<std::size_t>(size));
    }
    close(fd);
    return bytes;
}

inline bool IsLocked(const std::string& file) {
    const int fd = open(file.c_str(), O_RDWR | O_CLOEXEC);
    struct flock header = HeaderRange();
    const bool asked = fcntl(fd, F_OFD_GETLK, &header) == 0;
    close(fd);
    return asked && header.l_type != F_UNLCK;
}

// Stops the process (SIGSTOP). True when it holds the lock: the others hold it only for moments, so
// that a lock of 20 ms is the stopped one's.
inline bool StopsInTheLock(pid_t process, const std::string& file) {
    kill(process, SIGSTOP);
    int status = 0;
    waitpid(process, &status, WUNTRACED);
    const std::uint64_t until = Now() + 20000;
    while (IsLocked(file)) {
        if (Now() > until) return true;
        SleepFor(200);
    }
    return false;
}

}  // namespace stress
