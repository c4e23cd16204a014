#include "log/log_cursor.h"

#include <windows.h>

#include <cinttypes>
#include <cstdio>
#include <initializer_list>

#include "base/files.h"
#include "log/log_filter.h"

namespace qv {

namespace {

constexpr const char* kForm = "qv-log-cursor 1 %" PRIu64 " %016" PRIx64 "\n";

// Tells records apart, no more.
std::uint64_t Fingerprint(const Mox::TLogMsg& record) {
    constexpr std::uint64_t kPrime = 0x100000001B3;
    std::uint64_t hash = 0xCBF29CE484222325;
    const auto mix = [&](std::uint64_t value) { hash = (hash ^ value) * kPrime; };
    for (const std::uint64_t value :
         {TimeOf(record), std::uint64_t{record.processId}, std::uint64_t{record.threadId},
          static_cast<std::uint64_t>(record.line)}) {
        mix(value);
    }
    for (int i = 1; i <= record.text.Length(); ++i) mix(record.text[i]);
    return hash;
}

// Records of a log whose header cannot be believed have no numbers.
Resumed ResumeByFingerprint(Mox::TLogReader& reader, const LogCursor& cursor) {
    std::size_t shown = 0;
    for (std::size_t i = 1; const Mox::TLogMsg* record = reader.Next(); ++i) {
        if (Fingerprint(*record) == cursor.fingerprint) shown = i;
    }
    reader.Seek(0);
    for (std::size_t i = 0; i < shown; ++i) reader.Next();
    return {shown == 0, 0};
}

bool Exists(const std::string& file) {
    return GetFileAttributesW(FromUtf8(file).t_str()) != INVALID_FILE_ATTRIBUTES;
}

std::string Written(const LogCursor& cursor) {
    char text[128];
    std::snprintf(text, sizeof(text), kForm, cursor.number, cursor.fingerprint);
    return text;
}

}  // namespace

LogCursor CursorAt(const Mox::TLogReader& reader, const Mox::TLogMsg& record) {
    return {reader.Place().number, Fingerprint(record)};
}

std::optional<LogCursor> LoadCursor(const std::string& file) {
    if (!Exists(file)) return std::nullopt;
    const std::string text = ReadAll(file);
    LogCursor cursor;
    // What is out of range is not written back as it stands.
    // NOLINTNEXTLINE(cert-err34-c)
    const int fields = std::sscanf(text.c_str(), "qv-log-cursor 1 %" SCNu64 " %" SCNx64,
                                   &cursor.number, &cursor.fingerprint);
    if (fields != 2 || Written(cursor) != text)
        throw Failure("'" + OneLine(FromUtf8(file)) + "' holds no cursor of a log");
    return cursor;
}

void SaveCursor(const std::string& file, const LogCursor& cursor) {
    WriteWhole(file, Written(cursor));
}

Resumed Resume(Mox::TLogReader& reader, const LogCursor& cursor) {
    const bool numbered = cursor.number != 0 && reader.Header().version != 0;
    if (!numbered) return ResumeByFingerprint(reader, cursor);
    Resumed resumed;
    const std::uint64_t newest = reader.Header().counter;
    reader.Seek(cursor.number);
    const Mox::TLogMsg* const record = reader.Next();
    const std::uint64_t number = record == nullptr ? newest + 1 : reader.Place().number;
    const bool same_place = record != nullptr && number == cursor.number;
    resumed.made_anew =
        newest < cursor.number || (same_place && Fingerprint(*record) != cursor.fingerprint);
    if (!resumed.made_anew && number > cursor.number + 1)
        resumed.overwritten = number - cursor.number - 1;
    reader.Seek(resumed.made_anew ? 0 : cursor.number + 1);
    return resumed;
}

}  // namespace qv
