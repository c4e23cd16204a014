// The common file dialogs.
#pragma once

#include "minwindef.h"

#define OFN_OVERWRITEPROMPT 0x00000002
#define OFN_HIDEREADONLY 0x00000004
#define OFN_NOCHANGEDIR 0x00000008
#define OFN_PATHMUSTEXIST 0x00000800
#define OFN_FILEMUSTEXIST 0x00001000
#define OFN_EXPLORER 0x00080000

using LPOFNHOOKPROC = UINT_PTR(CALLBACK*)(HWND dialog, UINT message, WPARAM wparam, LPARAM lparam);
struct OPENFILENAMEW {
    DWORD lStructSize;
    HWND hwndOwner;
    HINSTANCE hInstance;
    LPCWSTR lpstrFilter;
    LPWSTR lpstrCustomFilter;
    DWORD nMaxCustFilter;
    DWORD nFilterIndex;
    LPWSTR lpstrFile;
    DWORD nMaxFile;
    LPWSTR lpstrFileTitle;
    DWORD nMaxFileTitle;
    LPCWSTR lpstrInitialDir;
    LPCWSTR lpstrTitle;
    DWORD Flags;
    WORD nFileOffset;
    WORD nFileExtension;
    LPCWSTR lpstrDefExt;
    LPARAM lCustData;
    LPOFNHOOKPROC lpfnHook;
    LPCWSTR lpTemplateName;
    void* pvReserved;
    DWORD dwReserved;
    DWORD FlagsEx;
};
static_assert(sizeof(OPENFILENAMEW) == 152);
using LPOPENFILENAMEW = OPENFILENAMEW*;

QV_HOST_API BOOL GetOpenFileNameW(LPOPENFILENAMEW dialog);
QV_HOST_API BOOL GetSaveFileNameW(LPOPENFILENAMEW dialog);
