#include "log/log_verify.h"

#include "base/json_output.h"
#include "base/progress.h"
#include "log/log_input.h"
#include "log/log_sources.h"

namespace qv {

namespace {

std::uint64_t CountRecords(Mox::TLogReader& reader) {
    Progress progress("records");
    std::uint64_t count = 0;
    for (; reader.Next() != nullptr; ++count) progress.Add();
    return count;
}

// A record may look damaged only because a writer was in the middle of it.
void RefuseMixedCopy(const Mox::TLogReader& reader) {
    if (reader.Copy() != Mox::TLogCopy::Changed || reader.SkipCount() == 0) return;
    throw Failure("the log changed each time while it was read; try again");
}

bool IsSound(const LogSource& log) {
    return !log.is_torn && log.reader->SkipCount() == 0;
}

void PrintText(const LogSource& log, std::uint64_t records) {
    const std::string file = OneLine(FromUtf8(log.name));
    for (const Mox::TLogSkip& skip : Skips(*log.reader)) {
        const std::string place = IsPlace(skip) ? ": offset " + std::to_string(skip.offset) + ", " +
                                                      std::to_string(skip.size) + " bytes"
                                                : std::string();
        PrintLine(file + place + ": " + OneLine(skip.reason));
    }
    PrintLine(file + ": " + Counted(records, "record") +
              (IsSound(log) ? ", sound" : " can be read"));
}

void PrintAsJson(const LogSource& log, std::uint64_t records) {
    Json body;
    body["file"] = log.name;
    body["sound"] = IsSound(log);
    body["records"] = records;
    body["damage"] = DamageList(Skips(*log.reader));
    PrintJson(body);
}

}  // namespace

void VerifyLog(const std::string& file, bool json) {
    const LogSource log = OpenOneLog(file);
    const std::uint64_t records = CountRecords(*log.reader);
    RefuseMixedCopy(*log.reader);
    json ? PrintAsJson(log, records) : PrintText(log, records);
    if (!IsSound(log)) throw Failure("", ExitCode::kDamaged);
}

}  // namespace qv
