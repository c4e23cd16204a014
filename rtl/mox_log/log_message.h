// TLogMsg, one log message on its way from the caller to the log file, and the rings that hold
// waiting messages.
//
// The record's layout is a contract with the callbacks of other modules; messages live on the
// library's heap (System::GetMemory), so that any module may keep and free them.
#pragma once

#include <windows.h>

#include <cstddef>

#include "mox_classes/text/unicode_string.h"
#include "qv_api.h"

namespace Mox {

// Copying copies every field, the data pointer included: the copy must not be freed with Free() as
// well when dataSize is positive. One thread at a time.
class QV_API TLogMsg {
  public:
    FILETIME time{};  // UTC
    int level = 0;    // level character
    DWORD processId = 0;
    DWORD threadId = 0;
    DWORD sessionId = 0;  // 0xFFFFFFFF: not known
    int line = 0;         // source line of the call site
    int dataSize = 0;     // negative: |dataSize| bytes borrowed; positive: bytes owned; 0: no block
    void* data = nullptr;
    UnicodeString source;  // module of the call site
    UnicodeString text;
    UnicodeString dataLabel;
    TLogMsg* next = nullptr;  // ring link

    DWORD ThreadId() const { return threadId; }
    DWORD ProcessId() const { return processId; }
    DWORD SessionId() const { return sessionId; }

    // A zeroed record that is stamped with the time and linked to itself; null when the heap is
    // exhausted. Freed with Free().
    [[nodiscard]] static TLogMsg* Alloc();
    // Releases the strings, the block when it is owned, and the record itself.
    void Free();
    // Turns a borrowed block into an owned one. When the heap is exhausted the block is dropped.
    void ImportBinData();
};

static_assert(offsetof(TLogMsg, level) == 8);
static_assert(offsetof(TLogMsg, processId) == 12);
static_assert(offsetof(TLogMsg, threadId) == 16);
static_assert(offsetof(TLogMsg, sessionId) == 20);
static_assert(offsetof(TLogMsg, line) == 24);
static_assert(offsetof(TLogMsg, dataSize) == 28);
static_assert(offsetof(TLogMsg, data) == 32);
static_assert(offsetof(TLogMsg, source) == 40);
static_assert(offsetof(TLogMsg, text) == 48);
static_assert(offsetof(TLogMsg, dataLabel) == 56);
static_assert(offsetof(TLogMsg, next) == 64);

// Owns a message, or null, that a callback may keep: it then clears `owned`, and may still throw.
struct TOwnedLogMsg {
    explicit TOwnedLogMsg(TLogMsg* m) : message(m) {}
    TOwnedLogMsg(const TOwnedLogMsg&) = delete;
    TOwnedLogMsg& operator=(const TOwnedLogMsg&) = delete;
    ~TOwnedLogMsg() {
        if (owned && message != nullptr) message->Free();
    }

    TLogMsg* const message;
    bool owned = true;
};

// A list of messages is a pointer to its last element, whose `next` is the first; null is the empty
// list.
QV_API TLogMsg* Front(TLogMsg* last);
QV_API void PushBackLogMsg(TLogMsg*& list, TLogMsg* message);
QV_API void PushFrontLogMsg(TLogMsg*& list, TLogMsg* message);
// The first element, linked to itself again, or null; the caller owns it.
QV_API TLogMsg* PopFrontLogMsg(TLogMsg*& list);
QV_API void FreeAllLogMsg(TLogMsg*& list);

}  // namespace Mox
