// The version of the library that is loaded, for programs that may run with another one than they
// were built with.
#pragma once

#include "qv_api.h"
#include "qv_rtl_version.h"

extern "C" {
// As QV_RTL_VERSION counts: 1002003 for 1.2.3. Any thread.
QV_API int QVRtlVersion();
}
