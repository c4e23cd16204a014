// The logger: one per process, shared by every module that loads the library.
//
// It writes nothing itself. Log builds a message and hands it to the record callback (normally the
// log file recorder), else to the format callback; with neither it returns the formatted line.
// Troubles of the logging machinery go through ODSLog and never back into the logger.
#pragma once

#include <windows.h>

#include <cstddef>

#include "mox_classes/text/log_line.h"
#include "mox_classes/text/unicode_string.h"
#include "mox_log/log_message.h"
#include "qv_api.h"

namespace Mox {

class TLogRecorder;

// The callee clears *owned when it keeps or frees the message itself.
using TLogRecordProc = void (*)(void* context, TLogMsg* message, TLogRecorder* recorder,
                                bool* owned);
// What is stored in *text becomes the logged text.
using TLogFormatProc = void (*)(void* context, UnicodeString* text, TLogMsg* message,
                                TLogRecorder* recorder, bool* owned);
// Leaves *result unchanged when there is no such text.
using TResStringProc = void (*)(void* context, UnicodeString domain, DWORD id,
                                UnicodeString* result);

// The fields and their order are a contract with the modules that share the logger. Every function
// may be called from any thread; Log takes no lock. Levels: 'X' error, '*' warning, 'i'
// information, ' ' trace, '>' the logging machinery itself.
class QV_API TLogger {
  public:
    UnicodeString* lastError = nullptr;  // only through SetLastError and GetLastError
    TLogRecordProc recordProc = nullptr;
    void* recordContext = nullptr;
    TLogFormatProc formatProc = nullptr;
    void* formatContext = nullptr;
    TResStringProc resStringProc = nullptr;
    void* resStringContext = nullptr;
    DWORD processId = 0;
    CRITICAL_SECTION lock{};  // exists between the first Init and the last Release
    DWORD tlsIndex = TLS_OUT_OF_INDEXES;
    LONG refCount = 0;  // units connected; changed only atomically
    TLogRecorder* recorder = nullptr;

    // Connect and disconnect one unit; the result is the number of units afterwards. The first
    // sets the logger up, the last tears it down; more releases than connections change nothing.
    int Init();
    int Release();

    // Logs `text` for line `line` of module `source`, with `dataSize` bytes at `data` under the
    // caption `dataLabel` when there is a block. Returns the logged text: as given with a record
    // callback, as the format callback made it, or the formatted line, for which the text stands
    // when memory is out. Works before Init and after Release too. Level 'X' becomes the last
    // error. Throws only what a callback throws.
    UnicodeString Log(int level, UnicodeString source, int line, UnicodeString text,
                      UnicodeString dataLabel, void* data, int dataSize);

    // The text of the last error of the process; nothing is kept while no unit is connected.
    void SetLastError(UnicodeString text);
    UnicodeString GetLastError();

    // The critical section that serialises the recorder; only while a unit is connected.
    void Lock();
    void Unlock();

    // The text of a registered string: from the resource-string callback when there is one, else
    // from HKEY_CURRENT_USER "Software\MOX\<domain>"; "" when there is none.
    UnicodeString GetResString(UnicodeString domain, DWORD id);
    // Stores a text in the registry; returns `id` also when that fails (which is logged).
    DWORD RegResString(UnicodeString domain, DWORD id, UnicodeString text);

  private:
    UnicodeString* ErrorBeingRead();
};

static_assert(offsetof(TLogger, recordProc) == 8);
static_assert(offsetof(TLogger, recordContext) == 16);
static_assert(offsetof(TLogger, formatProc) == 24);
static_assert(offsetof(TLogger, formatContext) == 32);
static_assert(offsetof(TLogger, resStringProc) == 40);
static_assert(offsetof(TLogger, resStringContext) == 48);
static_assert(offsetof(TLogger, processId) == 56);
static_assert(offsetof(TLogger, lock) == 64);
static_assert(offsetof(TLogger, tlsIndex) == 64 + sizeof(CRITICAL_SECTION));
static_assert(offsetof(TLogger, refCount) == 68 + sizeof(CRITICAL_SECTION));
static_assert(offsetof(TLogger, recorder) == 72 + sizeof(CRITICAL_SECTION));

// The process's logger; never null.
QV_API TLogger* GetLogger();
QV_API int InitLogger();
QV_API int UninitLogger();

}  // namespace Mox
