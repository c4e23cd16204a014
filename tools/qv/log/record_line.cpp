#include "log/record_line.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <iterator>

#include "base/json_output.h"
#include "log/journal_entry.h"
#include "log/log_filter.h"
#include "mox_log/logger.h"

namespace qv {

namespace {

constexpr const char* kPlain = "\x1b[0m";

const char* Colour(int level) {
    switch (level) {
        case 'X':
            return "\x1b[1;31m";
        case '*':
            return "\x1b[33m";
        case '>':
            return "\x1b[36m";
        case ' ':
            return "\x1b[2m";
        default:
            return nullptr;
    }
}

void AddNumber(std::string& out, const char* before, std::int64_t number) {
    char text[24];
    const auto done = std::to_chars(std::begin(text), std::end(text), number);
    out += before;
    out.append(text, done.ptr);
}

// A text of JSON, or null. Most texts hold nothing to escape.
void AddQuoted(std::string& out, const char* before, const std::string& text, bool known = true) {
    const auto is_plain = [](char c) {
        return static_cast<unsigned char>(c) >= 0x20 && c != '"' && c != '\\';
    };
    out += before;
    if (!known) {
        out += "null";
    } else if (std::all_of(text.begin(), text.end(), is_plain)) {
        out.append(1, '"').append(text).append(1, '"');
    } else {
        out += Json(text).dump(-1, ' ', false, Json::error_handler_t::replace);
    }
}

// What UnicodeString::TrimRight leaves.
Units WithoutEnd(Units text) {
    while (!text.empty() && text.back() <= ' ') text.remove_suffix(1);
    return text;
}

// A field is quoted when a reader could take it for something else.
std::string CsvField(const std::string& text) {
    const bool padded = !text.empty() && (text.front() == ' ' || text.back() == ' ');
    if (!padded && text.find_first_of(",\"\r\n") == std::string::npos) return text;
    std::string quoted = "\"";
    for (const char c : text) quoted.append(c == '"' ? 2 : 1, c);
    return quoted + "\"";
}

}  // namespace

std::string LogHead(const LogStyle& style) {
    if (style.shape != LogStyle::Shape::kCsv) return "";
    return std::string("time,level,pid,tid,session,source,line,text,label,data") +
           (style.names_log ? ",log\r\n" : "\r\n");
}

LogLines::LogLines(const LogStyle& style)
    : style_(style), time_(style.utc || style.shape != LogStyle::Shape::kText) {}

void LogLines::Add(std::string& out, const Mox::TLogMsg& record, const std::string& log) {
    switch (style_.shape) {
        case LogStyle::Shape::kJson:
            return AddJson(out, record, log);
        case LogStyle::Shape::kCsv:
            return AddCsv(out, record, log);
        case LogStyle::Shape::kExport:
            return AddJournalEntry(out, record, style_.host, style_.names_log ? log : "");
        default:
            return AddText(out, record, log);
    }
}

// "2026-01-31T09:00:00.000 A.log X P12 T34 S1 [source,56] text (label: hex)"
void LogLines::AddText(std::string& out, const Mox::TLogMsg& record, const std::string& log) {
    const char* const colour = style_.colour ? Colour(record.level) : nullptr;
    if (colour != nullptr) out += colour;
    const std::string_view time = time_.Of(TimeOf(record));
    out += time.empty() ? "(no time)" : time;
    if (style_.names_log) out.append(1, ' ').append(log);
    out += ' ';
    out += LevelName(record.level);
    AddNumber(out, " P", record.processId);
    AddNumber(out, " T", record.threadId);
    AddNumber(out, " S", SessionOf(record));
    out += " [";
    AddShown(out, UnitsOf(record.source));
    AddNumber(out, ",", record.line);
    out += "] ";
    AddShown(out, style_.raw ? UnitsOf(record.text) : WithoutEnd(UnitsOf(record.text)));
    if (BlockSize(record) > 0 || record.dataLabel.Length() > 0) AddBlock(out, record);
    if (colour != nullptr) out += kPlain;
    out += '\n';
}

void LogLines::AddShown(std::string& out, Units text) const {
    style_.raw ? AddUtf8(out, text) : AddOneLine(out, text);
}

void LogLines::AddBlock(std::string& out, const Mox::TLogMsg& record) const {
    out += " (";
    AddShown(out, UnitsOf(record.dataLabel));
    out += ": ";
    out += ToUtf8(Mox::GetHexEncoded(record.data, static_cast<int>(BlockSize(record))));
    out += ')';
}

void LogLines::AddJson(std::string& out, const Mox::TLogMsg& record, const std::string& log) {
    const bool block = BlockSize(record) > 0;
    const bool label = block || record.dataLabel.Length() > 0;
    const std::string_view time = time_.Of(TimeOf(record));
    const std::int64_t session = SessionOf(record);
    AddNumber(out, R"({"schema":)", kJsonSchema);
    AddQuoted(out, R"(,"time":)", std::string(time), !time.empty());
    AddQuoted(out, R"(,"level":)", LevelName(record.level));
    AddNumber(out, R"(,"pid":)", record.processId);
    AddNumber(out, R"(,"tid":)", record.threadId);
    if (session < 0) {
        out += R"(,"session":null)";
    } else {
        AddNumber(out, R"(,"session":)", session);
    }
    AddQuoted(out, R"(,"source":)", ToUtf8(record.source));
    AddNumber(out, R"(,"line":)", record.line);
    AddQuoted(out, R"(,"text":)", ToUtf8(record.text));
    AddQuoted(out, R"(,"label":)", ToUtf8(record.dataLabel), label);
    AddQuoted(out, R"(,"data":)", BlockHex(record), block);
    if (style_.names_log) AddQuoted(out, R"(,"log":)", log);
    out += "}\n";
}

void LogLines::AddCsv(std::string& out, const Mox::TLogMsg& record, const std::string& log) {
    const std::int64_t session = SessionOf(record);
    out += time_.Of(TimeOf(record));
    out += "," + CsvField(LevelName(record.level)) + "," + std::to_string(record.processId) + "," +
           std::to_string(record.threadId) + "," +
           (session < 0 ? std::string() : std::to_string(session)) + "," +
           CsvField(ToUtf8(record.source)) + "," + std::to_string(record.line) + "," +
           CsvField(ToUtf8(record.text)) + "," + CsvField(ToUtf8(record.dataLabel)) + "," +
           BlockHex(record);
    if (style_.names_log) out += "," + CsvField(log);
    out += "\r\n";
}

}  // namespace qv
