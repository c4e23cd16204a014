// Start and stop of the library for one module ("unit") of the product. Each module calls one init
// at its start and the matching uninit at its end; the library does so for itself when it is
// loaded.
//
// No step fails the start: a missing resource file leaves the resources empty, a log file that does
// not open leaves the recorder that is installed, if any.
//
// A program that only looks at the log exports `int QVLooksOnly(void)` and returns something else
// than 0 from it: then no recorder is installed, and the log file stays as it is. The function runs
// while the library is loaded, before main.
#pragma once

#include "mox_classes/text/unicode_string.h"
#include "qv_api.h"

// Connects the unit to the logger, reads the resource file, installs the log file recorder and logs
// two identification lines. An empty resource file name or language takes the installed one. Not
// meant for two threads at once.
QV_API void QVInitApp(const UnicodeString& moduleName, const UnicodeString& resourceFile,
                      const UnicodeString& language);
// Removes and frees the installed recorder, whichever unit installed it, and disconnects the unit;
// the last one releases the resources. The name is not used.
QV_API void QVUninitApp(const UnicodeString& moduleName);
// The same, under the names that the driver's modules call.
QV_API void QVInitDriver(const UnicodeString& moduleName, const UnicodeString& resourceFile,
                         const UnicodeString& language);
QV_API void QVUninitDriver(const UnicodeString& moduleName);

// Installs the log file recorder as the start of a unit does, unless one is installed; also in a
// program that only looks. Returns a Win32 error code, NO_ERROR when one is installed,
// ERROR_NOT_READY when the log is switched off, or no unit is connected.
QV_API DWORD InstallLogRecorder();
