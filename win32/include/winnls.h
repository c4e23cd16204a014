// Text conversion and comparison, and the wide-character calls of the C runtime for 16-bit
// characters.
#pragma once

#include "minwindef.h"

#define CP_ACP 0
#define CP_UTF8 65001
#define MB_PRECOMPOSED 0x00000001
#define MB_ERR_INVALID_CHARS 0x00000008
#define WC_NO_BEST_FIT_CHARS 0x00000400
#define WC_ERR_INVALID_CHARS 0x00000080
#define LOCALE_USER_DEFAULT 0x0400
#define NORM_IGNORECASE 0x00000001
#define CSTR_LESS_THAN 1
#define CSTR_EQUAL 2
#define CSTR_GREATER_THAN 3
QV_HOST_API int MultiByteToWideChar(UINT code_page, DWORD flags, LPCSTR text, int bytes,
                                    LPWSTR buffer, int size);
QV_HOST_API int WideCharToMultiByte(UINT code_page, DWORD flags, LPCWSTR text, int length,
                                    LPSTR buffer, int size, LPCSTR default_char,
                                    LPBOOL used_default);
QV_HOST_API int CompareStringW(LCID locale, DWORD flags, LPCWSTR a, int a_length, LPCWSTR b,
                               int b_length);
QV_HOST_API LPSTR CharNextA(LPCSTR text);

// The C runtime's counted wide formatter; negative when the text does not fit. "%s" is a wide
// string, "%ld" 32 bits.
QV_HOST_CXX_API int _vsnwprintf(WCHAR* buffer, std::size_t count, const WCHAR* format,
                                va_list arguments);
