#include "report/bundle.h"

#include <algorithm>
#include <optional>

#include "doctor/examination.h"
#include "driver_global/installation.h"
#include "log/log_save.h"
#include "log/record_line.h"
#include "log_file/log_image.h"
#include "report/contents.h"
#include "report/report_page.h"
#include "report/zip_writer.h"

namespace qv {

namespace {

using Kind = Redaction::Kind;

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

std::string Readme(const Contents& contents, const Redaction* redaction) {
    std::string text =
        "What `qv bundle` found on a machine with the fax printer.\n\n"
        "report.html               all of it as one page for a browser: open it first\n"
        "doctor.txt, doctor.json   versions, paths, registry values, printers, and what is wrong\n"
        "log.txt, log.jsonl        the records of the shared log, as text and as JSON lines, UTC\n"
        "log.raw                   the log as a file: `qv log show` reads it out of the archive\n"
        "settings/                 the current user's settings of each printer, as text\n";
    if (redaction == nullptr) {
        text +=
            "settings/*.bin            the settings blocks, byte for byte\n\n"
            "Names of users, machines and documents are in it. `qv bundle --redact` replaces "
            "them.\n";
    } else {
        text += "\nRedacted: the names of " + std::to_string(redaction->Count(Kind::kUser)) +
                " users, " + std::to_string(redaction->Count(Kind::kMachine)) + " machines and " +
                std::to_string(redaction->Count(Kind::kDocument)) +
                " documents are replaced, each by the\nsame placeholder everywhere (user-1, "
                "machine-1, document-1), in log.raw too. The data\nblocks of its records "
                "and the settings blocks are left out, since names in them cannot be\nreplaced. "
                "A name that stands nowhere as one is not recognised: look before you pass it "
                "on.\n";
    }
    for (const std::string& problem : contents.log_problems) text += "\nThe log: " + problem + "\n";
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
    Mox::TLogImage redacted;
    contents.ForEachRecord([&](const Mox::TLogMsg& record, std::size_t) {
        Mox::TLogMsg shown = redaction == nullptr ? record : Redacted(record, *redaction);
        if (redaction != nullptr && !redacted.Append(shown))
            throw Failure("the log is too large for an archive");
        plain.Add(text, shown);
        json.Add(lines, shown);
    });
    zip.Add("log.txt", text);
    zip.Add("log.jsonl", lines);
    if (contents.logs.logs.empty()) return;
    if (redaction == nullptr) return zip.Add("log.raw", ReadAll(ToUtf8(GetPrinterLogFile())));
    const std::vector<std::uint8_t>& bytes = redacted.Finish(kUsualLimit);
    zip.Add("log.raw", {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

void AddSettings(ZipWriter& zip, const Contents& contents) {
    int number = 0;
    for (const PrinterContents& printer : contents.printers) {
        const std::string name =
            "settings/" + std::to_string(++number) + "-" + FileName(printer.name);
        zip.Add(name + ".txt", printer.text);
        if (!printer.block.empty()) zip.Add(name + ".bin", printer.block);
    }
    if (!contents.printer_problem.empty())
        zip.Add("settings/none.txt", contents.printer_problem + "\n");
}

void AddHealth(ZipWriter& zip, const Json& examination) {
    Json document = {{"schema", kJsonSchema}};
    document.update(examination);
    zip.Add("doctor.txt", ExaminationText(examination));
    zip.Add("doctor.json", document.dump(2, ' ', false, Json::error_handler_t::replace) + "\n");
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
    zip.Add("report.html", ReportPage(contents, names, LogFilterOptions()));
    AddHealth(zip, *contents.examination);
    AddSettings(zip, contents);
    AddLog(zip, contents, names);
    WriteOutput(options.output, zip.Finish());
}

}  // namespace qv
