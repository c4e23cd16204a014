// The shared log for C and other languages: writing a line, and reading records as they come.
//
// Results are Win32 error codes, 0 when it is done. No exception leaves a call.
#pragma once

#include <windows.h>

#include "qv_api.h"
#include "qv_rtl_main/log_record_c.h"

// Code units of a text that goes into the log; of a longer one the end is left out, which the
// record says.
inline constexpr int kMostLogText = 32000;
// Code units of a source's name.
inline constexpr int kMostLogSource = 64;

extern "C" {
// Puts a line into the log in force, through the logger, as line `line` of module `source`; 0 where
// there are no lines. Levels: 'X', '*', 'i', ' '. A source is 1 to kMostLogSource units without
// blanks, control characters, commas and brackets. Waits as long as another process keeps the log's
// lock. ERROR_NOT_READY: the log is switched off, or all units have ended. ERROR_INVALID_DATA: its
// file is no log. ERROR_WRITE_FAULT: not written, for want of memory, or not yet, in a callback of
// the logger. Others are those of the file. Any thread.
QV_API int QVWriteLog(int level, const WCHAR* source, int line, const WCHAR* text);

// Opens a log for reading; null or "" is the one in force. With `onlyNew` the first record is the
// first that comes after this call, else the oldest one. *log is to be closed with QVCloseLog; null
// when the call fails. ERROR_INVALID_DATA: the file is no log. ERROR_READ_FAULT: it opens, and
// cannot be read now.
QV_API int QVOpenLog(const WCHAR* file, int onlyNew, QVLog** log);
// The next record: 1, or 0 when there is none for now, which takes little time while nothing is
// written; call again after a tenth of a second. A negative Win32 error code when it fails: no
// memory. One thread at a time for a log.
QV_API int QVReadLog(QVLog* log, QVLogRecord* record);
// Null is allowed.
QV_API void QVCloseLog(QVLog* log);
}
