#include "log_file/log_cursor.h"

#include <initializer_list>

namespace Mox {

namespace {

// Tells records apart, no more.
std::uint64_t Fingerprint(const TLogMsg& record) {
    constexpr std::uint64_t kPrime = 0x100000001B3;
    std::uint64_t hash = 0xCBF29CE484222325;
    const auto mix = [&](std::uint64_t value) { hash = (hash ^ value) * kPrime; };
    const std::uint64_t time =
        std::uint64_t{record.time.dwHighDateTime} << 32 | record.time.dwLowDateTime;
    for (const std::uint64_t value :
         {time, std::uint64_t{record.processId}, std::uint64_t{record.threadId},
          static_cast<std::uint64_t>(record.line)}) {
        mix(value);
    }
    for (int i = 1; i <= record.text.Length(); ++i) mix(record.text[i]);
    return hash;
}

// Whether the cursor's record stands where its number says. The reader is behind it then.
bool IsInPlace(TLogReader& reader, const TLogCursor& cursor) {
    reader.Seek(cursor.number);
    const TLogMsg* const record = reader.Next();
    return record != nullptr && reader.Place().number == cursor.number &&
           Fingerprint(*record) == cursor.fingerprint;
}

// Looks for the cursor's record everywhere: what is lost changes the numbers of the records before
// it, and without a header that is believed there are none. The reader is behind the record then,
// else at its oldest.
bool IsSomewhere(TLogReader& reader, const TLogCursor& cursor) {
    std::size_t seen = 0;
    reader.Seek(0);
    for (std::size_t i = 1; const TLogMsg* record = reader.Next(); ++i) {
        if (Fingerprint(*record) == cursor.fingerprint) seen = i;
    }
    reader.Seek(0);
    for (std::size_t i = 0; i < seen; ++i) reader.Next();
    return seen != 0;
}

}  // namespace

TLogCursor CursorAt(const TLogReader& reader, const TLogMsg& record) {
    return {reader.Place().number, Fingerprint(record)};
}

TLogResumed Resume(TLogReader& reader, const TLogCursor& cursor) {
    const std::uint64_t newest = reader.Header().counter;
    const bool numbered = cursor.number != 0 && reader.Header().version != 0;
    if (numbered && IsInPlace(reader, cursor)) return {};
    if (IsSomewhere(reader, cursor)) return {};
    TLogResumed resumed;
    resumed.made_anew = !numbered || newest < cursor.number;
    if (resumed.made_anew) return resumed;
    reader.Seek(cursor.number);
    const std::uint64_t number = reader.Next() == nullptr ? newest + 1 : reader.Place().number;
    // Another record has the cursor's number.
    resumed.made_anew = number == cursor.number;
    if (number > cursor.number) resumed.overwritten = number - cursor.number - 1;
    reader.Seek(resumed.made_anew ? 0 : cursor.number + 1);
    return resumed;
}

}  // namespace Mox
