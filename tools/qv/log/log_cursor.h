// The place in a log up to which records have been shown, kept in a file between runs.
#pragma once

#include <optional>
#include <string>

#include "log_file/log_cursor.h"

namespace qv {

using LogCursor = Mox::TLogCursor;

// Nothing when there is no such file. Throws Failure for a file that holds no cursor.
std::optional<LogCursor> LoadCursor(const std::string& file);
// Replaces the file as a whole.
void SaveCursor(const std::string& file, const LogCursor& cursor);

}  // namespace qv
