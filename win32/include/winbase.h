// Kernel names: memory, errors, files, mappings, threads, time, modules, environment, version.
#pragma once

#include "minwindef.h"

// ---- Memory
#define HEAP_ZERO_MEMORY 0x00000008
#define LMEM_FIXED 0x0000
#define GMEM_FIXED 0x0000
#define GMEM_ZEROINIT 0x0040
#define GPTR (GMEM_FIXED | GMEM_ZEROINIT)
QV_HOST_API HANDLE GetProcessHeap();
QV_HOST_API LPVOID HeapAlloc(HANDLE heap, DWORD flags, SIZE_T bytes);
QV_HOST_API LPVOID HeapReAlloc(HANDLE heap, DWORD flags, LPVOID block, SIZE_T bytes);
QV_HOST_API BOOL HeapFree(HANDLE heap, DWORD flags, LPVOID block);
QV_HOST_API HGLOBAL GlobalAlloc(UINT flags, SIZE_T bytes);
QV_HOST_API HGLOBAL GlobalFree(HGLOBAL block);
QV_HOST_API HLOCAL LocalFree(HLOCAL block);

// ---- Errors and messages
#define FORMAT_MESSAGE_ALLOCATE_BUFFER 0x00000100
#define FORMAT_MESSAGE_IGNORE_INSERTS 0x00000200
#define FORMAT_MESSAGE_FROM_SYSTEM 0x00001000
QV_HOST_API DWORD GetLastError();
QV_HOST_API void SetLastError(DWORD code);
QV_HOST_API DWORD FormatMessageW(DWORD flags, LPCVOID source, DWORD id, DWORD language,
                                 LPWSTR buffer, DWORD size, va_list* arguments);
QV_HOST_API void OutputDebugStringW(LPCWSTR text);

// ---- Files
#define GENERIC_READ 0x80000000u
#define GENERIC_WRITE 0x40000000u
#define GENERIC_EXECUTE 0x20000000u
#define GENERIC_ALL 0x10000000u
#define FILE_SHARE_READ 0x00000001
#define FILE_SHARE_WRITE 0x00000002
#define FILE_SHARE_DELETE 0x00000004
#define CREATE_NEW 1
#define CREATE_ALWAYS 2
#define OPEN_EXISTING 3
#define OPEN_ALWAYS 4
#define TRUNCATE_EXISTING 5
#define FILE_ATTRIBUTE_READONLY 0x00000001
#define FILE_ATTRIBUTE_HIDDEN 0x00000002
#define FILE_ATTRIBUTE_DIRECTORY 0x00000010
#define FILE_ATTRIBUTE_ARCHIVE 0x00000020
#define FILE_ATTRIBUTE_NORMAL 0x00000080
#define INVALID_FILE_ATTRIBUTES 0xFFFFFFFFu
#define INVALID_FILE_SIZE 0xFFFFFFFFu
#define INVALID_SET_FILE_POINTER 0xFFFFFFFFu
#define FILE_BEGIN 0
#define FILE_CURRENT 1
#define FILE_END 2
struct SECURITY_ATTRIBUTES {
    DWORD nLength;
    LPVOID lpSecurityDescriptor;
    BOOL bInheritHandle;
};
using LPSECURITY_ATTRIBUTES = SECURITY_ATTRIBUTES*;
struct OVERLAPPED;
using LPOVERLAPPED = OVERLAPPED*;
struct WIN32_FIND_DATAW {
    DWORD dwFileAttributes;
    FILETIME ftCreationTime;
    FILETIME ftLastAccessTime;
    FILETIME ftLastWriteTime;
    DWORD nFileSizeHigh;
    DWORD nFileSizeLow;
    DWORD dwReserved0;
    DWORD dwReserved1;
    WCHAR cFileName[MAX_PATH];
    WCHAR cAlternateFileName[14];
};
using LPWIN32_FIND_DATAW = WIN32_FIND_DATAW*;
struct BY_HANDLE_FILE_INFORMATION {
    DWORD dwFileAttributes;
    FILETIME ftCreationTime;
    FILETIME ftLastAccessTime;
    FILETIME ftLastWriteTime;
    DWORD dwVolumeSerialNumber;
    DWORD nFileSizeHigh;
    DWORD nFileSizeLow;
    DWORD nNumberOfLinks;
    DWORD nFileIndexHigh;
    DWORD nFileIndexLow;
};
using LPBY_HANDLE_FILE_INFORMATION = BY_HANDLE_FILE_INFORMATION*;
QV_HOST_API HANDLE CreateFileW(LPCWSTR name, DWORD access, DWORD share,
                               LPSECURITY_ATTRIBUTES security, DWORD disposition, DWORD attributes,
                               HANDLE pattern);
QV_HOST_API BOOL ReadFile(HANDLE file, LPVOID buffer, DWORD bytes, LPDWORD done,
                          LPOVERLAPPED overlapped);
QV_HOST_API BOOL WriteFile(HANDLE file, LPCVOID buffer, DWORD bytes, LPDWORD done,
                           LPOVERLAPPED overlapped);
QV_HOST_API DWORD SetFilePointer(HANDLE file, LONG low, PLONG high, DWORD method);
QV_HOST_API BOOL SetEndOfFile(HANDLE file);
QV_HOST_API DWORD GetFileSize(HANDLE file, LPDWORD high);
QV_HOST_API BOOL GetFileInformationByHandle(HANDLE file, LPBY_HANDLE_FILE_INFORMATION information);
QV_HOST_API BOOL LockFile(HANDLE file, DWORD offset_low, DWORD offset_high, DWORD bytes_low,
                          DWORD bytes_high);
QV_HOST_API BOOL UnlockFile(HANDLE file, DWORD offset_low, DWORD offset_high, DWORD bytes_low,
                            DWORD bytes_high);
QV_HOST_API DWORD GetFileAttributesW(LPCWSTR name);
QV_HOST_API HANDLE FindFirstFileW(LPCWSTR name, LPWIN32_FIND_DATAW data);
QV_HOST_API BOOL FindClose(HANDLE search);
QV_HOST_API BOOL DeleteFileW(LPCWSTR name);
QV_HOST_API BOOL CreateDirectoryW(LPCWSTR name, LPSECURITY_ATTRIBUTES security);
QV_HOST_API BOOL RemoveDirectoryW(LPCWSTR name);
QV_HOST_API DWORD GetTempPathW(DWORD size, LPWSTR buffer);
QV_HOST_API UINT GetSystemDirectoryW(LPWSTR buffer, UINT size);
QV_HOST_API BOOL CloseHandle(HANDLE object);
#define STD_INPUT_HANDLE static_cast<DWORD>(-10)
#define STD_OUTPUT_HANDLE static_cast<DWORD>(-11)
#define STD_ERROR_HANDLE static_cast<DWORD>(-12)
QV_HOST_API HANDLE GetStdHandle(DWORD which);

// ---- File mappings
#define PAGE_READONLY 0x02
#define PAGE_READWRITE 0x04
#define FILE_MAP_WRITE 0x0002
#define FILE_MAP_READ 0x0004
#define FILE_MAP_ALL_ACCESS 0x000F001F
QV_HOST_API HANDLE CreateFileMappingW(HANDLE file, LPSECURITY_ATTRIBUTES security, DWORD protect,
                                      DWORD size_high, DWORD size_low, LPCWSTR name);
QV_HOST_API LPVOID MapViewOfFile(HANDLE mapping, DWORD access, DWORD offset_high, DWORD offset_low,
                                 SIZE_T bytes);
QV_HOST_API BOOL UnmapViewOfFile(LPCVOID view);

// ---- Threads, thread-local slots, locks, ids
#define TLS_OUT_OF_INDEXES 0xFFFFFFFFu
#define INFINITE 0xFFFFFFFFu
struct CRITICAL_SECTION {
    alignas(8) BYTE opaque[48];
};
using LPCRITICAL_SECTION = CRITICAL_SECTION*;
QV_HOST_API DWORD TlsAlloc();
QV_HOST_API BOOL TlsFree(DWORD slot);
QV_HOST_API LPVOID TlsGetValue(DWORD slot);
QV_HOST_API BOOL TlsSetValue(DWORD slot, LPVOID value);
QV_HOST_API void InitializeCriticalSection(LPCRITICAL_SECTION section);
QV_HOST_API void DeleteCriticalSection(LPCRITICAL_SECTION section);
QV_HOST_API void EnterCriticalSection(LPCRITICAL_SECTION section);
QV_HOST_API void LeaveCriticalSection(LPCRITICAL_SECTION section);
struct SRWLOCK {
    PVOID Ptr;
};
using PSRWLOCK = SRWLOCK*;
#define SRWLOCK_INIT \
    { nullptr }
QV_HOST_API void AcquireSRWLockExclusive(PSRWLOCK lock);
QV_HOST_API void ReleaseSRWLockExclusive(PSRWLOCK lock);
QV_HOST_API DWORD GetCurrentThreadId();
QV_HOST_API DWORD GetCurrentProcessId();
QV_HOST_API HANDLE GetCurrentProcess();
QV_HOST_API HANDLE GetCurrentThread();
QV_HOST_API BOOL IsWow64Process(HANDLE process, PBOOL emulated);
QV_HOST_API BOOL ProcessIdToSessionId(DWORD process, LPDWORD session);
QV_HOST_API void Sleep(DWORD milliseconds);

// ---- Time
QV_HOST_API void GetSystemTimeAsFileTime(FILETIME* time);
QV_HOST_API BOOL QueryPerformanceCounter(LARGE_INTEGER* count);
QV_HOST_API DWORD GetTickCount();
QV_HOST_API BOOL FileTimeToLocalFileTime(const FILETIME* utc, FILETIME* local);
QV_HOST_API BOOL FileTimeToSystemTime(const FILETIME* time, SYSTEMTIME* parts);

// ---- Modules and resources
#define DLL_PROCESS_DETACH 0
#define DLL_PROCESS_ATTACH 1
#define DLL_THREAD_ATTACH 2
#define DLL_THREAD_DETACH 3
#define MAKEINTRESOURCEW(id) \
    (reinterpret_cast<LPWSTR>(static_cast<ULONG_PTR>(static_cast<WORD>(id))))
#define RT_STRING MAKEINTRESOURCEW(6)
QV_HOST_API DWORD GetModuleFileNameW(HMODULE module, LPWSTR buffer, DWORD size);
QV_HOST_API HMODULE GetModuleHandleW(LPCWSTR name);
QV_HOST_API FARPROC GetProcAddress(HMODULE module, LPCSTR name);
QV_HOST_API HMODULE LoadLibraryW(LPCWSTR name);
QV_HOST_API BOOL FreeLibrary(HMODULE module);
QV_HOST_API HRSRC FindResourceW(HMODULE module, LPCWSTR name, LPCWSTR type);
QV_HOST_API HGLOBAL LoadResource(HMODULE module, HRSRC resource);
QV_HOST_API LPVOID LockResource(HGLOBAL resource);
QV_HOST_API DWORD SizeofResource(HMODULE module, HRSRC resource);
#define ACTCTX_FLAG_RESOURCE_NAME_VALID 0x00000008
struct ACTCTXW {
    ULONG cbSize;
    DWORD dwFlags;
    LPCWSTR lpSource;
    USHORT wProcessorArchitecture;
    LANGID wLangId;
    LPCWSTR lpAssemblyDirectory;
    LPCWSTR lpResourceName;
    LPCWSTR lpApplicationName;
    HMODULE hModule;
};

// ---- Environment and version
struct OSVERSIONINFOW {
    DWORD dwOSVersionInfoSize;
    DWORD dwMajorVersion;
    DWORD dwMinorVersion;
    DWORD dwBuildNumber;
    DWORD dwPlatformId;
    WCHAR szCSDVersion[128];
};
struct OSVERSIONINFOEXW {
    DWORD dwOSVersionInfoSize;
    DWORD dwMajorVersion;
    DWORD dwMinorVersion;
    DWORD dwBuildNumber;
    DWORD dwPlatformId;
    WCHAR szCSDVersion[128];
    WORD wServicePackMajor;
    WORD wServicePackMinor;
    WORD wSuiteMask;
    BYTE wProductType;
    BYTE wReserved;
};
QV_HOST_API BOOL GetVersionExW(OSVERSIONINFOW* info);
QV_HOST_API DWORD ExpandEnvironmentStringsW(LPCWSTR text, LPWSTR buffer, DWORD size);
QV_HOST_API BOOL SetEnvironmentVariableW(LPCWSTR name, LPCWSTR value);

// ---- Global atoms
QV_HOST_API ATOM GlobalAddAtomW(LPCWSTR name);
QV_HOST_API ATOM GlobalDeleteAtom(ATOM atom);
QV_HOST_API UINT GlobalGetAtomNameW(ATOM atom, LPWSTR buffer, int size);
