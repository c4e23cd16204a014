// The state of the log file in force.
#include <windows.h>

#include "base/files.h"
#include "base/host.h"
#include "doctor/examination.h"
#include "driver_global/installation.h"
#include "log/log_filter.h"
#include "log/log_input.h"
#include "log/log_time.h"
#include "log_file/log_reader.h"
#include "mox_classes/containers/streams.h"
#include "mox_classes/text/sysutils.h"

namespace qv {

namespace {

long long SizeOf(const UnicodeString& file) {
    return Classes::TFileStream(file, kSharedRead).GetSize();
}

void AddLock(Json& section, const UnicodeString& file, Problems& problems) {
    if (!IsLockStuck(file)) return;
    const std::string holders = LockHolders(file);
    section["lock"] = "held by " + holders;
    problems.push_back("the log's lock has been held for more than a second by " + holders +
                       ", and whatever logs waits: let that process go on when it was stopped "
                       "(debugger, SIGSTOP), or end it");
}

void AddRecords(Json& section, Mox::TLogReader& reader, Problems& problems) {
    int records = 0;
    std::string oldest;
    std::string newest;
    while (const Mox::TLogMsg* record = reader.Next()) {
        newest = UtcText(TimeOf(*record));
        if (records++ == 0) oldest = newest;
    }
    section["records"] = records;
    if (reader.Missing() > 0) {
        section["missing"] = reader.Missing();
        problems.push_back("the log: " + MissingText(reader.Missing()));
    }
    if (records > 0) section.update({{"oldest", oldest}, {"newest", newest}});
    // While others write, a copy may be torn: that is no damage.
    if (reader.SkipCount() == 0 || reader.Copy() == Mox::TLogCopy::Changed) return;
    section["state"] = "damaged";
    constexpr int kMostShown = 20;
    Json damage = Json::array();
    for (int i = 0; i < reader.SkipCount() && i < kMostShown; ++i)
        damage.push_back(SkipText(reader.Skip(i)));
    section["damage"] = damage;
    problems.push_back("the log file is damaged in " + std::to_string(reader.SkipCount()) +
                       " places: `qv log verify` says more");
}

}  // namespace

Json ExamineLog(Problems& problems) {
    const UnicodeString file = GetPrinterLogFile();
    Json section = {{"file", OneLine(file)}};
    if (file == kLogFileOff) {
        section["state"] = "switched off";
        return section;
    }
    const auto fail = [&](const char* state, const std::string& reason) {
        section["state"] = state;
        section["reason"] = reason;
        problems.push_back("the log file '" + OneLine(file) + "' " + state + ": " + reason);
        return section;
    };
    if (!Sysutils::FileExists(file)) {
        section["state"] = "not made yet";
        return section;
    }
    Mox::TLogReader reader;
    const bool open = reader.Open(file);
    if (!open || reader.Copy() != Mox::TLogCopy::Locked) AddLock(section, file, problems);
    if (!open) return fail("cannot be read", OneLine(reader.Error().Trim()));
    section["state"] = "good";
    try {
        section["bytes"] = SizeOf(file);
    } catch (const UnicodeString& reason) {
        return fail("cannot be read", OneLine(reason.Trim()));
    }
    AddRecords(section, reader, problems);
    return section;
}

}  // namespace qv
