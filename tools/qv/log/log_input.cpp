#include "log/log_input.h"

#include "base/files.h"
#include "driver_global/installation.h"

namespace qv {

namespace {

// Of a log that others write all the time, the copy may be one of several moments.
constexpr int kAttempts = 5;

bool Open(Mox::TLogReader& reader, const std::string& name) {
    if (name == kStandardStream) {
        const std::string bytes = ReadAll(name);
        return reader.Assign(bytes.data(), bytes.size());
    }
    bool open = false;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        open = reader.Open(FromUtf8(name));
        if (reader.Copy() != Mox::TLogCopy::Changed) break;
    }
    return open;
}

}  // namespace

std::string LogName(const std::string& file) {
    if (!file.empty()) return file;
    const UnicodeString name = GetPrinterLogFile();
    if (name == TEXT("Disabled")) {
        throw Failure(
            "the log is switched off: the registry value Logfile of the product is \"Disabled\"; "
            "name a file to look at one",
            ExitCode::kCannotOpen);
    }
    return ToUtf8(name);
}

void OpenLog(Mox::TLogReader& reader, const std::string& name) {
    if (Open(reader, name)) return;
    const UnicodeString error = reader.Error();
    if (reader.StartWithoutHeader()) return;
    throw Failure("'" + OneLine(FromUtf8(name)) + "': " + OneLine(error.Trim()),
                  ExitCode::kCannotOpen);
}

bool IsPlace(const Mox::TLogSkip& skip) {
    return skip.offset != 0 || skip.size != 0;
}

std::string SkipText(const Mox::TLogSkip& skip) {
    const std::string where = IsPlace(skip)
                                  ? "skipped " + std::to_string(skip.size) + " bytes at offset " +
                                        std::to_string(skip.offset) + ": "
                                  : std::string();
    return where + OneLine(skip.reason);
}

std::vector<Mox::TLogSkip> Skips(const Mox::TLogReader& reader) {
    std::vector<Mox::TLogSkip> skips;
    skips.reserve(static_cast<std::size_t>(reader.SkipCount()));
    for (int i = 0; i < reader.SkipCount(); ++i) skips.push_back(reader.Skip(i));
    return skips;
}

Json DamageList(const std::vector<Mox::TLogSkip>& skips) {
    Json list = Json::array();
    for (const Mox::TLogSkip& skip : skips) {
        list.push_back(
            {{"offset", skip.offset}, {"size", skip.size}, {"reason", Text(skip.reason)}});
    }
    return list;
}

void FailOnSkips(const Mox::TLogReader& reader) {
    for (const Mox::TLogSkip& skip : Skips(reader)) PrintError(SkipText(skip));
    if (reader.SkipCount() > 0) throw Failure("", ExitCode::kDamaged);
}

}  // namespace qv
