#include "log_file/log_recorder.h"

#include <atomic>
#include <mutex>

#include "log_file/log_record_bytes.h"
#include "mox_classes/memory/lock.h"

namespace Mox {

namespace {

class TLoggerLock {
  public:
    TLoggerLock() { GetLogger()->Lock(); }
    TLoggerLock(const TLoggerLock&) = delete;
    TLoggerLock& operator=(const TLoggerLock&) = delete;
    ~TLoggerLock() { GetLogger()->Unlock(); }
};

// The callback that SetLogRecorder found; it gets each message after the file.
std::atomic<TLogRecordProc>& PreviousRecordProc() {
    static std::atomic<TLogRecordProc> previous{nullptr};
    return previous;
}

template <class T>
void Store(T& field, T value) {
    std::atomic_ref<T>(field).store(value, std::memory_order_release);
}

}  // namespace

// A logging thread reads the logger's recorder without a lock; by the time it has the lock, that
// recorder may be gone, and its address another one's that is not open yet. It is looked up here
// first.
class TLiveRecorders {
  public:
    static TLiveRecorders& All() {
        static TLiveRecorders all;
        return all;
    }
    void Add(TLogRecorder* recorder) {
        const std::lock_guard hold(guard_);
        recorder->next_live_ = first_;
        first_ = recorder;
    }
    void Remove(TLogRecorder* recorder) {
        const std::lock_guard hold(guard_);
        TLogRecorder** link = &first_;
        while (*link != recorder) link = &(*link)->next_live_;
        *link = recorder->next_live_;
    }
    bool HasOpen(const TLogRecorder* recorder) {
        const std::lock_guard hold(guard_);
        const TLogRecorder* found = Find(recorder);
        return found != nullptr && found->IsOpen();
    }
    void LeaveSoon(const TLogRecorder* recorder) {
        const std::lock_guard hold(guard_);
        TLogRecorder* found = Find(recorder);
        if (found != nullptr) found->ring_.LeaveSoon();
    }

  private:
    TLogRecorder* Find(const TLogRecorder* recorder) const {
        TLogRecorder* at = first_;
        while (at != nullptr && at != recorder) at = at->next_live_;
        return at;
    }

    System::TLock guard_;
    TLogRecorder* first_ = nullptr;
};

// A thread that is writing, and the messages that it logs meanwhile. Lives on the thread's stack;
// the logger's thread-local slot leads to it. Without a slot the thread keeps the logger's lock
// instead, so that `unslotted_` can only be its own when it gets there again.
class TThreadWriter {
  public:
    TThreadWriter() {
        slot_ = Slot();
        slotted_ = slot_ != TLS_OUT_OF_INDEXES && TlsSetValue(slot_, this);
        if (slotted_) return;
        GetLogger()->Lock();
        Unslotted().store(this);
    }
    TThreadWriter(const TThreadWriter&) = delete;
    TThreadWriter& operator=(const TThreadWriter&) = delete;
    ~TThreadWriter() {
        FreeAllLogMsg(queue_);  // is empty unless a callback threw
        if (slotted_) {
            TlsSetValue(slot_, nullptr);
        } else {
            Unslotted().store(nullptr);
            GetLogger()->Unlock();
        }
    }

    // The calling thread's, or null.
    static TThreadWriter* Current() {
        const DWORD slot = Slot();
        void* own = slot == TLS_OUT_OF_INDEXES ? nullptr : TlsGetValue(slot);
        if (own != nullptr) return static_cast<TThreadWriter*>(own);
        if (Unslotted().load() == nullptr) return nullptr;
        const TLoggerLock lock;
        return Unslotted().load();
    }

    void Queue(TLogMsg* message) { PushBackLogMsg(queue_, message); }

    // Writes and frees the queue's messages, those that are logged meanwhile included.
    void WriteAll(void* context, TLogRecorder* recorder) {
        auto texts = log_file::TReportTexts::Translated;
        while (TLogMsg* message = Front(queue_)) {
            TLogRecorder* target = Write(*message, recorder, texts);
            TOwnedLogMsg written(PopFrontLogMsg(queue_));
            PassOn(context, written, target);
            texts = log_file::TReportTexts::Own;
        }
    }

  private:
    static DWORD Slot() { return std::atomic_ref(GetLogger()->tlsIndex).load(); }
    static std::atomic<TThreadWriter*>& Unslotted() {
        static std::atomic<TThreadWriter*> unslotted{nullptr};
        return unslotted;
    }

    // Returns the recorder that took the message.
    static TLogRecorder* Write(TLogMsg& message, TLogRecorder* recorder,
                               log_file::TReportTexts texts) {
        try {
            TLogRecordBytes record;
            const bool serialised = record.Serialise(message, INT32_MAX);
            const TLoggerLock lock;
            if (!TLiveRecorders::All().HasOpen(recorder)) recorder = GetLogger()->recorder;
            if (serialised && recorder != nullptr) recorder->ring_.Append(message, record, texts);
        } catch (...) {
            // An exhausted heap costs this message; nothing may escape into the code that logs.
        }
        return recorder;
    }

    static void PassOn(void* context, TOwnedLogMsg& written, TLogRecorder* recorder) {
        const TLogRecordProc previous = PreviousRecordProc().load();
        if (previous == nullptr) return;
        const TLoggerLock lock;
        previous(context, written.message, recorder, &written.owned);
    }

    DWORD slot_;
    bool slotted_;
    TLogMsg* queue_ = nullptr;
};

TLogRecorder::TLogRecorder() {
    TLiveRecorders::All().Add(this);
}

TLogRecorder::~TLogRecorder() {
    ring_.LeaveSoon();
    const TLoggerLock lock;
    TLiveRecorders::All().Remove(this);
    ring_.Close();
}

bool TLogRecorder::Open(UnicodeString fileName, DWORD sizeLimit) {
    const TLoggerLock lock;
    return ring_.Open(fileName, sizeLimit);
}

void SetLogRecorder(TLogRecorder* recorder) {
    TLogger& logger = *GetLogger();
    const TLoggerLock lock;
    if (recorder != nullptr) recorder->ring_.Stay();
    if (logger.recordProc != LogRecorderProc) PreviousRecordProc().store(logger.recordProc);
    Store(logger.recorder, recorder);
    Store<TLogRecordProc>(logger.recordProc, LogRecorderProc);
}

void LeaveLogSoon() {
    TLiveRecorders::All().LeaveSoon(std::atomic_ref(GetLogger()->recorder).load());
}

void ClearLogRecorder(TLogRecorder* recorder) {
    TLogger& logger = *GetLogger();
    if (recorder != nullptr && std::atomic_ref(logger.recorder).load() == recorder) LeaveLogSoon();
    const TLoggerLock lock;
    if (recorder == nullptr || logger.recorder != recorder) return;
    Store(logger.recordProc, PreviousRecordProc().load());
    Store<TLogRecorder*>(logger.recorder, nullptr);
}

DWORD LogSurely(int level, const UnicodeString& source, int line, const UnicodeString& text) {
    TLogger& logger = *GetLogger();
    const TLoggerLock lock;
    TLogRecorder* const recorder = logger.recorder;
    if (recorder == nullptr) return ERROR_NOT_READY;
    recorder->ring_.ForgetOutcome();
    logger.Log(level, source, line, text, UnicodeString(), nullptr, 0);
    // A callback may have ended the unit, which frees the recorder.
    return logger.recorder == recorder ? recorder->ring_.Outcome() : DWORD{ERROR_WRITE_FAULT};
}

void LogRecorderProc(void* context, TLogMsg* message, TLogRecorder* recorder, bool* owned) {
    *owned = false;
    if (std::atomic_ref(GetLogger()->refCount).load() < 1) {
        message->Free();
        return;
    }
    if (TThreadWriter* writer = TThreadWriter::Current()) {
        // It outlives the call that logs it, and with it the caller's data block.
        message->ImportBinData();
        writer->Queue(message);
        return;
    }
    TThreadWriter writer;
    writer.Queue(message);
    writer.WriteAll(context, recorder);
}

}  // namespace Mox
