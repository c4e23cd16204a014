#include "files/share_modes.h"

#include <fcntl.h>
#include <sys/file.h>
#include <time.h>
#include <unistd.h>

#include <bit>
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

// The marker bytes, a bit for each: reading, writing and removing that is done, then the same that
// is denied.
constexpr unsigned kKinds = 3;
constexpr unsigned kDeniesDelete = 1U << 5;

unsigned Done(const ShareMode& mode) {
    return unsigned{mode.use.read} | unsigned{mode.use.write} << 1 | unsigned{mode.use.remove} << 2;
}

unsigned Denied(const ShareMode& mode) {
    return ~mode.share & (FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE);
}
static_assert(FILE_SHARE_READ == 1 && FILE_SHARE_WRITE == 2 && FILE_SHARE_DELETE == 4);

// Calls `take` with the first byte and the number of each run of markers, until it returns true.
template <class Take>
bool AnyRun(unsigned markers, const Take& take) {
    for (unsigned first = 0; markers >> first != 0;) {
        first += static_cast<unsigned>(std::countr_zero(markers >> first));
        const auto count = static_cast<unsigned>(std::countr_one(markers >> first));
        if (take(kShareMarkers + first, off_t{count})) return true;
        first += count;
    }
    return false;
}

bool MarkedByOther(int fd, unsigned markers) {
    return AnyRun(markers, [fd](off_t start, off_t count) {
        struct flock range {};
        range.l_type = F_WRLCK;
        range.l_whence = SEEK_SET;
        range.l_start = start;
        range.l_len = count;
        return fcntl(fd, F_OFD_GETLK, &range) == 0 && range.l_type != F_UNLCK;
    });
}

bool Conflicts(int fd, const ShareMode& mode) {
    return MarkedByOther(fd, Denied(mode) | Done(mode) << kKinds);
}

void Mark(int fd, const ShareMode& mode) {
    if (!mode.use.any()) return;
    AnyRun(Done(mode) | Denied(mode) << kKinds, [fd](off_t start, off_t count) {
        LockRange(fd, F_RDLCK, start, count);
        return false;
    });
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
