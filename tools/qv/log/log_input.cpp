#include "log/log_input.h"

#include "base/files.h"
#include "base/host.h"
#include "driver_global/installation.h"
#include "mox_classes/containers/streams.h"

namespace qv {

namespace {

// Of a log that others write all the time, the copy may be one of several moments.
constexpr int kAttempts = 5;

// Takes what can be read when the reader has refused the log.
void StartAnyway(Mox::TLogReader& reader, const std::string& name) {
    const UnicodeString error = reader.Error();
    if (reader.StartWithoutHeader()) return;
    CannotOpenLog(name, error);
}

// Without the lock: only whether they change matters. Empty while there is no file.
std::string HeaderBytes(const UnicodeString& name) {
    std::string bytes(Mox::kHeaderSize, '\0');
    try {
        Classes::TFileStream file(name, kSharedRead);
        const int size = file.Read(bytes.data(), static_cast<int>(bytes.size()));
        bytes.resize(static_cast<std::size_t>(size));
        return bytes;
    } catch (const UnicodeString&) {
        return std::string();
    }
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

void CannotOpenLog(const std::string& name, const UnicodeString& reason) {
    CheckFileName(name);
    // Whoever was to replace the pattern found nothing; the system only says that it is no name.
    const bool is_pattern = name.find_first_of("*?") != std::string::npos &&
                            FindFile(FromUtf8(name)).kind == FileKind::kNone;
    CannotOpen(name, is_pattern ? UnicodeString(TEXT("no file has such a name")) : reason);
}

void OpenLog(Mox::TLogReader& reader, const std::string& name) {
    bool open = false;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        open = reader.Open(FromUtf8(name));
        if (reader.Copy() != Mox::TLogCopy::Changed) break;
    }
    if (!open) StartAnyway(reader, name);
}

void TakeLog(Mox::TLogReader& reader, const std::string& name, const std::string& bytes) {
    if (!reader.Assign(bytes.data(), bytes.size())) StartAnyway(reader, name);
}

bool IsLockStuck(const UnicodeString& name) {
    constexpr int kTries = 100;
    constexpr DWORD kPause = 10;  // milliseconds
    const std::string before = HeaderBytes(name);
    try {
        const Classes::TFileStream file(name, kSharedRead);
        for (int i = 0; i < kTries; ++i) {
            if (LockFile(file.GetHandle(), 0, 0, Mox::kHeaderSize, 0)) {
                UnlockFile(file.GetHandle(), 0, 0, Mox::kHeaderSize, 0);
                return false;
            }
            if (GetLastError() != ERROR_LOCK_VIOLATION) return false;
            Sleep(kPause);
        }
    } catch (const UnicodeString&) {
        return false;
    }
    return HeaderBytes(name) == before;
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

std::string MissingText(std::uint32_t bytes) {
    return "the file is " + std::to_string(bytes) +
           " bytes shorter than its ring: the records there are lost, because the disk was full or "
           "the file was cut";
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
