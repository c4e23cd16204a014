// Follows a log that others write: each record once, in order, as it comes.
#pragma once

#include <windows.h>

#include <cstdint>
#include <optional>
#include <string>

#include "log_file/log_cursor.h"
#include "log_file/log_reader.h"
#include "mox_classes/text/unicode_string.h"
#include "qv_api.h"

namespace Mox {

// One thread at a time. The file is open only while Open and Next run, and may be deleted, replaced
// and damaged meanwhile.
class TLogFollower {
  public:
    // Where the first Next begins: with the oldest record, or with the first that comes from now
    // on.
    enum class TStart { Oldest, New };

    // Returns a Win32 error code: ERROR_INVALID_DATA for a file that is no log, ERROR_READ_FAULT
    // for one that cannot be read now. Reader().Error() says why, too.
    QV_API DWORD Open(const UnicodeString& fileName, TStart start);
    // Begins behind the record of the cursor.
    QV_API DWORD Open(const UnicodeString& fileName, const TLogCursor& behind);

    // The next record, or null when there is none for now. Valid until the next call.
    QV_API const TLogMsg* Next();
    // The same in two steps, for callers that do something between two looks at the file. Look
    // copies the log when it has changed; false when there is nothing new, or nothing that can be
    // read: Reader().Error() is empty or says why. NextFound takes the records of the copy.
    QV_API bool Look();
    QV_API const TLogMsg* NextFound();

    // What happened in front of the record that was returned last.
    const TLogResumed& News() const { return news_; }
    // Behind that record; nothing while there is none.
    const std::optional<TLogCursor>& Place() const { return behind_; }
    // The copy: what it left out, for example.
    const TLogReader& Reader() const { return reader_; }

  private:
    DWORD Begin(const UnicodeString& fileName, const std::optional<TLogCursor>& behind);
    void GoToEnd();

    UnicodeString name_;
    std::string beginning_;  // of the file when it was copied last
    TLogReader reader_;
    std::optional<TLogCursor> behind_;  // the last record
    TLogResumed news_;                  // of the record that was returned last
    TLogResumed coming_;                // of the next one
};

}  // namespace Mox
