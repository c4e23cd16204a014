// Version resources of PE files.
#pragma once

#include "minwindef.h"

struct VS_FIXEDFILEINFO {
    DWORD dwSignature;
    DWORD dwStrucVersion;
    DWORD dwFileVersionMS;
    DWORD dwFileVersionLS;
    DWORD dwProductVersionMS;
    DWORD dwProductVersionLS;
    DWORD dwFileFlagsMask;
    DWORD dwFileFlags;
    DWORD dwFileOS;
    DWORD dwFileType;
    DWORD dwFileSubtype;
    DWORD dwFileDateMS;
    DWORD dwFileDateLS;
};
QV_HOST_API DWORD GetFileVersionInfoSizeW(LPCWSTR file, LPDWORD handle);
QV_HOST_API BOOL GetFileVersionInfoW(LPCWSTR file, DWORD handle, DWORD size, LPVOID data);
QV_HOST_API BOOL VerQueryValueW(LPCVOID data, LPCWSTR path, LPVOID* value, UINT* size);
