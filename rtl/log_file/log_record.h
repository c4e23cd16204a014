// Messages and strings as the log file stores them.
//
// The cursor forms are for memory that the caller knows to be large enough: there is no length to
// check against. DecodeLogMsg is the form for bytes from outside.
#pragma once

#include <cstddef>
#include <cstdint>

#include "mox_classes/text/code_page.h"
#include "mox_classes/text/unicode_string.h"
#include "mox_log/log_message.h"
#include "qv_api.h"

namespace Mox {

// Writers: the result is the bytes taken. With a null cursor they only measure, else they write at
// *cursor and advance it.

// 1200 and 1201 store UTF-16, 20127 the system's ANSI code page (which nobody can read back), every
// other code page UTF-8.
QV_API int WriteUnicodeString(void** cursor, UnicodeString s, System::TCodePage codePage);
// 0 when the record would pass 2147483647 bytes.
QV_API int WriteLogMsg(void** cursor, TLogMsg* msg);

// A message that has been measured. To convert its strings is most of what a record costs besides
// its system calls: they are measured once, or taken for ASCII, of which a code unit is a byte. The
// message must not change meanwhile.
class TMeasuredRecord {
  public:
    enum class TStrings { Measured, TakenForAscii };

    explicit TMeasuredRecord(const TLogMsg& msg, TStrings strings = TStrings::Measured);
    std::int64_t Size() const;
    // Size() bytes, which must not pass 2147483647. False when the strings are not ASCII after all.
    bool Write(void* target) const;

  private:
    std::int64_t VariableSize() const;

    const TLogMsg& msg_;
    std::uint32_t source_, text_, label_;  // bytes of the strings in UTF-8
};

// Readers: they advance *cursor; what is malformed is reported, gives "" and advances it by 1.

QV_API UnicodeString ReadUnicodeString(void** cursor);
// Fill `msg`; a data block it had before is not released, the one it gets is owned. The first reads
// a whole record and returns the bytes consumed, the second the part behind the length, of `size`
// bytes, which it never leaves; it returns `size`.
QV_API int ReadLogMsg(TLogMsg* msg, void** cursor);
QV_API int ReadLogMsg(TLogMsg* msg, void** cursor, int size);

// Reads one record that takes exactly `size` bytes. Null when all is well, else the reason why not;
// `msg` then holds what could be read.
QV_API const WCHAR* DecodeLogMsg(TLogMsg& msg, const void* record, std::size_t size);

}  // namespace Mox
