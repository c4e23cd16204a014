// What support needs to know of a machine: its health, the printers with their settings, the log.
#pragma once

#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "base/json_output.h"
#include "base/progress.h"
#include "log/log_merge.h"
#include "log/log_sources.h"
#include "report/redaction.h"

namespace qv {

// A field of the settings with another value than the default.
struct Differing {
    std::string name, value, usual;

    bool operator<(const Differing& other) const {
        return std::tie(name, value, usual) < std::tie(other.name, other.value, other.usual);
    }
};

struct PrinterContents {
    std::string name, driver, port;
    std::string state;                 // of the user's settings
    std::vector<std::string> reasons;  // of a state that is not good
    std::string text;                  // the settings as text, or why there is none
    std::string block;                 // empty when there is none
    std::optional<std::vector<Differing>> differences;  // from the defaults, if compared
};

struct Contents {
    std::optional<Json> examination;  // none when only logs are looked at
    std::vector<PrinterContents> printers;
    std::string printer_problem;            // why they are not known
    LogSources logs;                        // one, but for the page of logs alone
    std::vector<std::string> log_problems;  // why there is none, or not all of it

    // Calls visit(record, log) for every record of the copies that were made of the logs, by time;
    // `log` is its place among them.
    template <class Visit>
    void ForEachRecord(const Visit& visit) {
        Progress progress("records");
        for (LogSource& log : logs.logs) log.reader->Seek(0);
        LogMerge merge(logs.logs);
        while (const Mox::TLogMsg* record = merge.Next()) {
            progress.Add();
            visit(*record, merge.Log());
        }
    }
};

// This machine with the log in force.
void Gather(Contents& contents);
// Logs alone; the one in force when there are no names. Throws Failure (kCannotOpen).
void GatherLogs(Contents& contents, const std::vector<std::string>& names);

// Calls visit(text) for every text below a value.
template <class Value, class Visit>
void ForEachText(Value& value, const Visit& visit) {
    if (value.is_string()) visit(value);
    if (value.is_structured())
        for (auto& below : value) ForEachText(below, visit);
}

// The names in all of it.
Redaction LearnFrom(Contents& contents);
// Replaces the names in all but the log, and leaves out the blocks.
void Redact(Contents& contents, const Redaction& redaction);
void Redact(Json& value, const Redaction& redaction);

}  // namespace qv
