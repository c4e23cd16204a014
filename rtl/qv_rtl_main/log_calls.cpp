#include "qv_rtl_main/log_calls.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <new>

#include "driver_global/installation.h"
#include "driver_global/startup.h"
#include "log_file/log_follower.h"
#include "log_file/log_recorder.h"

static_assert(offsetof(QVLogRecord, data) == 40 && offsetof(QVLogRecord, level) == 64);
static_assert(offsetof(QVLogRecord, madeAnew) == 84 && sizeof(QVLogRecord) == 88);

struct QVLog {
    Mox::TLogFollower follower;
};

namespace {

constexpr const WCHAR* kCutMark = TEXT(" ... (cut)");

// Runs `step`, which returns an error code. Whatever it throws is want of memory.
template <class Step>
int Guarded(const Step& step) noexcept {
    try {
        return static_cast<int>(step());
    } catch (...) {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
}

bool IsLevel(int level) {
    return level == 'X' || level == '*' || level == 'i' || level == ' ';
}

// What stands between brackets and in front of a comma in a line of the log.
bool IsSource(const UnicodeString& source) {
    if (source.Length() < 1 || source.Length() > kMostLogSource) return false;
    return std::none_of(source.t_str(), source.t_str() + source.Length(), [](WCHAR unit) {
        return unit <= ' ' || (unit >= 0x7F && unit <= 0xA0) || unit == ',' || unit == '[' ||
               unit == ']';
    });
}

// The two units of a pair stay together.
UnicodeString Cut(const UnicodeString& text) {
    if (text.Length() <= kMostLogText) return text;
    const bool in_pair = (text[kMostLogText] & 0xFC00) == 0xD800;
    return text.SubString(1, in_pair ? kMostLogText - 1 : kMostLogText) + kCutMark;
}

DWORD Open(const WCHAR* file, bool only_new, Mox::TLogFollower& follower) {
    using TStart = Mox::TLogFollower::TStart;
    const bool is_named = file != nullptr && *file != 0;
    const UnicodeString name = is_named ? UnicodeString(file) : GetPrinterLogFile();
    if (!is_named && name == kLogFileOff) return ERROR_NOT_READY;
    return follower.Open(name, only_new ? TStart::New : TStart::Oldest);
}

void Take(const UnicodeString& text, const WCHAR*& units, int& length) {
    units = text.t_str();
    length = text.Length();
}

QVLogRecord RecordOf(const Mox::TLogMsg& message, const Mox::TLogResumed& news) {
    QVLogRecord record{};
    record.time = ULONGLONG{message.time.dwHighDateTime} << 32U | message.time.dwLowDateTime;
    record.missed = news.overwritten;
    record.madeAnew = news.made_anew ? 1 : 0;
    Take(message.source, record.source, record.sourceLength);
    Take(message.text, record.text, record.textLength);
    Take(message.dataLabel, record.label, record.labelLength);
    record.data = static_cast<const unsigned char*>(message.data);
    record.dataSize = message.data == nullptr ? 0 : std::abs(message.dataSize);
    record.level = message.level;
    record.line = message.line;
    record.processId = message.processId;
    record.threadId = message.threadId;
    record.sessionId = message.sessionId;
    return record;
}

}  // namespace

int QVWriteLog(int level, const WCHAR* source, int line, const WCHAR* text) {
    if (source == nullptr || text == nullptr || !IsLevel(level)) return ERROR_INVALID_PARAMETER;
    return Guarded([&]() -> DWORD {
        if (!IsSource(source)) return ERROR_INVALID_PARAMETER;
        const DWORD code = InstallLogRecorder();
        return code != NO_ERROR ? code : Mox::LogSurely(level, source, line, Cut(text));
    });
}

int QVOpenLog(const WCHAR* file, int onlyNew, QVLog** log) {
    if (log == nullptr) return ERROR_INVALID_PARAMETER;
    *log = nullptr;
    return Guarded([&] {
        auto opened = std::make_unique<QVLog>();
        const DWORD code = Open(file, onlyNew != 0, opened->follower);
        if (code == NO_ERROR) *log = opened.release();
        return code;
    });
}

int QVReadLog(QVLog* log, QVLogRecord* record) {
    if (log == nullptr || record == nullptr) return -ERROR_INVALID_PARAMETER;
    bool is_read = false;
    const int code = Guarded([&] {
        const Mox::TLogMsg* const message = log->follower.Next();
        is_read = message != nullptr;
        if (is_read) *record = RecordOf(*message, log->follower.News());
        return NO_ERROR;
    });
    return code != 0 ? -code : is_read ? 1 : 0;
}

void QVCloseLog(QVLog* log) {
    delete log;
}
