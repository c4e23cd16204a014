#include "log/log_cursor.h"

#include <windows.h>

#include <cinttypes>
#include <cstdio>

#include "base/files.h"

namespace qv {

namespace {

constexpr const char* kForm = "qv-log-cursor 1 %" PRIu64 " %016" PRIx64 "\n";

bool Exists(const std::string& file) {
    return GetFileAttributesW(FromUtf8(file).t_str()) != INVALID_FILE_ATTRIBUTES;
}

std::string Written(const LogCursor& cursor) {
    char text[128];
    std::snprintf(text, sizeof(text), kForm, cursor.number, cursor.fingerprint);
    return text;
}

}  // namespace

std::optional<LogCursor> LoadCursor(const std::string& file) {
    if (!Exists(file)) return std::nullopt;
    const std::string text = ReadAll(file);
    LogCursor cursor;
    // What is out of range is not written back as it stands.
    // NOLINTNEXTLINE(cert-err34-c)
    const int fields = std::sscanf(text.c_str(), "qv-log-cursor 1 %" SCNu64 " %" SCNx64,
                                   &cursor.number, &cursor.fingerprint);
    if (fields != 2 || Written(cursor) != text)
        throw Failure(Quoted(file) + " holds no cursor of a log");
    return cursor;
}

void SaveCursor(const std::string& file, const LogCursor& cursor) {
    WriteWhole(file, Written(cursor));
}

}  // namespace qv
