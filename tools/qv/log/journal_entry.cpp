#include "log/journal_entry.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

#include "base/utf8_text.h"
#include "log/log_filter.h"
#include "log/record_parts.h"

namespace qv {

namespace {

// What a log holds belongs to no boot of a machine that a journal could know, but an entry needs
// one: this one, at its beginning.
constexpr std::string_view kNoBoot =
    "__MONOTONIC_TIMESTAMP=0\n_BOOT_ID=d3866e39d1ad45b8ad8f1ccaa5051fec\nSYSLOG_IDENTIFIER="
    "vantrel\n";

// As syslog counts them.
char Priority(int level) {
    switch (level) {
        case 'X':
            return '3';  // error
        case '*':
        case '>':
            return '4';  // warning: the log itself has lost something, or was mended
        case 'i':
            return '6';  // information
        case ' ':
            return '7';  // debug
        default:
            return '5';  // notice
    }
}

// Microseconds since 1970.
std::int64_t JournalTime(LogTime time) {
    constexpr std::int64_t kTicks = 10, kMicroseconds = 1'000'000;
    constexpr std::int64_t kFirst = 1, kLast = (std::int64_t{1} << 55) - 1;
    const auto since_1601 = static_cast<std::int64_t>(time / kTicks);
    return std::clamp(since_1601 - kFrom1601To1970 * kMicroseconds, kFirst, kLast);
}

// A value with control characters stands behind its length: eight bytes, the lowest first.
void AddField(std::string& out, std::string_view name, std::string_view value) {
    const auto is_control = [](char c) { return static_cast<unsigned char>(c) < ' ' && c != '\t'; };
    out += name;
    if (std::none_of(value.begin(), value.end(), is_control)) {
        out += '=';
    } else {
        out += '\n';
        for (unsigned shift = 0; shift < 64; shift += 8)
            out += static_cast<char>(std::uint64_t{value.size()} >> shift & 0xFF);
    }
    out += value;
    out += '\n';
}

void AddKnown(std::string& out, std::string_view name, const std::string& value) {
    if (!value.empty()) AddField(out, name, value);
}

}  // namespace

void AddJournalEntry(std::string& out, const Mox::TLogMsg& record, const std::string& host,
                     const std::string& log) {
    const std::int64_t session = SessionOf(record);
    AddField(out, "__REALTIME_TIMESTAMP", std::to_string(JournalTime(TimeOf(record))));
    out += kNoBoot;
    AddKnown(out, "_HOSTNAME", host);
    AddField(out, "_PID", std::to_string(record.processId));
    AddField(out, "TID", std::to_string(record.threadId));
    AddField(out, "PRIORITY", std::string(1, Priority(record.level)));
    AddField(out, "QV_LEVEL", LevelName(record.level));
    if (session >= 0) AddField(out, "QV_SESSION", std::to_string(session));
    AddField(out, "CODE_FILE", ToUtf8(record.source));
    AddField(out, "CODE_LINE", std::to_string(record.line));
    AddField(out, "MESSAGE", ToUtf8(record.text));
    AddKnown(out, "QV_LABEL", ToUtf8(record.dataLabel));
    AddKnown(out, "QV_DATA", BlockHex(record));
    AddKnown(out, "QV_LOG", log);
    out += '\n';
}

}  // namespace qv
