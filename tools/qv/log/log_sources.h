// The logs that a command reads: files, standard input, and the entries of ZIP archives. An archive
// is known by its content, and each of its entries that is a log counts as one.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "base/exit_code.h"
#include "log_file/log_reader.h"

namespace qv {

struct LogSource {
    std::string name;      // "A.log", or "C.zip:log.raw" of an entry; UTF-8
    bool is_torn = false;  // the archive did not give all of it back as it went in
    std::unique_ptr<Mox::TLogReader> reader;
};

struct LogSources {
    std::vector<LogSource> logs;
    ExitCode worst = ExitCode::kDone;  // of what could not be read
};

// Opens the files; without one the log in force. "C.zip:log.raw" is one entry of an archive. Says
// on standard error what cannot be read, and goes on with the rest. Throws Failure (kCannotOpen)
// when there is no log at all.
LogSources OpenLogs(const std::vector<std::string>& names);

// For commands that take one log: throws Failure for an archive of several, with their names.
LogSource OpenOneLog(const std::string& file);

// Whether the name stands for what can be read once only: standard input, a pipe or a device.
bool IsStream(const std::string& name);
// Whether a file of this name is an archive; false for what can be read once only.
bool IsArchive(const std::string& name);

// Says on standard error what was left out, with the log's name when there are several, and throws
// Failure when anything was.
void FailOnDamage(const LogSources& sources);
void FailOnDamage(const LogSource& log);

}  // namespace qv
