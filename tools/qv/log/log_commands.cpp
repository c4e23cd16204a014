// qv log: the shared log file as a person reads it.
#include <cstdio>
#include <memory>

#include "commands.h"
#include "console.h"
#include "driver_global/installation.h"
#include "log_file/log_reader.h"
#include "mox_log/logger.h"

namespace qv {

namespace {

// Local time in ISO form, to the millisecond.
std::string LocalTime(const FILETIME& utc) {
    FILETIME local;
    SYSTEMTIME t;
    if (!FileTimeToLocalFileTime(&utc, &local) || !FileTimeToSystemTime(&local, &t))
        return "(no time)";
    char text[64];
    std::snprintf(text, sizeof(text), "%04u-%02u-%02uT%02u:%02u:%02u.%03u", unsigned{t.wYear},
                  unsigned{t.wMonth}, unsigned{t.wDay}, unsigned{t.wHour}, unsigned{t.wMinute},
                  unsigned{t.wSecond}, unsigned{t.wMilliseconds});
    return text;
}

std::string Level(int level) {
    return level >= 0x20 && level < 0x7F ? std::string(1, static_cast<char>(level)) : "?";
}

// "2026-01-31T09:00:00.000 X pid 12 thread 34 session 1 [source,56] text (label: hex)"
std::string RecordLine(const Mox::TLogMsg& record) {
    std::string line = LocalTime(record.time) + " " + Level(record.level) + " P" +
                       std::to_string(record.processId) + " T" + std::to_string(record.threadId) +
                       " S" + std::to_string(static_cast<int>(record.sessionId)) + " [" +
                       OneLine(record.source) + "," + std::to_string(record.line) + "] " +
                       OneLine(record.text.TrimRight());
    if (record.dataSize != 0) {
        const int bytes = record.dataSize < 0 ? -record.dataSize : record.dataSize;
        line += " (" + OneLine(record.dataLabel) + ": " +
                ToUtf8(Mox::GetHexEncoded(record.data, bytes)) + ")";
    }
    return line;
}

void ShowLog(const std::string& file) {
    const UnicodeString name = file.empty() ? GetPrinterLogFile() : FromUtf8(file);
    if (file.empty() && name == TEXT("Disabled")) throw Failure("the log file is switched off");
    Mox::TLogReader reader;
    if (!reader.Open(name))
        throw Failure("'" + OneLine(name) + "': " + OneLine(reader.Error().Trim()));
    while (const Mox::TLogMsg* record = reader.Next()) PrintLine(RecordLine(*record));
    for (int i = 0; i < reader.SkipCount(); ++i) {
        const Mox::TLogSkip& skip = reader.Skip(i);
        const std::string where = skip.size == 0 ? std::string()
                                                 : "skipped " + std::to_string(skip.size) +
                                                       " bytes at offset " +
                                                       std::to_string(skip.offset) + ": ";
        PrintError(where + OneLine(skip.reason));
    }
}

}  // namespace

void AddLogCommands(CLI::App& app) {
    CLI::App* log = app.add_subcommand("log", "The log that all modules of the product share");
    log->require_subcommand(1);
    CLI::App* show = log->add_subcommand("show", "Show every record, the oldest first");
    show->footer(
        "A line: local time, level, process, thread, session, [source,line], text, (label: data).\n"
        "Levels: X error, * warning, i information, blank trace, > the log itself.");
    auto file = std::make_shared<std::string>();
    show->add_option("FILE", *file, "The log file; without it the one in force");
    show->callback([file] { ShowLog(*file); });
}

}  // namespace qv
