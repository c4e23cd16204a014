#include "log/log_verify.h"

#include "base/json_output.h"
#include "base/progress.h"
#include "log/log_input.h"

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

void PrintText(const std::string& name, std::uint64_t records, const Mox::TLogReader& reader) {
    const std::string file = OneLine(FromUtf8(name));
    for (const Mox::TLogSkip& skip : Skips(reader)) {
        const std::string place = IsPlace(skip) ? ": offset " + std::to_string(skip.offset) + ", " +
                                                      std::to_string(skip.size) + " bytes"
                                                : std::string();
        PrintLine(file + place + ": " + OneLine(skip.reason));
    }
    const bool sound = reader.SkipCount() == 0;
    PrintLine(file + ": " + Counted(records, "record") + (sound ? ", sound" : " can be read"));
}

void PrintAsJson(const std::string& name, std::uint64_t records, const Mox::TLogReader& reader) {
    Json body;
    body["file"] = name;
    body["sound"] = reader.SkipCount() == 0;
    body["records"] = records;
    body["damage"] = DamageList(Skips(reader));
    PrintJson(body);
}

}  // namespace

void VerifyLog(const std::string& file, bool json) {
    const std::string name = LogName(file);
    Mox::TLogReader reader;
    OpenLog(reader, name);
    const std::uint64_t records = CountRecords(reader);
    RefuseMixedCopy(reader);
    json ? PrintAsJson(name, records, reader) : PrintText(name, records, reader);
    if (reader.SkipCount() > 0) throw Failure("", ExitCode::kDamaged);
}

}  // namespace qv
