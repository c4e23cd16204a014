#include "mox_log/logger.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <new>

#include "mox_classes/memory/lock.h"
#include "mox_classes/text/log_here.h"
#include "mox_classes/text/sys_error.h"

namespace Mox {

namespace {

// Other threads change these fields while Log reads them.
template <class T>
T Load(T& field) {
    return std::atomic_ref<T>(field).load(std::memory_order_acquire);
}

// Serialises the first Init and the last Release. A unit that finds the logger connected finds it
// completely set up.
System::TLock& SetUpGuard() {
    static constinit System::TLock guard;
    return guard;
}

// Allows one reader of the last error at a time. Writers do not wait for it.
System::TLock& ErrorReaderGuard() {
    static constinit System::TLock guard;
    return guard;
}

// Runs `say`, which makes a line. Its failure (no memory) is ignored: a line is no reason to fail.
template <class Say>
void NoThrow(const Say& say) noexcept {
    try {
        say();
    } catch (...) {
        return;
    }
}

void Status(const WCHAR* text, int line = __builtin_LINE()) {
    NoThrow([&] { ShowStatus(text, line); });
}

// The id of this process, which can have been forked from the one that set the logger up.
DWORD OwnId(TLogger& logger) {
    const DWORD id = GetCurrentProcessId();
    std::atomic_ref<DWORD> kept(logger.processId);
    if (kept.load(std::memory_order_relaxed) != id) kept.store(id, std::memory_order_relaxed);
    return id;
}

// Makes a message. It takes `source` and `label` out of the caller's strings.
TLogMsg* NewMessage(TLogger& logger, int level, UnicodeString& source, int line,
                    const UnicodeString& text, UnicodeString& label, void* data, int size) {
    TLogMsg* message = TLogMsg::Alloc();
    if (message == nullptr) return nullptr;
    message->level = level;
    message->source.swap(source);
    message->line = line;
    message->text = text;
    message->dataLabel.swap(label);
    message->data = data;
    message->dataSize = size > 0 ? -size : 0;
    message->processId = OwnId(logger);
    message->sessionId = GetSessionId();
    message->threadId = GetCurrentThreadId();
    return message;
}

}  // namespace

TLogger* GetLogger() {
    static constinit TLogger logger;
    return &logger;
}

int InitLogger() {
    return GetLogger()->Init();
}

int UninitLogger() {
    return GetLogger()->Release();
}

UnicodeString LogHere(int level, const UnicodeString& text, int line, const char* file) {
    return GetLogger()->Log(level, ModuleName(file), line, text, UnicodeString(), nullptr, 0);
}

int TLogger::Init() {
    const std::lock_guard hold(SetUpGuard());
    const LONG count = std::atomic_ref(refCount).load() + 1;
    if (count == 1) {
        auto error = std::make_unique<UnicodeString>();
        const DWORD slot = TlsAlloc();
        if (slot == TLS_OUT_OF_INDEXES) Status(TEXT("TlsAlloc() failed"));
        std::atomic_ref(tlsIndex).store(slot);
        InitializeCriticalSection(&lock);
        processId = GetCurrentProcessId();
        std::atomic_ref(lastError).store(error.release());
    }
    std::atomic_ref(refCount).fetch_add(1);
    if (count == 1) {
        Status(TEXT("MOX Log system was initialized successfully."));
    } else {
        Status(
            TEXT("Existing MOX Log system was connected to this unit, instead of "
                 "initializing"));
    }
    return count;
}

int TLogger::Release() {
    const std::lock_guard hold(SetUpGuard());
    const LONG before = std::atomic_ref(refCount).load();
    if (before < 1) return before;
    const LONG count = std::atomic_ref(refCount).fetch_sub(1) - 1;
    if (count > 0) {
        Status(TEXT("MOX Log system was disconnected from this unit"));
        return count;
    }
    // A thread that is writing keeps the slot's number: its value in a free slot counts for
    // nothing.
    const DWORD slot = std::atomic_ref(tlsIndex).exchange(TLS_OUT_OF_INDEXES);
    if (slot != TLS_OUT_OF_INDEXES && !TlsFree(slot)) {
        const DWORD code = ::GetLastError();
        const int line = __builtin_LINE();
        NoThrow([&] {
            UnicodeString text;
            ShowStatus(text.sprintf(TEXT("TlsFree(%d) failed: %s"), slot, GetSysError(code, true)),
                       line);
        });
    }
    DeleteCriticalSection(&lock);
    UnicodeString* text = std::atomic_ref(lastError).exchange(nullptr);
    if (text != ErrorBeingRead()) delete text;
    Status(TEXT("MOX Log system was uninitialized successfully."));
    return count;
}

UnicodeString TLogger::Log(int level, UnicodeString source, int line, UnicodeString text,
                           UnicodeString dataLabel, void* data, int dataSize) {
    const TLogRecordProc record = Load(recordProc);
    const TLogFormatProc format = record == nullptr ? Load(formatProc) : nullptr;
    const bool is_wanted = record != nullptr || format != nullptr;
    TOwnedLogMsg made(is_wanted
                          ? NewMessage(*this, level, source, line, text, dataLabel, data, dataSize)
                          : nullptr);
    if (level == 'X') SetLastError(text);

    if (record != nullptr) {
        if (made.message != nullptr) {
            record(recordContext, made.message, Load(recorder), &made.owned);
        }
    } else if (made.message != nullptr) {
        UnicodeString formatted;
        format(formatContext, &formatted, made.message, Load(recorder), &made.owned);
        text = formatted;
    } else {
        NoThrow(
            [&] { text = FormatLogLine(level, source, line, text, dataLabel, data, dataSize); });
    }
    return text;
}

// The text of the last error is replaced, never changed, so a thread that logs an error waits for
// nobody. A reader takes the text out and leaves a marker. Whoever replaces the marker does not
// free the text; the reader does.
UnicodeString* TLogger::ErrorBeingRead() {
    return reinterpret_cast<UnicodeString*>(this);
}

void TLogger::SetLastError(UnicodeString text) {
    auto* fresh = new (std::nothrow) UnicodeString(text);
    if (fresh == nullptr) return;  // the one before stays: logging goes on without memory
    std::atomic_ref<UnicodeString*> slot(lastError);
    UnicodeString* old = slot.load();
    while (old != nullptr && !slot.compare_exchange_weak(old, fresh)) {
    }
    if (old == nullptr) {
        delete fresh;
    } else if (old != ErrorBeingRead()) {
        delete old;
    }
}

UnicodeString TLogger::GetLastError() {
    const std::lock_guard hold(ErrorReaderGuard());
    std::atomic_ref<UnicodeString*> slot(lastError);
    UnicodeString* marker = ErrorBeingRead();
    UnicodeString* taken = slot.load();
    while (taken != nullptr && taken != marker && !slot.compare_exchange_weak(taken, marker)) {
    }
    // The marker of a reader that did not come along in a fork stays until the next error.
    if (taken == nullptr || taken == marker) return UnicodeString();
    const UnicodeString text = *taken;
    if (!slot.compare_exchange_strong(marker, taken)) delete taken;
    return text;
}

void TLogger::Lock() {
    if (Load(refCount) > 0) EnterCriticalSection(&lock);
}

void TLogger::Unlock() {
    if (Load(refCount) > 0) LeaveCriticalSection(&lock);
}

}  // namespace Mox
