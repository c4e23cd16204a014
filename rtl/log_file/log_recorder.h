// The recorder: appends every message of the logger to the shared log file.
#pragma once

#include <windows.h>

#include "log_file/log_file_ring.h"
#include "mox_classes/text/unicode_string.h"
#include "mox_log/logger.h"
#include "qv_api.h"

namespace Mox {

// Owns the open file. Appends are serialised by the logger's lock and, between processes, by the
// lock of the file's header. A recorder may be destroyed while messages are on their way to it:
// they then go to the recorder that is installed, or nowhere.
class QV_API TLogRecorder {
  public:
    TLogRecorder();
    ~TLogRecorder();
    TLogRecorder(const TLogRecorder&) = delete;
    TLogRecorder& operator=(const TLogRecorder&) = delete;

    // Opens or creates the file, closing the one that was open. `sizeLimit` (bytes) holds for a
    // file that is created. On failure, which is reported, the recorder stays closed and drops what
    // it is given.
    bool Open(UnicodeString fileName, DWORD sizeLimit);
    bool IsOpen() const { return ring_.IsOpen(); }
    // Why the last Open failed, a Win32 error code; NO_ERROR when it did not.
    DWORD OpenError() const { return ring_.IsOpen() ? NO_ERROR : ring_.Outcome(); }

  private:
    friend class TLiveRecorders;
    friend QV_API void SetLogRecorder(TLogRecorder* recorder);
    friend QV_API DWORD LogSurely(int level, const UnicodeString& source, int line,
                                  const UnicodeString& text);
    friend class TThreadWriter;

    TLogFileRing ring_;
    TLogRecorder* next_live_ = nullptr;
};

// Makes `recorder` the logger's recorder and LogRecorderProc its record callback. The callback that
// was installed before gets every message after it is written. The recorder stays its caller's
// until a unit starts or ends: QVInitApp and QVUninitApp delete the one that they find.
QV_API void SetLogRecorder(TLogRecorder* recorder);
// For who is about to take the installed recorder out, before the logger's lock: threads that wait
// in it for a process that keeps the file's lock give up after half a second, and their messages
// are dropped.
void LeaveLogSoon();
// Takes `recorder` out, after LeaveLogSoon, and puts the callback of before back; nothing when
// another one is installed.
QV_API void ClearLogRecorder(TLogRecorder* recorder);
// Logs a text as TLogger::Log does, and tells what became of it, a Win32 error code: NO_ERROR when
// it is in the file, ERROR_NOT_READY without a recorder, ERROR_INVALID_DATA for a file that is no
// log, ERROR_WRITE_FAULT when it did not get to the file, as in a callback of the logger, where it
// has to wait, or when such a callback took the recorder out. Any thread. Waits for the file's lock
// as long as another process holds it.
QV_API DWORD LogSurely(int level, const UnicodeString& source, int line, const UnicodeString& text);
// The record callback. Takes the message, writes and frees it; one that is logged while its thread
// is already writing waits in the thread's queue.
QV_API void LogRecorderProc(void* context, TLogMsg* message, TLogRecorder* recorder, bool* owned);

}  // namespace Mox
