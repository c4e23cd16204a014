// The system's message texts, and text for a debugger.
#include <windows.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <string>

#include <fcntl.h>
#include <unistd.h>

#include "root/environment.h"
#include "text/host_text.h"

using namespace host;

namespace {

struct Message {
    DWORD code;
    const char* text;
};

// In ascending order of the codes. The line break at the end of each text is added later.
constexpr Message kMessages[] = {
    {0, "The operation completed successfully."},
    {ERROR_INVALID_FUNCTION, "Incorrect function."},
    {ERROR_FILE_NOT_FOUND, "The system cannot find the file specified."},
    {ERROR_PATH_NOT_FOUND, "The system cannot find the path specified."},
    {ERROR_TOO_MANY_OPEN_FILES, "The system cannot open the file."},
    {ERROR_ACCESS_DENIED, "Access is denied."},
    {ERROR_INVALID_HANDLE, "The handle is invalid."},
    {ERROR_NOT_ENOUGH_MEMORY, "Not enough memory resources are available to process this command."},
    {ERROR_INVALID_ACCESS, "The access code is invalid."},
    {ERROR_INVALID_DATA, "The data is invalid."},
    {ERROR_OUTOFMEMORY, "Not enough memory resources are available to complete this operation."},
    {15, "The system cannot find the drive specified."},
    {17, "The system cannot move the file to a different disk drive."},
    {ERROR_NO_MORE_FILES, "There are no more files."},
    {19, "The media is write protected."},
    {ERROR_NOT_READY, "The device is not ready."},
    {ERROR_WRITE_FAULT, "The system cannot write to the specified device."},
    {ERROR_READ_FAULT, "The system cannot read from the specified device."},
    {ERROR_GEN_FAILURE, "A device attached to the system is not functioning."},
    {ERROR_SHARING_VIOLATION,
     "The process cannot access the file because it is being used by another process."},
    {ERROR_LOCK_VIOLATION,
     "The process cannot access the file because another process has locked a portion of the "
     "file."},
    {ERROR_HANDLE_EOF, "Reached the end of the file."},
    {ERROR_HANDLE_DISK_FULL, "The disk is full."},
    {ERROR_NOT_SUPPORTED, "The request is not supported."},
    {ERROR_FILE_EXISTS, "The file exists."},
    {82, "The directory or file cannot be created."},
    {ERROR_INVALID_PARAMETER, "The parameter is incorrect."},
    {109, "The pipe has been ended."},
    {ERROR_DISK_FULL, "There is not enough space on the disk."},
    {ERROR_CALL_NOT_IMPLEMENTED, "This function is not supported on this system."},
    {ERROR_INSUFFICIENT_BUFFER, "The data area passed to a system call is too small."},
    {ERROR_INVALID_NAME, "The filename, directory name, or volume label syntax is incorrect."},
    {ERROR_INVALID_LEVEL, "The system call level is not correct."},
    {ERROR_MOD_NOT_FOUND, "The specified module could not be found."},
    {ERROR_PROC_NOT_FOUND, "The specified procedure could not be found."},
    {ERROR_NEGATIVE_SEEK,
     "An attempt was made to move the file pointer before the beginning of the file."},
    {ERROR_DIR_NOT_EMPTY, "The directory is not empty."},
    {ERROR_NOT_LOCKED, "The segment is already unlocked."},
    {ERROR_BAD_PATHNAME, "The specified path is invalid."},
    {ERROR_BUSY, "The requested resource is in use."},
    {ERROR_ALREADY_EXISTS, "Cannot create a file when that file already exists."},
    {ERROR_ENVVAR_NOT_FOUND, "The system could not find the environment option that was entered."},
    {ERROR_FILENAME_EXCED_RANGE, "The filename or extension is too long."},
    {ERROR_MORE_DATA, "More data is available."},
    {WAIT_TIMEOUT, "The wait operation timed out."},
    {ERROR_NO_MORE_ITEMS, "No more data is available."},
    {267, "The directory name is invalid."},
    {ERROR_MR_MID_NOT_FOUND,
     "The system cannot find message text for message number 0x%1 in the message file for %2."},
    {ERROR_INVALID_ADDRESS, "Attempt to access invalid address."},
    {ERROR_INVALID_FLAGS, "Invalid flags."},
    {ERROR_NO_TOKEN, "An attempt was made to reference a token that does not exist."},
    {ERROR_BADDB, "The configuration registry database is corrupt."},
    {ERROR_BADKEY, "The configuration registry key is invalid."},
    {ERROR_CANTOPEN, "The configuration registry key could not be opened."},
    {ERROR_CANTREAD, "The configuration registry key could not be read."},
    {ERROR_CANTWRITE, "The configuration registry key could not be written."},
    {ERROR_KEY_DELETED,
     "Illegal operation attempted on a registry key that has been marked for deletion."},
    {ERROR_KEY_HAS_CHILDREN,
     "Cannot create a symbolic link in a registry key that already has subkeys or values."},
    {1060, "The specified service does not exist as an installed service."},
    {1062, "The service has not been started."},
    {ERROR_DATABASE_DOES_NOT_EXIST, "The database specified does not exist."},
    {ERROR_NO_UNICODE_TRANSLATION,
     "No mapping for the Unicode character exists in the target multi-byte code page."},
    {ERROR_DLL_INIT_FAILED, "A dynamic link library (DLL) initialization routine failed."},
    {ERROR_IO_DEVICE, "The request could not be performed because of an I/O device error."},
    {ERROR_NO_ASSOCIATION,
     "No application is associated with the specified file for this operation."},
    {ERROR_MESSAGE_SYNC_ONLY, "The message can be used only with synchronous operations."},
    {ERROR_NOT_FOUND, "Element not found."},
    {ERROR_CANCELLED, "The operation was canceled by the user."},
    {ERROR_NO_IMPERSONATION_TOKEN,
     "An attempt has been made to operate on an impersonation token by a thread that is not "
     "currently impersonating a client."},
    {ERROR_NONE_MAPPED, "No mapping between account names and security IDs was done."},
    {ERROR_INVALID_SID, "The security ID structure is invalid."},
    {ERROR_INVALID_SECURITY_DESCR, "The security descriptor structure is invalid."},
    {ERROR_BAD_IMPERSONATION_LEVEL,
     "Either a required impersonation level was not provided, or the provided impersonation level "
     "is invalid."},
    {ERROR_CANT_OPEN_ANONYMOUS, "Cannot open an anonymous level security token."},
    {ERROR_GENERIC_NOT_MAPPED,
     "Generic access types were contained in an access mask which should already be mapped to "
     "nongeneric types."},
    {ERROR_INVALID_WINDOW_HANDLE, "Invalid window handle."},
    {ERROR_CANNOT_FIND_WND_CLASS, "Cannot find window class."},
    {ERROR_CLASS_ALREADY_EXISTS, "Class already exists."},
    {ERROR_CLASS_DOES_NOT_EXIST, "Class does not exist."},
    {ERROR_CLASS_HAS_WINDOWS, "Class still has open windows."},
    {ERROR_NO_SYSTEM_RESOURCES,
     "Insufficient system resources exist to complete the requested service."},
    {ERROR_TIMEOUT, "This operation returned because the timeout period expired."},
    {RPC_S_SERVER_UNAVAILABLE, "The RPC server is unavailable."},
    {1784, "The supplied user buffer is not valid for the requested operation."},
    {1796, "The specified port is unknown."},
    {ERROR_UNKNOWN_PRINTER_DRIVER, "The printer driver is unknown."},
    {1798, "The print processor is unknown."},
    {ERROR_INVALID_PRINTER_NAME, "The printer name is invalid."},
    {ERROR_PRINTER_ALREADY_EXISTS, "The printer already exists."},
    {1803, "The printer command is invalid."},
    {ERROR_INVALID_DATATYPE, "The specified datatype is invalid."},
    {ERROR_INVALID_ENVIRONMENT, "The environment specified is invalid."},
    {ERROR_RESOURCE_DATA_NOT_FOUND, "The specified image file did not contain a resource section."},
    {ERROR_RESOURCE_TYPE_NOT_FOUND,
     "The specified resource type cannot be found in the image file."},
    {ERROR_RESOURCE_NAME_NOT_FOUND,
     "The specified resource name cannot be found in the image file."},
    {ERROR_RESOURCE_LANG_NOT_FOUND,
     "The specified resource language ID cannot be found in the image file."},
    {ERROR_NOT_ENOUGH_QUOTA, "Not enough quota is available to process this command."},
    {ERROR_INVALID_PRINTER_STATE, "The state of the printer is invalid."},
    {3000, "The specified print monitor is unknown."},
};

constexpr bool Ascending() {
    return std::is_sorted(std::begin(kMessages), std::end(kMessages),
                          [](const Message& a, const Message& b) { return a.code < b.code; });
}
static_assert(Ascending());

// The text of a code, plain or as an HRESULT made from it; null for a code without a text.
const char* TextOf(DWORD id) {
    const DWORD code = (id & 0xFFFF0000) == 0x80070000 ? id & 0xFFFF : id;
    const auto* row = std::lower_bound(std::begin(kMessages), std::end(kMessages), code,
                                       [](const Message& m, DWORD c) { return m.code < c; });
    return row != std::end(kMessages) && row->code == code ? row->text : nullptr;
}

DWORD Refuse(DWORD error) {
    SetLastError(error);
    return 0;
}

bool KnownLanguage(DWORD language) {
    return language == 0 || language == 0x0400 || language == 0x0800 || language == 0x0409;
}

}  // namespace

DWORD FormatMessageW(DWORD flags, LPCVOID /*source*/, DWORD id, DWORD language, LPWSTR buffer,
                     DWORD size, va_list* arguments) {
    const DWORD known =
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_FROM_SYSTEM;
    if ((flags & FORMAT_MESSAGE_FROM_SYSTEM) == 0 || (flags & ~known) != 0 || buffer == nullptr) {
        return Refuse(ERROR_INVALID_PARAMETER);
    }
    if (!KnownLanguage(language)) return Refuse(ERROR_RESOURCE_LANG_NOT_FOUND);
    const char* found = TextOf(id);
    if (found == nullptr) return Refuse(ERROR_MR_MID_NOT_FOUND);
    const bool inserts = (flags & FORMAT_MESSAGE_IGNORE_INSERTS) == 0 && std::strchr(found, '%');
    // A text with inserts is only given when the caller wants it unchanged: no caller passes
    // arguments.
    if (inserts || arguments != nullptr) return Refuse(ERROR_INVALID_PARAMETER);
    const WideString text = FromUtf8(std::string(found) + "\r\n");
    const auto length = static_cast<DWORD>(text.size());
    if ((flags & FORMAT_MESSAGE_ALLOCATE_BUFFER) == 0) {
        if (size <= length) return Refuse(ERROR_INSUFFICIENT_BUFFER);
        return CopyOut(text, buffer, size);
    }
    // The parameter is the address of a pointer, and `size` is the smallest block to allocate.
    const DWORD units = std::max(size, length + 1);
    auto* block = static_cast<LPWSTR>(GlobalAlloc(GMEM_FIXED, units * sizeof(WCHAR)));
    if (block == nullptr) return 0;
    *reinterpret_cast<LPWSTR*>(buffer) = block;
    return CopyOut(text, block, units);
}

// The library also shows here that memory is exhausted: then the line is dropped, and nothing
// thrown.
void OutputDebugStringW(LPCWSTR text) try {
    const std::string target = EnvironmentText("QV_HOST_DEBUG_OUTPUT");
    if (target.empty()) return;
    std::string line = ToUtf8(ViewOf(text));
    if (line.empty() || line.back() != '\n') line += '\n';
    const bool to_stderr = target == "-";
    const int file = to_stderr
                         ? STDERR_FILENO
                         : open(target.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
    if (file < 0) return;
    // Writes once, so that the lines of several processes do not mix. A failure is ignored.
    [[maybe_unused]] const ssize_t written = write(file, line.data(), line.size());
    if (!to_stderr) close(file);
} catch (const std::bad_alloc&) {
    return;
}
