#include "log/record_line.h"

#include <cstdint>
#include <cstdio>

#include "base/json_output.h"
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

std::size_t BlockSize(const Mox::TLogMsg& record) {
    const auto size = std::int64_t{record.dataSize};
    return static_cast<std::size_t>(record.data == nullptr ? 0 : size < 0 ? -size : size);
}

std::string Hex(const Mox::TLogMsg& record) {
    constexpr const char* kDigits = "0123456789ABCDEF";
    const auto* bytes = static_cast<const unsigned char*>(record.data);
    std::string hex;
    for (std::size_t i = 0; i < BlockSize(record); ++i) {
        hex += kDigits[bytes[i] >> 4];
        hex += kDigits[bytes[i] & 0x0F];
    }
    return hex;
}

// "2026-01-31T09:00:00.000 X P12 T34 S1 [source,56] text (label: hex)"
std::string TextLine(const Mox::TLogMsg& record, const LogStyle& style) {
    const auto shown = [&](const UnicodeString& text) {
        return style.raw ? ToUtf8(text) : OneLine(text);
    };
    const std::string time = style.utc ? UtcText(TimeOf(record)) : LocalText(TimeOf(record));
    std::string line = (time.empty() ? "(no time)" : time) + " " + LevelName(record.level) + " P" +
                       std::to_string(record.processId) + " T" + std::to_string(record.threadId) +
                       " S" + std::to_string(SessionOf(record)) + " [" + shown(record.source) +
                       "," + std::to_string(record.line) + "] " +
                       shown(style.raw ? record.text : record.text.TrimRight());
    if (BlockSize(record) > 0 || record.dataLabel.Length() > 0) {
        line += " (" + shown(record.dataLabel) + ": " +
                ToUtf8(Mox::GetHexEncoded(record.data, static_cast<int>(BlockSize(record)))) + ")";
    }
    const char* const colour = style.colour ? Colour(record.level) : nullptr;
    return colour == nullptr ? line + "\n" : colour + line + kPlain + "\n";
}

std::string JsonLine(const Mox::TLogMsg& record) {
    const bool block = BlockSize(record) > 0;
    const bool label = block || record.dataLabel.Length() > 0;
    const std::string time = UtcText(TimeOf(record));
    const std::int64_t session = SessionOf(record);
    Json object = {{"schema", kJsonSchema}};
    object["time"] = time.empty() ? Json() : Json(time);
    object["level"] = LevelName(record.level);
    object["pid"] = record.processId;
    object["tid"] = record.threadId;
    object["session"] = session < 0 ? Json() : Json(session);
    object["source"] = Text(record.source);
    object["line"] = record.line;
    object["text"] = Text(record.text);
    object["label"] = label ? Text(record.dataLabel) : Json();
    object["data"] = block ? Json(Hex(record)) : Json();
    return object.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

// A field is quoted when a reader could take it for something else.
std::string CsvField(const std::string& text) {
    const bool padded = !text.empty() && (text.front() == ' ' || text.back() == ' ');
    if (!padded && text.find_first_of(",\"\r\n") == std::string::npos) return text;
    std::string quoted = "\"";
    for (const char c : text) quoted.append(c == '"' ? 2 : 1, c);
    return quoted + "\"";
}

std::string CsvLine(const Mox::TLogMsg& record) {
    const std::int64_t session = SessionOf(record);
    return UtcText(TimeOf(record)) + "," + CsvField(LevelName(record.level)) + "," +
           std::to_string(record.processId) + "," + std::to_string(record.threadId) + "," +
           (session < 0 ? std::string() : std::to_string(session)) + "," +
           CsvField(ToUtf8(record.source)) + "," + std::to_string(record.line) + "," +
           CsvField(ToUtf8(record.text)) + "," + CsvField(ToUtf8(record.dataLabel)) + "," +
           Hex(record) + "\r\n";
}

}  // namespace

std::string LogHead(const LogStyle& style) {
    return style.shape == LogStyle::Shape::kCsv
               ? "time,level,pid,tid,session,source,line,text,label,data\r\n"
               : std::string();
}

std::string LogLine(const Mox::TLogMsg& record, const LogStyle& style) {
    switch (style.shape) {
        case LogStyle::Shape::kJson:
            return JsonLine(record);
        case LogStyle::Shape::kCsv:
            return CsvLine(record);
        default:
            return TextLine(record, style);
    }
}

std::string LevelName(int level) {
    if (level >= 0x20 && level < 0x7F) return std::string(1, static_cast<char>(level));
    char text[16];
    std::snprintf(text, sizeof(text), "0x%X", static_cast<unsigned>(level));
    return text;
}

}  // namespace qv
