// Window messages that an elevated process lets through from others.
//
// The entry point is looked up at run time, as older systems have neither it nor the filter.
#pragma once

#include <windows.h>

#include "qv_api.h"

// The address of the system's ChangeWindowMessageFilter, null where there is none; good until
// EndMessageFilter. Any thread.
QV_API void* BeginMessageFilter();
// `filterFunction` is what BeginMessageFilter gave; flag 1 lets `message` through, 2 no longer
// does. The system's answer; 0 without a function.
QV_API int ChangeMessageFilter(void* filterFunction, UINT message, DWORD flag);
QV_API void EndMessageFilter();
