// Data of open files: reading, writing, position and size. The position of a handle is the position
// of its descriptor, so each call is one system call. A transfer at its own offset does not change
// the position.
#include <fcntl.h>
#include <minwinbase.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <optional>

#include "base/os_error.h"
#include "base/pipe_signal.h"
#include "files/file_object.h"

namespace host {
namespace {

using Pin = HandlePin<FileObject>;

// Linux moves at most this many bytes in one call.
constexpr DWORD kMostAtOnce = 0x7FFFF000;

// Moves `bytes` bytes with `step(done, size)`, which works like read() and write(). It stops at a
// step that moves nothing and, when `short_ends` is set, at a short step.
template <class Step>
DWORD Transfer(DWORD bytes, bool short_ends, DWORD& done, Step step) {
    while (done < bytes) {
        const DWORD size = std::min(bytes - done, kMostAtOnce);
        const ssize_t moved = step(done, size);
        if (moved < 0 && errno == EINTR) continue;
        if (moved < 0) return errno == EAGAIN ? ERROR_NOT_READY : ErrorFromErrno(errno);
        done += static_cast<DWORD>(moved);
        if (moved == 0 || (short_ends && static_cast<DWORD>(moved) < size)) break;
    }
    return NO_ERROR;
}

off_t OffsetOf(const OVERLAPPED& overlapped) {
    return static_cast<off_t>(std::uint64_t{overlapped.OffsetHigh} << 32 | overlapped.Offset);
}

DWORD SeekError(std::int64_t distance) {
    return errno == EINVAL && distance < 0 ? ERROR_NEGATIVE_SEEK : ErrorFromErrno(errno);
}

// The low half of a 64-bit result. When it equals the value that means failure, the last error is
// cleared to say that the call succeeded.
DWORD LowHalf(std::int64_t value) {
    const auto low = static_cast<DWORD>(value);
    if (low == INVALID_SET_FILE_POINTER) SetLastError(NO_ERROR);
    return low;
}

DWORD FailSeek(DWORD error) {
    SetLastError(error);
    return INVALID_SET_FILE_POINTER;
}

// Seeks for a caller that gets only the lower half. A position beyond 4 GiB is an error, and the
// position does not change.
DWORD SeekNear(int fd, LONG distance, DWORD method) {
    const off_t before = method == FILE_BEGIN ? 0 : lseek(fd, 0, SEEK_CUR);
    const off_t after = before < 0 ? before : lseek(fd, distance, static_cast<int>(method));
    if (after < 0) return FailSeek(SeekError(distance));
    if (after > INVALID_FILE_SIZE) {
        lseek(fd, before, SEEK_SET);
        return FailSeek(ERROR_INVALID_PARAMETER);
    }
    return LowHalf(after);
}

}  // namespace
}  // namespace host

static_assert(FILE_BEGIN == SEEK_SET && FILE_CURRENT == SEEK_CUR && FILE_END == SEEK_END);

BOOL ReadFile(HANDLE file, LPVOID buffer, DWORD bytes, LPDWORD done, LPOVERLAPPED overlapped) {
    DWORD count = 0;
    if (done != nullptr) *done = 0;
    const host::Pin object(file);
    if (!object) return FALSE;
    if (overlapped != nullptr && overlapped->hEvent != nullptr) {
        return host::Fail(ERROR_NOT_SUPPORTED);
    }
    if (!object->access().read) return host::Fail(ERROR_ACCESS_DENIED);
    DWORD error = host::Transfer(bytes, true, count, [&](DWORD at, DWORD size) {
        BYTE* const target = static_cast<BYTE*>(buffer) + at;
        return overlapped == nullptr
                   ? read(object->fd(), target, size)
                   : pread(object->fd(), target, size, host::OffsetOf(*overlapped) + at);
    });
    if (done != nullptr) *done = count;
    // The end of the file is an error only for a transfer at its own offset.
    if (error == NO_ERROR && overlapped != nullptr && count == 0 && bytes > 0) {
        error = ERROR_HANDLE_EOF;
    }
    return error == NO_ERROR || host::Fail(error);
}

BOOL WriteFile(HANDLE file, LPCVOID buffer, DWORD bytes, LPDWORD done, LPOVERLAPPED overlapped) {
    DWORD count = 0;
    if (done != nullptr) *done = 0;
    const host::Pin object(file);
    if (!object) return FALSE;
    if (overlapped != nullptr && overlapped->hEvent != nullptr) {
        return host::Fail(ERROR_NOT_SUPPORTED);
    }
    if (!object->access().write) return host::Fail(ERROR_ACCESS_DENIED);
    std::optional<host::HeldPipeSignal> held;
    if (object->is_stream()) held.emplace();
    const DWORD error = host::Transfer(bytes, false, count, [&](DWORD at, DWORD size) {
        const BYTE* const source = static_cast<const BYTE*>(buffer) + at;
        return overlapped == nullptr
                   ? write(object->fd(), source, size)
                   : pwrite(object->fd(), source, size, host::OffsetOf(*overlapped) + at);
    });
    if (done != nullptr) *done = count;
    return error == NO_ERROR || host::Fail(error);
}

DWORD SetFilePointer(HANDLE file, LONG low, PLONG high, DWORD method) {
    const host::Pin object(file);
    if (!object) return INVALID_SET_FILE_POINTER;
    if (method > FILE_END) return host::FailSeek(ERROR_INVALID_PARAMETER);
    if (high == nullptr) return host::SeekNear(object->fd(), low, method);
    const auto distance = static_cast<std::int64_t>(std::uint64_t{static_cast<DWORD>(*high)} << 32 |
                                                    static_cast<DWORD>(low));
    const off_t position = lseek(object->fd(), distance, static_cast<int>(method));
    if (position < 0) return host::FailSeek(host::SeekError(distance));
    *high = static_cast<LONG>(position >> 32);
    return host::LowHalf(position);
}

BOOL SetEndOfFile(HANDLE file) {
    const host::Pin object(file);
    if (!object) return FALSE;
    if (!object->access().write) return host::Fail(ERROR_ACCESS_DENIED);
    const off_t position = lseek(object->fd(), 0, SEEK_CUR);
    if (position < 0 || ftruncate(object->fd(), position) != 0) {
        return host::Fail(host::ErrorFromErrno(errno));
    }
    return TRUE;
}

DWORD GetFileSize(HANDLE file, LPDWORD high) {
    const host::Pin object(file);
    if (!object) return INVALID_FILE_SIZE;
    struct stat info;
    if (fstat(object->fd(), &info) != 0) return host::FailSeek(host::ErrorFromErrno(errno));
    if (!S_ISREG(info.st_mode)) return host::FailSeek(ERROR_INVALID_FUNCTION);
    if (high != nullptr) *high = static_cast<DWORD>(info.st_size >> 32);
    return host::LowHalf(info.st_size);
}
