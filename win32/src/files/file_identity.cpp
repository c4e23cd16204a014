// GetFileInformationByHandle: which file a handle leads to, and its attributes, times and size.
#include <windows.h>

#include <sys/stat.h>

#include <cerrno>

#include "base/os_error.h"
#include "files/file_object.h"

// The device is the volume and the inode the index, so that two handles lead to one file exactly
// when volume and index are equal.
BOOL GetFileInformationByHandle(HANDLE file, LPBY_HANDLE_FILE_INFORMATION information) {
    const host::HandlePin<host::FileObject> object(file);
    if (!object) return FALSE;
    struct stat info;
    if (fstat(object->fd(), &info) != 0) return host::Fail(host::ErrorFromErrno(errno));
    *information = {};
    information->dwFileAttributes = host::AttributesOf(info);
    information->ftCreationTime = host::CreationTimeOf(info);
    information->ftLastAccessTime = host::FileTimeOf(info.st_atim);
    information->ftLastWriteTime = host::FileTimeOf(info.st_mtim);
    information->dwVolumeSerialNumber = static_cast<DWORD>(info.st_dev);
    information->nFileSizeHigh = static_cast<DWORD>(info.st_size >> 32);
    information->nFileSizeLow = static_cast<DWORD>(info.st_size);
    information->nNumberOfLinks = static_cast<DWORD>(info.st_nlink);
    information->nFileIndexHigh = static_cast<DWORD>(info.st_ino >> 32);
    information->nFileIndexLow = static_cast<DWORD>(info.st_ino);
    return TRUE;
}
