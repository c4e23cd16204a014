// Activation contexts, in which a program's windows get themed controls.
#pragma once

#include <windows.h>

#include "mox_classes/text/unicode_string.h"
#include "qv_api.h"

// A context from the manifest (resource 1) of `module`, else the current context of the thread,
// which is null when none is active. INVALID_HANDLE_VALUE, with the reason in the log, when there
// is neither. The caller gives it back with ReleaseActiveContext.
QV_API HANDLE CreateActiveContext(UnicodeString module);
QV_API void ReleaseActiveContext(HANDLE context);
