// The place in a log behind a record that was read, for who goes on from there later.
#pragma once

#include <cstdint>

#include "log_file/log_reader.h"
#include "qv_api.h"

namespace Mox {

struct TLogCursor {
    // Of the record: the file's change counter behind it; 0 without a header that is believed.
    std::uint64_t number = 0;
    std::uint64_t fingerprint = 0;  // of that record; another one means another ring

    bool operator==(const TLogCursor&) const = default;
};

// The cursor behind the record that the reader returned last.
QV_API TLogCursor CursorAt(const TLogReader& reader, const TLogMsg& record);

struct TLogResumed {
    bool made_anew = false;  // the ring is not the one of the cursor: it starts at its oldest
    std::uint64_t overwritten = 0;  // records behind the cursor that are gone
};
// Makes the reader go on behind the cursor.
QV_API TLogResumed Resume(TLogReader& reader, const TLogCursor& cursor);

}  // namespace Mox
