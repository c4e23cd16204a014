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

// Records of a log whose header cannot be believed have no numbers.
TLogResumed ResumeByFingerprint(TLogReader& reader, const TLogCursor& cursor) {
    std::size_t seen = 0;
    for (std::size_t i = 1; const TLogMsg* record = reader.Next(); ++i) {
        if (Fingerprint(*record) == cursor.fingerprint) seen = i;
    }
    reader.Seek(0);
    for (std::size_t i = 0; i < seen; ++i) reader.Next();
    return {seen == 0, 0};
}

}  // namespace

TLogCursor CursorAt(const TLogReader& reader, const TLogMsg& record) {
    return {reader.Place().number, Fingerprint(record)};
}

TLogResumed Resume(TLogReader& reader, const TLogCursor& cursor) {
    const bool numbered = cursor.number != 0 && reader.Header().version != 0;
    if (!numbered) return ResumeByFingerprint(reader, cursor);
    TLogResumed resumed;
    const std::uint64_t newest = reader.Header().counter;
    reader.Seek(cursor.number);
    const TLogMsg* const record = reader.Next();
    const std::uint64_t number = record == nullptr ? newest + 1 : reader.Place().number;
    const bool same_place = record != nullptr && number == cursor.number;
    resumed.made_anew =
        newest < cursor.number || (same_place && Fingerprint(*record) != cursor.fingerprint);
    if (!resumed.made_anew && number > cursor.number + 1)
        resumed.overwritten = number - cursor.number - 1;
    reader.Seek(resumed.made_anew ? 0 : cursor.number + 1);
    return resumed;
}

}  // namespace Mox
