// What the library logs while a test runs.
#pragma once

#include <vector>

#include "mox_log/logger.h"

namespace test {

/// Takes over the logger's record callback for its lifetime. For one test at a time.
class CapturedLog {
  public:
    struct Entry {
        int level;
        UnicodeString source;
        int line;
        UnicodeString text;
    };

    CapturedLog() : before_proc_(logger_.recordProc), before_context_(logger_.recordContext) {
        logger_.recordProc = Record;
        logger_.recordContext = this;
    }
    ~CapturedLog() {
        logger_.recordProc = before_proc_;
        logger_.recordContext = before_context_;
    }
    CapturedLog(const CapturedLog&) = delete;
    CapturedLog& operator=(const CapturedLog&) = delete;

    const std::vector<Entry>& Entries() const { return entries_; }
    /// Whether a line of that level begins with `text`.
    bool Has(int level, const UnicodeString& text) const {
        for (const Entry& entry : entries_) {
            if (entry.level == level && entry.text.SubString(1, text.Length()) == text) return true;
        }
        return false;
    }

  private:
    static void Record(void* context, Mox::TLogMsg* message, Mox::TLogRecorder*, bool*) {
        auto* self = static_cast<CapturedLog*>(context);
        self->entries_.push_back({message->level, message->source, message->line, message->text});
    }

    Mox::TLogger& logger_ = *Mox::GetLogger();
    Mox::TLogRecordProc before_proc_;
    void* before_context_;
    std::vector<Entry> entries_;
};

}  // namespace test
