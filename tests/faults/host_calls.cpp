// The host's calls that the library makes, and the codes to fail with. Calls that cannot fail (ids,
// last errors, critical sections, the time) are not here.
#include <windows.h>

#include <commdlg.h>
#include <shellapi.h>
#include <winspool.h>

#include "faults/fault_call.h"

using enum faults::Answer;
using namespace faults;

namespace {

constexpr Kind kKind = Kind::Host;
constexpr int kDenied = ERROR_ACCESS_DENIED;
constexpr int kNoMemory = ERROR_NOT_ENOUGH_MEMORY;
constexpr int kNoHandle = ERROR_INVALID_HANDLE;
constexpr int kDiskFull = ERROR_DISK_FULL;
constexpr int kDevice = ERROR_IO_DEVICE;
constexpr int kTooSmall = ERROR_INSUFFICIENT_BUFFER;
constexpr int kMissing = ERROR_FILE_NOT_FOUND;
constexpr int kInvalid = ERROR_INVALID_PARAMETER;
constexpr int kNoServer = RPC_S_SERVER_UNAVAILABLE;

}  // namespace

// Files
QV_FAILS(7, CreateFileW, Ones, kDenied, ERROR_SHARING_VIOLATION, ERROR_TOO_MANY_OPEN_FILES,
         kDiskFull)
QV_TRANSFERS(5, ReadFile, Zero, kDevice, kHalf, kOneByte, kNothing)
QV_TRANSFERS(5, WriteFile, Zero, kDiskFull, kDevice, kHalf, kOneByte, kAllButOne, kNothing)
QV_FAILS(4, SetFilePointer, Ones, kDevice, kNoHandle)
QV_FAILS(1, SetEndOfFile, Zero, kDiskFull)
QV_FAILS(2, GetFileSize, Ones, kDevice)
QV_FAILS(5, LockFile, Zero, kNoHandle, ERROR_NO_SYSTEM_RESOURCES, ERROR_LOCK_VIOLATION)
QV_RELEASES(5, UnlockFile, Zero, kNoHandle, ERROR_NOT_LOCKED)
QV_RELEASES(1, CloseHandle, Zero, kNoHandle)
QV_FAILS(1, GetFileAttributesW, Ones, kMissing, kDenied)
QV_FAILS(2, FindFirstFileW, Ones, kMissing, kDenied)
QV_RELEASES(1, FindClose, Zero, kNoHandle)
QV_FAILS(2, GetTempPathW, Zero, kNoMemory)
QV_FAILS(2, GetSystemDirectoryW, Zero, kNoMemory)
QV_FAILS(6, CreateFileMappingW, Zero, kNoMemory, kDenied)
QV_FAILS(5, MapViewOfFile, Zero, kNoMemory)
QV_RELEASES(1, UnmapViewOfFile, Zero, kInvalid)

// Registry
QV_FAILS(5, RegOpenKeyExW, Status, kDenied, kMissing, ERROR_TOO_MANY_OPEN_FILES)
QV_FAILS(9, RegCreateKeyExW, Status, kDenied, kDiskFull)
QV_FAILS(6, RegQueryValueExW, Status, kDenied, kMissing, ERROR_MORE_DATA, kNoMemory)
QV_FAILS(6, RegSetValueExW, Status, kDenied, kDiskFull)
QV_RELEASES(1, RegCloseKey, Status, kNoHandle)

// Spooler
QV_FAILS(3, OpenPrinterW, Zero, kDenied, ERROR_INVALID_PRINTER_NAME, kNoServer)
QV_RELEASES(1, ClosePrinter, Zero, kNoHandle)
QV_FAILS(5, GetPrinterW, Zero, kDenied, kTooSmall, kNoServer)
QV_FAILS(4, SetPrinterW, Zero, kDenied, kDiskFull)
QV_FAILS(6, DocumentPropertiesW, Ones, kDenied, kNoMemory)
QV_FAILS(7, EnumPrintersW, Zero, kDenied, kTooSmall, kNoServer)
QV_FAILS(7, EnumPrinterDriversW, Zero, kDenied, kTooSmall, kNoServer)
QV_FAILS(6, EnumMonitorsW, Zero, kDenied, kTooSmall, kNoServer)
QV_FAILS(6, GetPrinterDataW, Status, kMissing, ERROR_MORE_DATA)
QV_FAILS(6, GetPrinterDriverDirectoryW, Zero, kDenied, kTooSmall)
QV_FAILS(2, GetFileVersionInfoSizeW, Zero, ERROR_RESOURCE_TYPE_NOT_FOUND, kNoMemory)
QV_FAILS(4, GetFileVersionInfoW, Zero, kMissing, kNoMemory)
QV_FAILS(4, VerQueryValueW, Zero, ERROR_RESOURCE_TYPE_NOT_FOUND)

// Text
QV_FAILS(6, MultiByteToWideChar, Zero, kNoMemory, kTooSmall)
QV_FAILS(8, WideCharToMultiByte, Zero, kNoMemory, kTooSmall)
QV_FAILS(6, CompareStringW, Zero, kInvalid)
QV_FAILS(7, FormatMessageW, Zero, kNoMemory, ERROR_MR_MID_NOT_FOUND)
QV_FAILS(3, ExpandEnvironmentStringsW, Zero, kNoMemory)

// Processes, modules, threads
QV_FAILS(3, GetModuleFileNameW, Zero, kNoHandle)
QV_FAILS(1, GetModuleHandleW, Zero, ERROR_MOD_NOT_FOUND)
QV_FAILS(1, LoadLibraryW, Zero, ERROR_MOD_NOT_FOUND, kNoMemory)
QV_FAILS(2, GetProcAddress, Zero, ERROR_PROC_NOT_FOUND)
QV_FAILS(1, GetVersionExW, Zero, kTooSmall)
QV_FAILS(2, ProcessIdToSessionId, Zero, kInvalid)
QV_FAILS(1, QueryPerformanceCounter, Zero, kInvalid)
QV_FAILS(0, TlsAlloc, Ones, ERROR_NO_MORE_ITEMS, kNoMemory)
QV_RELEASES(1, TlsFree, Zero, kInvalid)
// Clearing a slot cannot fail, because it needs no memory.
QV_HEAD(2, TlsSetValue) {
    QV_SITE(TlsSetValue, Zero, false, kNoMemory);
    return a1 == nullptr ? next(a0, a1) : Call(site, [&] { return next(a0, a1); });
}

// Windows and programs
QV_FAILS(2, FindWindowW, Zero, kMissing, kDenied)
QV_FAILS(1, RegisterWindowMessageW, Zero, kNoMemory)
QV_FAILS(7, SendMessageTimeoutW, Zero, ERROR_TIMEOUT, kDenied)
QV_FAILS(4, PostMessageW, Zero, kDenied, ERROR_NOT_ENOUGH_QUOTA)
QV_FAILS(1, GlobalAddAtomW, Zero, kNoMemory)
QV_FAILS(6, ShellExecuteW, Status, kMissing, SE_ERR_ACCESSDENIED)
