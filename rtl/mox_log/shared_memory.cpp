#include "mox_log/shared_memory.h"

#include "mox_classes/text/log_here.h"
#include "mox_classes/text/sys_error.h"

namespace Mox {

namespace {

// The messages show handles and addresses as 32-bit numbers.
DWORD Shown(const void* value) {
    return static_cast<DWORD>(reinterpret_cast<ULONG_PTR>(value));
}

UnicodeString MappingName(const UnicodeString& name, TSharedDomain domain) {
    if (domain != sdProcess) return name;
    UnicodeString own;
    return own.sprintf(TEXT("%08X%s"), GetCurrentProcessId(), name);
}

}  // namespace

void* AllocSharedMemory(UnicodeString name, int size, void*& mapping, DWORD* lastError,
                        TSharedDomain domain) {
    const UnicodeString key = MappingName(name, domain);
    UnicodeString line;
    mapping = nullptr;
    DWORD code = ERROR_INVALID_PARAMETER;
    if (size > 0) {
        mapping = CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0,
                                     static_cast<DWORD>(size), key.t_str());
        code = GetLastError();
    }
    if (lastError != nullptr) *lastError = code;
    if (mapping == nullptr) {
        Mox::ShowStatus(
            line.sprintf(TEXT("CreateFileMapping( ... Size=%d, Key=%s) failed: [%lu]%s"), size, key,
                         code, GetSysError(code, true)));
        return nullptr;
    }
    void* view = MapViewOfFile(mapping, FILE_MAP_ALL_ACCESS, 0, 0, static_cast<SIZE_T>(size));
    if (view == nullptr) {
        code = GetLastError();
        if (lastError != nullptr) *lastError = code;
        Mox::ShowStatus(
            line.sprintf(TEXT("MapViewOfFile(FileMapHandle=0x%08x, Size=%d) failed: [%lu]%s"),
                         Shown(mapping), size, code, GetSysError(code, true)));
    }
    return view;
}

void FreeSharedMemory(void* mapping, void* view) {
    UnicodeString line;
    if (!UnmapViewOfFile(view)) {
        Mox::ShowStatus(line.sprintf(TEXT("UnmapViewOfFile(Memory=0x%08x) failed: %s"), Shown(view),
                                     GetSysError(GetLastError(), true)));
    }
    if (!CloseHandle(mapping)) {
        Mox::ShowStatus(line.sprintf(TEXT("CloseHandle(FileMapHandle=0x%08x) failed: %s"),
                                     Shown(mapping), GetSysError(GetLastError(), true)));
    }
}

}  // namespace Mox
