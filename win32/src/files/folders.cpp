// Names in folders: attributes, deleting, folders, the current folder.
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <climits>

#include "base/os_error.h"
#include "base/unique_fd.h"
#include "files/file_object.h"
#include "files/share_modes.h"
#include "root/host_path.h"
#include "text/host_text.h"

namespace host {
namespace {

// Deletes through a descriptor, so that the share modes of the file's users count. A file that
// cannot be opened has no such user.
DWORD DeleteFileAt(const HostPath& target) {
    const char* const path = target.path.c_str();
    struct stat info;
    if (lstat(path, &info) != 0) return PathError(errno, target.path);
    if (target.ends_in_separator) return ERROR_INVALID_NAME;
    if (S_ISDIR(info.st_mode)) return ERROR_ACCESS_DENIED;
    if (S_ISREG(info.st_mode)) {
        if ((info.st_mode & 0222) == 0) return ERROR_ACCESS_DENIED;
        UniqueFd fd(open(path, O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
        if (!fd) fd = UniqueFd(open(path, O_WRONLY | O_NOFOLLOW | O_CLOEXEC));
        if (fd) return RemoveShared(fd.get(), path);
    }
    return unlink(path) == 0 ? NO_ERROR : PathError(errno, target.path);
}

DWORD RemoveFolderAt(const HostPath& target) {
    if (target.is_drive_root) return ERROR_ACCESS_DENIED;
    if (rmdir(target.path.c_str()) == 0) return NO_ERROR;
    struct stat info;
    const int code = errno;
    const bool file = code == ENOTDIR && lstat(target.path.c_str(), &info) == 0;
    if (file) return ERROR_DIRECTORY;
    return code == EEXIST ? ERROR_DIR_NOT_EMPTY : PathError(code, target.path);
}

// As mkdir(). A missing parent is reported as a missing path, never as a missing file.
DWORD CreateFolderAt(const HostPath& target) {
    if (mkdir(target.path.c_str(), 0777) == 0) return NO_ERROR;
    return errno == ENOENT ? ERROR_PATH_NOT_FOUND : ErrorFromErrno(errno);
}

BOOL AtPath(LPCWSTR name, DWORD (*act)(const HostPath&)) {
    const HostPath target = ToHostPath(name);
    const DWORD error = target.error != NO_ERROR ? target.error : act(target);
    return error == NO_ERROR || Fail(error);
}

}  // namespace

DWORD AttributesOf(const struct stat& info) {
    DWORD attributes = S_ISDIR(info.st_mode)   ? FILE_ATTRIBUTE_DIRECTORY
                       : S_ISREG(info.st_mode) ? FILE_ATTRIBUTE_ARCHIVE
                                               : FILE_ATTRIBUTE_NORMAL;
    if ((info.st_mode & 0222) == 0) attributes |= FILE_ATTRIBUTE_READONLY;
    return attributes;
}

}  // namespace host

DWORD GetFileAttributesW(LPCWSTR name) {
    const host::HostPath target = host::ToHostPath(name);
    struct stat info;
    DWORD error = target.error;
    if (error == NO_ERROR && stat(target.path.c_str(), &info) != 0) {
        error = host::PathError(errno, target.path);
    }
    if (error == NO_ERROR && target.ends_in_separator && !S_ISDIR(info.st_mode)) {
        error = ERROR_INVALID_NAME;
    }
    if (error == NO_ERROR) return host::AttributesOf(info);
    SetLastError(error);
    return INVALID_FILE_ATTRIBUTES;
}

BOOL DeleteFileW(LPCWSTR name) {
    return host::AtPath(name, host::DeleteFileAt);
}

BOOL CreateDirectoryW(LPCWSTR name, LPSECURITY_ATTRIBUTES) {
    return host::AtPath(name, host::CreateFolderAt);
}

BOOL RemoveDirectoryW(LPCWSTR name) {
    return host::AtPath(name, host::RemoveFolderAt);
}
