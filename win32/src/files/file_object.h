// An open file behind a handle.
#pragma once

#include <windows.h>

#include <sys/stat.h>

#include <cstdint>
#include <mutex>
#include <optional>
#include <vector>

#include "base/handles.h"
#include "base/unique_fd.h"
#include "files/share_modes.h"

namespace host {

struct FileAccess {
    bool read = false;
    bool write = false;
};

// Position and data belong to the descriptor. This adds what the handle may do, and the ranges that
// it has locked. Any thread.
class FileObject final : public HandleObject {
  public:
    static constexpr HandleKind kKind = HandleKind::kFile;

    // A regular file with a share mode is opened again in a child of fork. Any other one (a stream
    // that the process was started with, a pipe, a device) is shared with the parent, its position
    // too.
    FileObject(UniqueFd fd, FileAccess access, std::optional<ShareMode> share_mode)
        : HandleObject(kKind),
          fd_(std::move(fd)),
          access_(access),
          type_(TypeOf(fd_)),
          share_mode_(share_mode) {}

    int fd() const { return fd_.get(); }
    FileAccess access() const { return access_; }
    // Whether it is a pipe or a socket. The other end of such a file can be gone.
    bool is_stream() const { return S_ISFIFO(type_) || S_ISSOCK(type_); }

    // Both return a Win32 code. Lock fails with ERROR_LOCK_VIOLATION when a part of the range is
    // locked, by this handle or by another open file. Unlock takes exactly a range that was given
    // to Lock.
    DWORD Lock(std::uint64_t start, std::uint64_t length);
    DWORD Unlock(std::uint64_t start, std::uint64_t length);

    // The child holds no locked range; they stay with the parent.
    void EnterChild() override;

  private:
    struct Range {
        std::uint64_t start;
        std::uint64_t length;
    };

    static mode_t TypeOf(const UniqueFd& fd) {
        struct stat info;
        return fstat(fd.get(), &info) == 0 ? info.st_mode : 0;
    }
    // Makes room for one more range; false without memory.
    bool MakeRoom();

    UniqueFd fd_;
    const FileAccess access_;
    const mode_t type_;
    const std::optional<ShareMode> share_mode_;
    std::mutex mutex_;
    std::vector<Range> locked_;  // guarded by mutex_
};

// FILE_ATTRIBUTE_... bits of a file of this host. Read-only: nobody has write permission. Names
// that begin with a dot are not hidden.
DWORD AttributesOf(const struct stat& info);

// Nanoseconds of this host's clock as units of 100 ns since 1601.
FILETIME FileTimeOf(const timespec& time);
// This host keeps no time of creation: the older of the times of change.
FILETIME CreationTimeOf(const struct stat& info);

}  // namespace host
