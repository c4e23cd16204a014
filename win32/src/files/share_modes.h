// Share modes of open files, between handles and processes.
//
// Each open file holds read locks (open file description locks) on marker bytes from 2^62 on, far
// beyond any data: one byte for each thing it does and for each thing it denies to others. They
// vanish with the descriptor, also when the process is killed. Looking and marking happen under a
// short flock() on the file. A file system without such locks has no share modes.
#pragma once

#include <windows.h>

#include <fcntl.h>
#include <sys/types.h>

#include <cerrno>

#include "base/unique_fd.h"

namespace host {

// First byte that share modes use; locks of data ranges end before it.
constexpr off_t kShareMarkers = off_t{1} << 62;

struct FileUse {
    bool read = false;
    bool write = false;
    bool remove = false;
    bool any() const { return read || write || remove; }
};

struct ShareMode {
    FileUse use;
    DWORD share = 0;  // FILE_SHARE_...
};

// Joins the users of the file of `fd`, which must be open for reading. ERROR_SHARING_VIOLATION when
// another open file forbids the use or does what the share denies; nothing is held then once `fd`
// is closed. A descriptor that cannot read joins without a mark.
DWORD ClaimShareMode(int fd, const ShareMode& mode);

// The file of `fd`, which can be a parent's, opened once more with the same access, position and
// share mode. Nothing else of `fd` is shared. Empty, with errno, on failure; the user may have lost
// the right to open it.
UniqueFd ReopenedFile(int fd, const ShareMode& mode);

// The file of `fd`, opened once more by its descriptor with `flags` of open(). Needs /proc.
UniqueFd OpenedAgain(int fd, int flags);

// Removes the name `path` of the open file `fd`, unless a user of it denies that with
// ERROR_SHARING_VIOLATION.
DWORD RemoveShared(int fd, const char* path);

// One non-blocking open file description lock of `type` (F_RDLCK, F_WRLCK, F_UNLCK); 0 or errno.
inline int LockRange(int fd, short type, off_t start, off_t length) {
    struct flock range {};
    range.l_type = type;
    range.l_whence = SEEK_SET;
    range.l_start = start;
    range.l_len = length;
    while (fcntl(fd, F_OFD_SETLK, &range) != 0) {
        if (errno != EINTR) return errno;
    }
    return 0;
}

}  // namespace host
