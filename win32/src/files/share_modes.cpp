#include "files/share_modes.h"

#include <fcntl.h>
#include <sys/file.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "base/os_error.h"
#include "root/host_path.h"

namespace host {
namespace {

// Holds the flock() of a file while it lives. It waits for another holder, but not long.
class Gate {
  public:
    explicit Gate(int fd) : fd_(fd) {
        constexpr int kAttempts = 500;  // a millisecond each
        constexpr timespec kPause = {0, 1'000'000};
        for (int i = 0; i < kAttempts && !open_; ++i) {
            open_ = flock(fd, LOCK_EX | LOCK_NB) == 0 || (errno != EWOULDBLOCK && errno != EINTR);
            if (!open_) nanosleep(&kPause, nullptr);
        }
    }
    Gate(const Gate&) = delete;
    Gate& operator=(const Gate&) = delete;
    ~Gate() {
        if (open_) flock(fd_, LOCK_UN);
    }
    bool open() const { return open_; }

  private:
    const int fd_;
    bool open_ = false;
};

// One kind of use of a file, with its two marker bytes.
struct Right {
    bool FileUse::*used;
    DWORD share;
    off_t does;
    off_t denies;
};

constexpr Right kRights[] = {
    {&FileUse::read, FILE_SHARE_READ, kShareMarkers, kShareMarkers + 3},
    {&FileUse::write, FILE_SHARE_WRITE, kShareMarkers + 1, kShareMarkers + 4},
    {&FileUse::remove, FILE_SHARE_DELETE, kShareMarkers + 2, kShareMarkers + 5},
};
constexpr off_t kDeniesDelete = kRights[2].denies;

bool MarkedByOther(int fd, off_t marker) {
    struct flock range {};
    range.l_type = F_WRLCK;
    range.l_whence = SEEK_SET;
    range.l_start = marker;
    range.l_len = 1;
    return fcntl(fd, F_OFD_GETLK, &range) == 0 && range.l_type != F_UNLCK;
}

bool Conflicts(int fd, const ShareMode& mode) {
    for (const Right& right : kRights) {
        if (mode.use.*right.used && MarkedByOther(fd, right.denies)) return true;
        if ((mode.share & right.share) == 0 && MarkedByOther(fd, right.does)) return true;
    }
    return false;
}

void Mark(int fd, const ShareMode& mode) {
    if (!mode.use.any()) return;
    for (const Right& right : kRights) {
        if (mode.use.*right.used) LockRange(fd, F_RDLCK, right.does, 1);
        if ((mode.share & right.share) == 0) LockRange(fd, F_RDLCK, right.denies, 1);
    }
}

}  // namespace

DWORD ClaimShareMode(int fd, const ShareMode& mode) {
    const Gate gate(fd);
    if (!gate.open() || Conflicts(fd, mode)) return ERROR_SHARING_VIOLATION;
    Mark(fd, mode);
    return NO_ERROR;
}

UniqueFd ReopenedFile(int fd, const ShareMode& mode) {
    const int flags = fcntl(fd, F_GETFL);
    UniqueFd own = flags < 0 ? UniqueFd() : OpenedAgain(fd, flags & O_ACCMODE);
    const off_t position = own ? lseek(fd, 0, SEEK_CUR) : -1;
    if (position < 0 || lseek(own.get(), position, SEEK_SET) < 0) return UniqueFd();
    // This cannot fail: the old descriptor still holds the same marks, so no other user forbids
    // them.
    Mark(own.get(), mode);
    return own;
}

UniqueFd OpenedAgain(int fd, int flags) {
    const std::string path = "/proc/self/fd/" + std::to_string(fd);
    return UniqueFd(open(path.c_str(), flags | O_CLOEXEC | O_NOCTTY));
}

DWORD RemoveShared(int fd, const char* path) {
    const Gate gate(fd);
    if (!gate.open() || MarkedByOther(fd, kDeniesDelete)) return ERROR_SHARING_VIOLATION;
    return unlink(path) == 0 ? NO_ERROR : PathError(errno, path);
}

}  // namespace host
