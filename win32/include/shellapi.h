// Starting programs, and command lines as their arguments.
#pragma once

#include "minwindef.h"

#define SE_ERR_FNF 2
#define SE_ERR_PNF 3
#define SE_ERR_ACCESSDENIED 5
#define SE_ERR_OOM 8
#define SE_ERR_NOASSOC 31
#define SEE_MASK_DEFAULT 0x00000000
#define SEE_MASK_FLAG_NO_UI 0x00000400
struct SHELLEXECUTEINFOW {
    DWORD cbSize;
    ULONG fMask;
    HWND hwnd;
    LPCWSTR lpVerb;
    LPCWSTR lpFile;
    LPCWSTR lpParameters;
    LPCWSTR lpDirectory;
    int nShow;
    HINSTANCE hInstApp;
    void* lpIDList;
    LPCWSTR lpClass;
    HKEY hkeyClass;
    DWORD dwHotKey;
    HANDLE hIcon;
    HANDLE hProcess;
};
static_assert(sizeof(SHELLEXECUTEINFOW) == 112);
QV_HOST_API HINSTANCE ShellExecuteW(HWND owner, LPCWSTR verb, LPCWSTR file, LPCWSTR parameters,
                                    LPCWSTR directory, INT show);
QV_HOST_API BOOL ShellExecuteExW(SHELLEXECUTEINFOW* info);
// One block, freed with LocalFree. The first argument is read as a program's name.
QV_HOST_API LPWSTR* CommandLineToArgvW(LPCWSTR command_line, int* count);
