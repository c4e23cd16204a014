// The Linux host's part of the SDK header: records of files that few calls need.
#pragma once

#include "minwindef.h"

struct OVERLAPPED {
    ULONG_PTR Internal;
    ULONG_PTR InternalHigh;
    DWORD Offset;
    DWORD OffsetHigh;
    HANDLE hEvent;
};
