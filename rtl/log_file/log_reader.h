// The checked reader of the shared log file, for tools that show the log.
//
// It works on a private copy, so that writers may go on meanwhile. Nothing that the file says is
// used before it is checked: what is damaged is left out, and the reader says what and why.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <memory>

#include "log_file/log_format.h"
#include "log_file/log_place.h"
#include "mox_classes/text/unicode_string.h"
#include "mox_log/log_message.h"
#include "qv_api.h"

namespace Mox {

// One thread at a time.
//
//     Mox::TLogReader reader;
//     if (!reader.Open(name)) return Fail(reader.Error());
//     while (const Mox::TLogMsg* message = reader.Next()) Show(*message);
//     for (int i = 0; i < reader.SkipCount(); ++i) Warn(reader.Skip(i));
class QV_API TLogReader {
  public:
    TLogReader();
    ~TLogReader();
    TLogReader(const TLogReader&) = delete;
    TLogReader& operator=(const TLogReader&) = delete;

    // Copies the file and starts at its oldest record. The copy is made under the header's lock or,
    // when the lock cannot be had, until the header did not change meanwhile. False when the file
    // cannot be read or holds no log; Error() then says why. An empty file is an empty log.
    bool Open(const UnicodeString& fileName);
    // The same for bytes in memory, which are copied.
    bool Assign(const void* bytes, std::size_t size);
    const UnicodeString& Error() const;
    // For a file whose header cannot be believed, after Open or Assign said so: starts at the
    // oldest of the records that lie in the file (in its first 256 MiB), those included that had
    // been given up. False when there are none.
    bool StartWithoutHeader();

    TLogCopy Copy() const;
    // As the copy has it; zero for an empty file or without a header that can be believed.
    const TLogFileHeader& Header() const;

    // Bytes of the ring behind the end of the file. The disk was full when they were to be written,
    // or the file was cut.
    std::uint32_t Missing() const;

    // The next record, oldest first, or null at the end. Valid until the next call.
    const TLogMsg* Next();
    // Of the record that Next returned last. The numbers of records in front of damage are too high
    // by what was lost there.
    TLogPlace Place() const;
    // Next goes on with the first record of this number or a higher one, and what is left out is
    // told anew: the gaps in front of it, but not records that are not looked at.
    void Seek(std::uint64_t number);

    // What was left out so far; complete when Next has returned null.
    int SkipCount() const;
    const TLogSkip& Skip(int index) const;

  private:
    class TState;
    std::unique_ptr<TState> state_;
};

}  // namespace Mox
