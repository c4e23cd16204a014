// Basic types and macros of the Win32 interface, at the widths of 64-bit Windows. A "long" there is
// 32 bits wide.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdint>

#if defined(QV_HOST_BUILD)
#define QV_HOST_API extern "C" __attribute__((visibility("default")))
#define QV_HOST_CXX_API __attribute__((visibility("default")))
#else
#define QV_HOST_API extern "C"
#define QV_HOST_CXX_API
#endif

#define WINAPI
#define APIENTRY
#define CALLBACK
#define CONST const
#define TEXT(quote) u##quote

using BOOL = int;
using BYTE = std::uint8_t;
using UCHAR = unsigned char;
using CHAR = char;
using WCHAR = char16_t;
using SHORT = short;
using USHORT = unsigned short;
using WORD = std::uint16_t;
using INT = int;
using UINT = unsigned int;
using LONG = std::int32_t;
using ULONG = std::uint32_t;
using DWORD = std::uint32_t;
using LONGLONG = long long;
using ULONGLONG = unsigned long long;
using DWORDLONG = unsigned long long;
using INT_PTR = std::intptr_t;
using UINT_PTR = std::uintptr_t;
using LONG_PTR = std::intptr_t;
using ULONG_PTR = std::uintptr_t;
using DWORD_PTR = std::uintptr_t;
using SIZE_T = std::size_t;
using WPARAM = UINT_PTR;
using LPARAM = LONG_PTR;
using LRESULT = LONG_PTR;
using ATOM = WORD;
using LANGID = WORD;
using LCID = DWORD;
using COLORREF = DWORD;
using LSTATUS = LONG;
using REGSAM = DWORD;
using ACCESS_MASK = DWORD;

using PVOID = void*;
using LPVOID = void*;
using LPCVOID = const void*;
using PBYTE = BYTE*;
using LPBYTE = BYTE*;
using PDWORD = DWORD*;
using LPDWORD = DWORD*;
using PLONG = LONG*;
using LPLONG = LONG*;
using PBOOL = BOOL*;
using LPBOOL = BOOL*;
using PULONG = ULONG*;
using PDWORD_PTR = DWORD_PTR*;
using LPSTR = char*;
using LPCSTR = const char*;
using PWSTR = WCHAR*;
using LPWSTR = WCHAR*;
using PCWSTR = const WCHAR*;
using LPCWSTR = const WCHAR*;

using HANDLE = void*;
using LPHANDLE = HANDLE*;
using HGLOBAL = HANDLE;
using HLOCAL = HANDLE;

#define DECLARE_HANDLE(name) \
    struct name##__ {        \
        int unused;          \
    };                       \
    using name = name##__*
DECLARE_HANDLE(HINSTANCE);
DECLARE_HANDLE(HKEY);
DECLARE_HANDLE(HWND);
DECLARE_HANDLE(HICON);
DECLARE_HANDLE(HRSRC);
DECLARE_HANDLE(HMENU);
DECLARE_HANDLE(HBRUSH);
using HMODULE = HINSTANCE;
using HCURSOR = HICON;
using PHKEY = HKEY*;

using FARPROC = INT_PTR (*)();
using PROC = INT_PTR (*)();

#define TRUE 1
#define FALSE 0
#define MAX_PATH 260

#define LOWORD(l) (static_cast<WORD>(static_cast<DWORD_PTR>(l) & 0xffff))
#define HIWORD(l) (static_cast<WORD>((static_cast<DWORD_PTR>(l) >> 16) & 0xffff))

inline const HANDLE INVALID_HANDLE_VALUE = reinterpret_cast<HANDLE>(static_cast<LONG_PTR>(-1));

struct FILETIME {
    DWORD dwLowDateTime;
    DWORD dwHighDateTime;
};

struct SYSTEMTIME {
    WORD wYear;
    WORD wMonth;
    WORD wDayOfWeek;
    WORD wDay;
    WORD wHour;
    WORD wMinute;
    WORD wSecond;
    WORD wMilliseconds;
};

union LARGE_INTEGER {
    struct {
        DWORD LowPart;
        LONG HighPart;
    } u;
    LONGLONG QuadPart;
};

struct POINT {
    LONG x;
    LONG y;
};

struct POINTL {
    LONG x;
    LONG y;
};

struct RECTL {
    LONG left;
    LONG top;
    LONG right;
    LONG bottom;
};

struct SIZEL {
    LONG cx;
    LONG cy;
};
