// The system version that this host states: Windows 10, version 22H2, without a service pack.
#include <windows.h>

#include <cstring>

BOOL GetVersionExW(OSVERSIONINFOW* info) {
    static_assert(sizeof(OSVERSIONINFOW) == 276 && sizeof(OSVERSIONINFOEXW) == 284);
    const DWORD size = info == nullptr ? 0 : info->dwOSVersionInfoSize;
    if (size != sizeof(OSVERSIONINFOW) && size != sizeof(OSVERSIONINFOEXW)) {
        SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return FALSE;
    }
    OSVERSIONINFOEXW version{};
    version.dwOSVersionInfoSize = size;
    version.dwMajorVersion = 10;
    version.dwBuildNumber = 19045;
    version.dwPlatformId = 2;
    version.wSuiteMask = 0x0100;
    version.wProductType = 1;
    std::memcpy(static_cast<void*>(info), &version, size);
    return TRUE;
}
