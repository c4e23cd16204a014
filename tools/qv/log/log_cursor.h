// The place in a log up to which records have been shown, kept in a file between runs.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "log_file/log_reader.h"

namespace qv {

struct LogCursor {
    // Of the last record: the file's change counter behind it; 0 without a header that is believed.
    std::uint64_t number = 0;
    std::uint64_t fingerprint = 0;  // of that record; another one means another ring

    bool operator==(const LogCursor&) const = default;
};

// The cursor behind the record that the reader returned last.
LogCursor CursorAt(const Mox::TLogReader& reader, const Mox::TLogMsg& record);

// Nothing when there is no such file. Throws Failure for a file that holds no cursor.
std::optional<LogCursor> LoadCursor(const std::string& file);
// Replaces the file as a whole.
void SaveCursor(const std::string& file, const LogCursor& cursor);

struct Resumed {
    bool made_anew = false;  // the ring is not the one of the cursor: it starts at its oldest
    std::uint64_t overwritten = 0;  // records behind the cursor that are gone
};
// Makes the reader go on behind the cursor.
Resumed Resume(Mox::TLogReader& reader, const LogCursor& cursor);

}  // namespace qv
