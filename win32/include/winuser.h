// Windows without a display, and the messages between them.
#pragma once

#include "minwindef.h"

// ---- Messages
#define WM_NULL 0x0000
#define WM_CREATE 0x0001
#define WM_DESTROY 0x0002
#define WM_CLOSE 0x0010
#define WM_DEVMODECHANGE 0x001B
#define WM_COPYDATA 0x004A
#define WM_NCCREATE 0x0081
#define WM_NCDESTROY 0x0082
#define WM_USER 0x0400
#define WM_APP 0x8000
struct COPYDATASTRUCT {
    ULONG_PTR dwData;
    DWORD cbData;
    PVOID lpData;
};
using PCOPYDATASTRUCT = COPYDATASTRUCT*;
struct MSG {
    HWND hwnd;
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
    DWORD time;
    POINT pt;
};
using LPMSG = MSG*;
inline const HWND HWND_BROADCAST = reinterpret_cast<HWND>(static_cast<LONG_PTR>(0xffff));
#define SMTO_NORMAL 0x0000
#define SMTO_BLOCK 0x0001
#define SMTO_ABORTIFHUNG 0x0002
#define PM_NOREMOVE 0x0000
#define PM_REMOVE 0x0001
QV_HOST_API LRESULT SendMessageW(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
QV_HOST_API LRESULT SendMessageTimeoutW(HWND window, UINT message, WPARAM wparam, LPARAM lparam,
                                        UINT flags, UINT timeout, PDWORD_PTR result);
QV_HOST_API BOOL PostMessageW(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
QV_HOST_API BOOL PeekMessageW(LPMSG message, HWND window, UINT first, UINT last, UINT remove);
QV_HOST_API LRESULT DispatchMessageW(const MSG* message);
QV_HOST_API UINT RegisterWindowMessageW(LPCWSTR name);

// ---- Windows
using WNDPROC = LRESULT(CALLBACK*)(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
struct WNDCLASSW {
    UINT style;
    WNDPROC lpfnWndProc;
    int cbClsExtra;
    int cbWndExtra;
    HINSTANCE hInstance;
    HICON hIcon;
    HCURSOR hCursor;
    HBRUSH hbrBackground;
    LPCWSTR lpszMenuName;
    LPCWSTR lpszClassName;
};
struct CREATESTRUCTW {
    LPVOID lpCreateParams;
    HINSTANCE hInstance;
    HMENU hMenu;
    HWND hwndParent;
    int cy;
    int cx;
    int y;
    int x;
    LONG style;
    LPCWSTR lpszName;
    LPCWSTR lpszClass;
    DWORD dwExStyle;
};
using LPCREATESTRUCTW = CREATESTRUCTW*;
inline const HWND HWND_MESSAGE = reinterpret_cast<HWND>(static_cast<LONG_PTR>(-3));
#define GWLP_USERDATA (-21)
QV_HOST_API ATOM RegisterClassW(const WNDCLASSW* window_class);
QV_HOST_API HWND CreateWindowExW(DWORD extended_style, LPCWSTR class_name, LPCWSTR title,
                                 DWORD style, int x, int y, int width, int height, HWND parent,
                                 HMENU menu, HINSTANCE instance, LPVOID parameter);
QV_HOST_API BOOL DestroyWindow(HWND window);
QV_HOST_API LRESULT DefWindowProcW(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
QV_HOST_API LONG_PTR GetWindowLongPtrW(HWND window, int index);
QV_HOST_API LONG_PTR SetWindowLongPtrW(HWND window, int index, LONG_PTR value);
QV_HOST_API HWND FindWindowW(LPCWSTR class_name, LPCWSTR title);
QV_HOST_API BOOL SetForegroundWindow(HWND window);
#define MSGFLT_ADD 1
#define MSGFLT_REMOVE 2
QV_HOST_API BOOL ChangeWindowMessageFilter(UINT message, DWORD flag);

// ---- Show commands and dialog answers
#define SW_HIDE 0
#define SW_SHOWNORMAL 1
#define SW_SHOW 5
#define IDOK 1
#define IDCANCEL 2
