// The 64-bit registry view and file system of a 32-bit process on 64-bit Windows. In a 64-bit
// process none of it applies.
#pragma once

#include <windows.h>

#include "qv_api.h"

// Whether the calling process runs under WOW64; asked once.
QV_API bool IsWow64();
// `access` with KEY_WOW64_64KEY added under WOW64.
QV_API DWORD SAM64(DWORD access);
// Switch the file-system redirection of the calling thread. True without WOW64; false when the
// system lacks or refuses the call.
QV_API bool DisableWow64FsRedirection(void** oldValue);
QV_API bool RevertWow64FsRedirection(void* oldValue);
QV_API bool EnableWow64FsRedirection(void** oldValue);
