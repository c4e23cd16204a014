// Window messages, as far as the product sends them.
#pragma once

#include "minwindef.h"

#define WM_DEVMODECHANGE 0x001B
#define WM_COPYDATA 0x004A
#define WM_USER 0x0400
#define SMTO_NORMAL 0x0000
#define SMTO_ABORTIFHUNG 0x0002
inline const HWND HWND_BROADCAST = reinterpret_cast<HWND>(static_cast<LONG_PTR>(0xffff));
#define IDOK 1
#define IDCANCEL 2
QV_HOST_API LRESULT SendMessageTimeoutW(HWND window, UINT message, WPARAM wparam, LPARAM lparam,
                                        UINT flags, UINT timeout, PDWORD_PTR result);
