// Follows a log that others write: each record once, in order, as it comes.
#pragma once

#include <windows.h>

#include <cstdint>
#include <optional>
#include <string>

#include "log_file/log_cursor.h"
#include "log_file/log_reader.h"
#include "mox_classes/text/unicode_string.h"

namespace Mox {

// One thread at a time. The file is open only while Open and Next run, and may be deleted, replaced
// and damaged meanwhile.
class TLogFollower {
  public:
    // Where the first Next begins: with the oldest record, or with the first that comes from now
    // on.
    enum class TStart { Oldest, New };

    // Returns a Win32 error code: ERROR_INVALID_DATA for a file that is no log.
    DWORD Open(const UnicodeString& fileName, TStart start);

    // The next record, or null when there is none for now. Valid until the next call.
    const TLogMsg* Next();
    // What happened in front of the record that Next returned last.
    const TLogResumed& News() const { return news_; }

  private:
    bool Copy();
    const TLogMsg* NextOfCopy();
    void GoToEnd();

    UnicodeString name_;
    std::string beginning_;  // of the file when it was copied last
    TLogReader reader_;
    std::optional<TLogCursor> behind_;  // the last record
    TLogResumed news_;                  // of the record that Next returned last
    TLogResumed coming_;                // of the next one
};

}  // namespace Mox
