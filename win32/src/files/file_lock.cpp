// Locks of byte ranges: LockFile and UnlockFile.
#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <new>

#include "base/os_error.h"
#include "files/file_object.h"
#include "files/share_modes.h"

namespace host {
namespace {

constexpr auto kEnd = static_cast<std::uint64_t>(kShareMarkers);

off_t LengthBelowMarkers(std::uint64_t start, std::uint64_t length) {
    return static_cast<off_t>(std::min(length, kEnd - start));
}

constexpr std::uint64_t Join(DWORD low, DWORD high) {
    return std::uint64_t{high} << 32 | low;
}

}  // namespace

void FileObject::EnterChild() {
    const int old = fd_.Inherited();
    fd_ = share_mode_ && S_ISREG(type_) ? ReopenedFile(old, *share_mode_)
                                        : UniqueFd(fcntl(old, F_DUPFD_CLOEXEC, 3));
    if (mutex_.try_lock()) {
        locked_.clear();
        mutex_.unlock();
        return;
    }
    // A thread of the parent was changing the list when it forked. List and mutex begin anew.
    ::new (&mutex_) std::mutex;
    ::new (&locked_) std::vector<Range>;
}

bool FileObject::MakeRoom() {
    try {
        locked_.reserve(locked_.size() + 1);
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

DWORD FileObject::Lock(std::uint64_t start, std::uint64_t length) {
    if (length == 0 || start >= kEnd || start + length < start) return ERROR_INVALID_PARAMETER;
    const std::scoped_lock lock(mutex_);
    for (const Range& own : locked_) {
        if (start < own.start + own.length && own.start < start + length) {
            return ERROR_LOCK_VIOLATION;
        }
    }
    // Room for the range is made first, because nothing may fail once the range is locked.
    if (!MakeRoom()) return ERROR_NOT_ENOUGH_MEMORY;
    const short type = access_.write ? F_WRLCK : F_RDLCK;
    const off_t from = static_cast<off_t>(start);
    const int code = LockRange(fd(), type, from, LengthBelowMarkers(start, length));
    if (code == 0) locked_.push_back({start, length});
    return code == 0 ? NO_ERROR : code == EACCES ? ERROR_LOCK_VIOLATION : ErrorFromErrno(code);
}

DWORD FileObject::Unlock(std::uint64_t start, std::uint64_t length) {
    const std::scoped_lock lock(mutex_);
    const auto own = std::find_if(locked_.begin(), locked_.end(), [&](const Range& range) {
        return range.start == start && range.length == length;
    });
    if (own == locked_.end()) return ERROR_NOT_LOCKED;
    // The range counts as free even when the kernel refuses to unlock it. Otherwise it would lock
    // out this handle for ever.
    *own = locked_.back();
    locked_.pop_back();
    const off_t from = static_cast<off_t>(start);
    const int code = LockRange(fd(), F_UNLCK, from, LengthBelowMarkers(start, length));
    return code == 0 ? NO_ERROR : ErrorFromErrno(code);
}

}  // namespace host

// Inlines all calls (gnu::flatten). After a system call, the processor mispredicts each return to
// an older frame, and every log record takes and frees a lock.
[[gnu::flatten]] BOOL LockFile(HANDLE file, DWORD offset_low, DWORD offset_high, DWORD bytes_low,
                               DWORD bytes_high) {
    const host::HandlePin<host::FileObject> object(file);
    if (!object) return FALSE;
    const DWORD error =
        object->Lock(host::Join(offset_low, offset_high), host::Join(bytes_low, bytes_high));
    return error == NO_ERROR || host::Fail(error);
}

[[gnu::flatten]] BOOL UnlockFile(HANDLE file, DWORD offset_low, DWORD offset_high, DWORD bytes_low,
                                 DWORD bytes_high) {
    const host::HandlePin<host::FileObject> object(file);
    if (!object) return FALSE;
    const DWORD error =
        object->Unlock(host::Join(offset_low, offset_high), host::Join(bytes_low, bytes_high));
    return error == NO_ERROR || host::Fail(error);
}
