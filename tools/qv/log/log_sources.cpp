#include "log/log_sources.h"

#include <windows.h>

#include <algorithm>
#include <iterator>

#include "base/files.h"
#include "base/host.h"
#include "base/zip_reader.h"
#include "log/log_input.h"
#include "mox_classes/containers/streams.h"

namespace qv {

namespace {

// Says what cannot be read. The worst code is the highest one.
void Tell(LogSources& sources, const std::string& text, ExitCode code) {
    PrintError(text);
    sources.worst = std::max(sources.worst, code);
}

void AddEntry(LogSources& sources, const std::string& name, const ZipReader::Entry& entry) {
    const ZipReader::Content content = ZipReader::Read(entry);
    const bool is_torn = !content.fault.empty();
    if (is_torn) Tell(sources, Quoted(name) + ": " + content.fault, ExitCode::kDamaged);
    if (content.bytes.empty()) return;
    auto reader = std::make_unique<Mox::TLogReader>();
    if (reader->Assign(content.bytes.data(), content.bytes.size()) || reader->StartWithoutHeader())
        sources.logs.push_back({name, is_torn, std::move(reader)});
}

// `wanted` names one entry, or the archive as a whole.
void AddArchive(LogSources& sources, const std::string& name, const std::string& bytes,
                const std::string& wanted) {
    const std::size_t before = sources.logs.size();
    try {
        const ZipReader archive(bytes);
        for (const ZipReader::Entry& entry : archive.Entries()) {
            const std::string entry_name = name + ":" + ToUtf8(FromUtf8(entry.name));
            if (wanted == name || wanted == entry_name) AddEntry(sources, entry_name, entry);
        }
    } catch (const Failure& failure) {
        throw Failure(Quoted(name) + ": " + failure.what(), failure.Code());
    }
    if (sources.logs.size() == before) {
        throw Failure(Quoted(wanted) + (wanted == name ? ": the archive holds no log"
                                                       : ": the archive holds no such log"),
                      ExitCode::kCannotOpen);
    }
}

// Of "C.zip:log.raw" the archive; of the name of a file that exists, and of any other, the name.
std::string ArchiveOf(const std::string& name) {
    if (GetFileAttributesW(FromUtf8(name).t_str()) != INVALID_FILE_ATTRIBUTES) return name;
    for (std::size_t at = name.find(':'); at != std::string::npos; at = name.find(':', at + 1))
        if (IsArchive(name.substr(0, at))) return name.substr(0, at);
    return name;
}

void AddFile(LogSources& sources, const std::string& name) {
    const bool is_stream = IsStream(name);
    const std::string archive = is_stream ? name : ArchiveOf(name);
    const std::string bytes = is_stream || IsArchive(archive) ? ReadAll(archive) : std::string();
    if (ZipReader::IsZip(bytes)) return AddArchive(sources, archive, bytes, name);
    auto reader = std::make_unique<Mox::TLogReader>();
    is_stream ? TakeLog(*reader, name, bytes) : OpenLog(*reader, name);
    sources.logs.push_back({name, false, std::move(reader)});
}

// Whether anything of the log was left out. Says what, each line beginning with `who`.
bool TellSkips(const LogSource& log, const std::string& who) {
    for (const Mox::TLogSkip& skip : Skips(*log.reader)) PrintError(who + SkipText(skip));
    return log.is_torn || log.reader->SkipCount() > 0;
}

}  // namespace

LogSources OpenLogs(const std::vector<std::string>& names) {
    LogSources sources;
    std::vector<std::string> files;
    for (const std::string& name : names)
        std::ranges::move(FilesNamed(name), std::back_inserter(files));
    if (files.size() <= 1) {
        AddFile(sources, LogName(files.empty() ? std::string() : files[0]));
        return sources;
    }
    for (const std::string& file : files) {
        try {
            AddFile(sources, LogName(file));
        } catch (const Failure& failure) {
            Tell(sources, failure.what(), failure.Code());
        }
    }
    if (sources.logs.empty()) throw Failure("", ExitCode::kCannotOpen);
    return sources;
}

LogSource OpenOneLog(const std::string& file) {
    LogSources sources = OpenLogs({file});
    if (sources.logs.size() == 1) return std::move(sources.logs[0]);
    std::string names;
    for (const LogSource& log : sources.logs)
        names += (names.empty() ? "" : ", ") + Quoted(log.name);
    throw Failure("this command takes one log: " + names, ExitCode::kWrongUsage);
}

bool IsStream(const std::string& name) {
    return name == kStandardStream || FindFile(FromUtf8(name)).kind == FileKind::kStream;
}

bool IsArchive(const std::string& name) {
    constexpr int kSignature = 4;
    if (IsStream(name)) return false;
    try {
        char head[kSignature];
        const int size = Classes::TFileStream(FromUtf8(name), kSharedRead).Read(head, kSignature);
        return ZipReader::IsZip({head, static_cast<std::size_t>(size)});
    } catch (const UnicodeString&) {
        return false;
    }
}

void FailOnDamage(const LogSources& sources) {
    ExitCode worst = sources.worst;
    for (const LogSource& log : sources.logs) {
        const std::string who =
            sources.logs.size() > 1 ? OneLine(FromUtf8(log.name)) + ": " : std::string();
        if (TellSkips(log, who)) worst = std::max(worst, ExitCode::kDamaged);
    }
    if (worst != ExitCode::kDone) throw Failure("", worst);
}

void FailOnDamage(const LogSource& log) {
    FailOnSkips(*log.reader);
    if (log.is_torn) throw Failure("", ExitCode::kDamaged);
}

}  // namespace qv
