// Opening and closing: CreateFileW, GetStdHandle, CloseHandle.
#include <fcntl.h>
#include <sys/stat.h>

#include "base/os_error.h"
#include "base/size_signal.h"
#include "files/file_object.h"
#include "files/share_modes.h"
#include "root/host_path.h"

namespace host {
namespace {

constexpr DWORD kFileReadData = 0x0001;
constexpr DWORD kFileWriteData = 0x0002;
constexpr DWORD kDelete = 0x00010000;
constexpr DWORD kScanHints = 0x18000000;  // FILE_FLAG_SEQUENTIAL_SCAN, FILE_FLAG_RANDOM_ACCESS
constexpr DWORD kFileFlags = 0xFFF00000;

struct Request {
    ShareMode mode;
    DWORD disposition;
    bool read_only_file;  // FILE_ATTRIBUTE_READONLY for a new file

    bool truncates() const {
        return disposition == CREATE_ALWAYS || disposition == TRUNCATE_EXISTING;
    }
    bool creates() const {
        return disposition != OPEN_EXISTING && disposition != TRUNCATE_EXISTING;
    }
};

Request MakeRequest(DWORD access, DWORD share, DWORD disposition, DWORD attributes) {
    Request request{{{}, share}, disposition, (attributes & FILE_ATTRIBUTE_READONLY) != 0};
    request.mode.use.read = (access & (GENERIC_READ | GENERIC_ALL | kFileReadData)) != 0;
    request.mode.use.write = (access & (GENERIC_WRITE | GENERIC_ALL | kFileWriteData)) != 0;
    request.mode.use.remove = (access & (GENERIC_ALL | kDelete)) != 0;
    return request;
}

DWORD Check(const Request& request, DWORD attributes) {
    if (request.disposition < CREATE_NEW || request.disposition > TRUNCATE_EXISTING ||
        (request.mode.share & ~DWORD{FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE}) !=
            0 ||
        (request.disposition == TRUNCATE_EXISTING && !request.mode.use.write)) {
        return ERROR_INVALID_PARAMETER;
    }
    return (attributes & kFileFlags & ~kScanHints) != 0 ? ERROR_NOT_SUPPORTED : NO_ERROR;
}

int OpenExisting(const std::string& path, const Request& request) {
    constexpr int kFlags = O_CLOEXEC | O_NOCTTY;
    if (!request.mode.use.write && !request.truncates())
        return open(path.c_str(), O_RDONLY | kFlags);
    // A share mode needs a descriptor that can read, so read access is asked for even when the
    // caller only writes.
    const int fd = open(path.c_str(), O_RDWR | kFlags);
    if (fd >= 0 || request.mode.use.read || (errno != EACCES && errno != EPERM)) return fd;
    return open(path.c_str(), O_WRONLY | kFlags);
}

int CreateNew(const std::string& path, const Request& request) {
    const mode_t mode = request.read_only_file ? 0444 : 0666;
    return open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOCTTY, mode);
}

// Opens or creates the file; `existed` tells which. Starts again when the file appears or
// disappears in between.
DWORD OpenOrCreate(const std::string& path, const Request& request, UniqueFd& fd, bool& existed) {
    constexpr int kAttempts = 16;
    for (int i = 0; i < kAttempts; ++i) {
        if (request.disposition != CREATE_NEW) {
            existed = true;
            fd = UniqueFd(OpenExisting(path, request));
            if (fd) return NO_ERROR;
            if (errno != ENOENT || !request.creates()) return PathError(errno, path);
        }
        existed = false;
        fd = UniqueFd(CreateNew(path, request));
        if (fd) return NO_ERROR;
        if (errno != EEXIST) return PathError(errno, path);
        if (request.disposition == CREATE_NEW) return ERROR_FILE_EXISTS;
    }
    return ERROR_ACCESS_DENIED;
}

// Checks what an existing file must allow before the handle may use it.
DWORD Enter(int fd, const Request& request, bool existed) {
    struct stat info;
    if (fstat(fd, &info) != 0) return ErrorFromErrno(errno);
    if (S_ISDIR(info.st_mode)) return ERROR_ACCESS_DENIED;
    if (!S_ISREG(info.st_mode)) return NO_ERROR;
    const bool changes = request.mode.use.write || request.truncates();
    if (existed && changes && (info.st_mode & 0222) == 0) return ERROR_ACCESS_DENIED;
    if (request.mode.use.any()) {
        const DWORD error = ClaimShareMode(fd, request.mode);
        if (error != NO_ERROR) return error;
    }
    if (!existed || !request.truncates()) return NO_ERROR;
    return ftruncate(fd, 0) == 0 ? NO_ERROR : ErrorFromErrno(errno);
}

DWORD OpenFile(LPCWSTR name, const Request& request, UniqueFd& fd, bool& existed) {
    const HostPath target = ToHostPath(name);
    if (target.error != NO_ERROR) return target.error;
    if (target.ends_in_separator && !target.is_drive_root) return ERROR_PATH_NOT_FOUND;
    const DWORD error = OpenOrCreate(target.path, request, fd, existed);
    return error != NO_ERROR ? error : Enter(fd.get(), request, existed);
}

// The standard streams belong to the process. Their handles can be closed; the streams stay open.
HANDLE StandardStream(int fd) {
    const int flags = fcntl(fd, F_GETFL);
    if (flags < 0) return nullptr;
    const int mode = flags & O_ACCMODE;
    const FileAccess access{mode != O_WRONLY, mode != O_RDONLY};
    UniqueFd copy(fcntl(fd, F_DUPFD_CLOEXEC, 3));
    return copy ? OpenHandle(std::make_unique<FileObject>(std::move(copy), access, std::nullopt))
                : nullptr;
}

}  // namespace
}  // namespace host

HANDLE CreateFileW(LPCWSTR name, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES,
                   DWORD disposition, DWORD attributes, HANDLE) {
    const host::Request request = host::MakeRequest(access, share, disposition, attributes);
    DWORD error = host::Check(request, attributes);
    if (request.mode.use.write) host::SizeSignal::Hold();
    host::UniqueFd fd;
    bool existed = false;
    if (error == NO_ERROR) error = host::OpenFile(name, request, fd, existed);
    if (error != NO_ERROR) {
        SetLastError(error);
        return INVALID_HANDLE_VALUE;
    }
    const HANDLE file = host::OpenHandle(std::make_unique<host::FileObject>(
        std::move(fd), host::FileAccess{request.mode.use.read, request.mode.use.write},
        request.mode));
    if (file == nullptr) return INVALID_HANDLE_VALUE;
    const bool told = disposition == CREATE_ALWAYS || disposition == OPEN_ALWAYS;
    SetLastError(existed && told ? ERROR_ALREADY_EXISTS : NO_ERROR);
    return file;
}

HANDLE GetStdHandle(DWORD which) {
    static const HANDLE streams[] = {host::StandardStream(0), host::StandardStream(1),
                                     host::StandardStream(2)};
    const DWORD index = STD_INPUT_HANDLE - which;
    if (index < 3) return streams[index];
    SetLastError(ERROR_INVALID_HANDLE);
    return INVALID_HANDLE_VALUE;
}

BOOL CloseHandle(HANDLE object) {
    // The pin keeps the number from naming another object between the check and the close.
    host::HandleObject* const pinned = host::PinHandle(object);
    if (pinned == nullptr) return host::Fail(ERROR_INVALID_HANDLE);
    const bool closes = pinned->kind() != host::HandleKind::kSearch;
    if (!closes) SetLastError(ERROR_INVALID_HANDLE);
    const bool closed = closes && host::CloseOpenHandle(object);
    host::UnpinHandle(object);
    return closed;
}
