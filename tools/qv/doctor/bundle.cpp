#include "doctor/bundle.h"

#include <windows.h>

#include <algorithm>
#include <optional>

#include "base/host.h"
#include "base/progress.h"
#include "doctor/examination.h"
#include "doctor/redaction.h"
#include "doctor/zip_writer.h"
#include "driver_global/installation.h"
#include "log/log_input.h"
#include "log/record_line.h"
#include "os_xp/user_name.h"
#include "settings/printer_settings.h"
#include "settings/settings_text.h"

namespace qv {

namespace {

using Kind = Redaction::Kind;

struct PrinterFile {
    std::string name;  // of the file, without its extension
    std::string text;
    std::string block;  // empty when there is none
};

// What goes into the archive, before it becomes text.
struct Contents {
    Json examination;
    std::vector<PrinterFile> printers;
    Mox::TLogReader log;
    bool has_log = false;
    std::string log_problem;  // why there is none, or not all of it
};

// A name that is part of a file's name on every system.
std::string FileName(const std::string& name) {
    constexpr std::size_t kMost = 60;
    std::string result = name.substr(0, kMost);
    std::replace_if(
        result.begin(), result.end(),
        [](char c) {
            return !((c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                     c == '-' || c == '_');
        },
        '_');
    return result;
}

PrinterFile SettingsOf(const Printer& printer, int number) {
    PrinterFile file{"settings/" + std::to_string(number) + "-" + ToUtf8(printer.name), "", ""};
    try {
        const std::optional<SettingsBlock> block = ReadUserSettings(printer.name);
        if (!block) {
            file.text = "The current user has no settings of this printer.\n";
            return file;
        }
        file.text = FormatSettings({printer.name, printer.driver, ::GetUserNameW(false)}, *block);
        file.block.assign(reinterpret_cast<const char*>(&block->Block()),
                          static_cast<std::size_t>(block->Size()));
    } catch (const Failure& failure) {
        file.text = std::string(failure.what()) + "\n";
    }
    return file;
}

// Calls visit(record) for every record of the copy that was made of the log.
template <class Visit>
void ForEachRecord(Contents& contents, const Visit& visit) {
    if (!contents.has_log) return;
    Progress progress("records");
    contents.log.Seek(0);
    while (const Mox::TLogMsg* record = contents.log.Next()) {
        progress.Add();
        visit(*record);
    }
}

void GatherLog(Contents& contents) {
    try {
        OpenLog(contents.log, LogName(""));
        contents.has_log = true;
    } catch (const Failure& failure) {
        contents.log_problem = failure.what();
    }
    ForEachRecord(contents, [](const Mox::TLogMsg&) {});
    const int skips = contents.log.SkipCount();
    if (contents.has_log && skips > 0)
        contents.log_problem =
            "damaged in " + std::to_string(skips) + " places, which are left out";
}

void Gather(Contents& contents) {
    contents.examination = Examine();
    try {
        const std::vector<Printer> printers = InstalledPrinters();
        Progress progress("printers read", printers.size());
        int number = 0;
        for (const Printer& printer : printers) {
            progress.Add();
            contents.printers.push_back(SettingsOf(printer, ++number));
        }
    } catch (const Failure& failure) {
        contents.printers.push_back({"settings/none", std::string(failure.what()) + "\n", ""});
    }
    GatherLog(contents);
}

// Calls visit(text) for every text below a value.
template <class Value, class Visit>
void ForEachText(Value& value, const Visit& visit) {
    if (value.is_string()) visit(value);
    if (value.is_structured())
        for (auto& below : value) ForEachText(below, visit);
}

Redaction LearnFrom(Contents& contents) {
    Redaction redaction;
    redaction.AddName(Kind::kUser, ToUtf8(::GetUserNameW(false)));
    const std::string machine = GetHostFacts().machine;
    redaction.AddName(Kind::kMachine, machine);
    redaction.AddName(Kind::kMachine, machine.substr(0, machine.find('.')));
    ForEachText(contents.examination,
                [&](const Json& text) { redaction.Learn(text.get_ref<const std::string&>()); });
    for (const PrinterFile& file : contents.printers) redaction.Learn(file.text);
    ForEachRecord(contents,
                  [&](const Mox::TLogMsg& record) { redaction.Learn(ToUtf8(record.text)); });
    return redaction;
}

void Redact(Contents& contents, const Redaction& redaction) {
    ForEachText(contents.examination,
                [&](Json& text) { text = redaction.Apply(text.get_ref<const std::string&>()); });
    for (PrinterFile& file : contents.printers) {
        file.name = redaction.Apply(file.name);
        file.text = redaction.Apply(file.text);
        file.block.clear();
    }
    contents.log_problem = redaction.Apply(contents.log_problem);
}

std::string Readme(const Contents& contents, const Redaction* redaction) {
    std::string text =
        "What `qv bundle` found on a machine with the fax printer.\n\n"
        "doctor.txt, doctor.json   versions, paths, registry values, printers, and what is wrong\n"
        "log.txt, log.jsonl        the records of the shared log, as text and as JSON lines, UTC\n"
        "settings/                 the current user's settings of each printer, as text\n";
    if (redaction == nullptr) {
        text +=
            "log.raw                   the log file as it lay there\n"
            "settings/*.bin            the settings blocks, byte for byte\n\n"
            "Names of users, machines and documents are in it. `qv bundle --redact` replaces "
            "them.\n";
    } else {
        text += "\nRedacted: the names of " + std::to_string(redaction->Count(Kind::kUser)) +
                " users, " + std::to_string(redaction->Count(Kind::kMachine)) + " machines and " +
                std::to_string(redaction->Count(Kind::kDocument)) +
                " documents are replaced, each by the\nsame placeholder everywhere (user-1, "
                "machine-1, document-1). The log file itself, the data\nblocks of its records "
                "and the settings blocks are left out, since names in them cannot be\nreplaced. "
                "A name that stands nowhere as one is not recognised: look before you pass it "
                "on.\n";
    }
    if (!contents.log_problem.empty()) text += "\nThe log: " + contents.log_problem + "\n";
    return text;
}

// The record without the names, and without its data. Texts alone are owned by the copy.
Mox::TLogMsg Redacted(const Mox::TLogMsg& record, const Redaction& redaction) {
    const auto apply = [&](const UnicodeString& text) {
        return FromUtf8(redaction.Apply(ToUtf8(text)));
    };
    Mox::TLogMsg copy = record;
    copy.source = apply(record.source);
    copy.text = apply(record.text);
    copy.dataLabel = apply(record.dataLabel);
    copy.data = nullptr;
    copy.dataSize = 0;
    return copy;
}

void AddLog(ZipWriter& zip, Contents& contents, const Redaction* redaction) {
    std::string text;
    std::string lines;
    LogLines plain({.utc = true});
    LogLines json({.shape = LogStyle::Shape::kJson});
    ForEachRecord(contents, [&](const Mox::TLogMsg& record) {
        const Mox::TLogMsg shown = redaction == nullptr ? record : Redacted(record, *redaction);
        plain.Add(text, shown);
        json.Add(lines, shown);
    });
    zip.Add("log.txt", text);
    zip.Add("log.jsonl", lines);
    if (redaction == nullptr && contents.has_log)
        zip.Add("log.raw", ReadAll(ToUtf8(GetPrinterLogFile())));
}

void AddFiles(ZipWriter& zip, const Contents& contents) {
    Json document = {{"schema", kJsonSchema}};
    document.update(contents.examination);
    zip.Add("doctor.txt", ExaminationText(contents.examination));
    zip.Add("doctor.json", document.dump(2, ' ', false, Json::error_handler_t::replace) + "\n");
    for (const PrinterFile& file : contents.printers) {
        const std::string name = "settings/" + FileName(file.name.substr(file.name.find('/') + 1));
        zip.Add(name + ".txt", file.text);
        if (!file.block.empty()) zip.Add(name + ".bin", file.block);
    }
}

}  // namespace

void WriteBundle(const BundleOptions& options) {
    RefuseExisting(options.output);
    Contents contents;
    Gather(contents);
    std::optional<Redaction> redaction;
    if (options.redact) {
        redaction = LearnFrom(contents);
        Redact(contents, *redaction);
    }
    const Redaction* const names = redaction ? &*redaction : nullptr;
    ZipWriter zip;
    zip.Add("README.txt", Readme(contents, names));
    AddFiles(zip, contents);
    AddLog(zip, contents, names);
    WriteOutput(options.output, zip.Finish());
}

}  // namespace qv
