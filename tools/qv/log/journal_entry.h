// A record as an entry of systemd's journal export format, which systemd-journal-remote takes.
#pragma once

#include <string>

#include "mox_log/log_message.h"

namespace qv {

// Adds the entry with the blank line that ends it. `host` is the machine that wrote the record,
// `log` the log's name; a field that would be empty is left out. A time that a journal cannot hold
// becomes the nearest one that it can, finer than a microsecond is cut off.
void AddJournalEntry(std::string& out, const Mox::TLogMsg& record, const std::string& host,
                     const std::string& log);

}  // namespace qv
