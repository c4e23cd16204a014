#include "report/contents.h"

#include <windows.h>

#include "base/host.h"
#include "doctor/examination.h"
#include "log/log_input.h"
#include "os_xp/user_name.h"
#include "settings/changes.h"
#include "settings/printer_settings.h"
#include "settings/settings_text.h"

namespace qv {

namespace {

using Kind = Redaction::Kind;

std::vector<Differing> DifferencesFrom(const SettingsBlock& defaults, const SettingsBlock& block) {
    std::vector<Differing> list;
    for (const FieldChange& change : Differences(defaults, block)) {
        if (!change.field->Listed) continue;
        list.push_back({NameOf(*change.field), Shown(change.after), Shown(change.before)});
    }
    return list;
}

// What the user's settings are, in every form.
void AddSettings(PrinterContents& contents, const Printer& printer) {
    const std::optional<SettingsBlock> block = ReadUserSettings(printer.name);
    const SettingsFinding finding = JudgeSettings(printer, block);
    contents.state = finding.state;
    contents.reasons = finding.reasons;
    if (!block) {
        contents.text = "The current user has no settings of this printer.\n";
        return;
    }
    contents.text = FormatSettings({printer.name, printer.driver, ::GetUserNameW(false)}, *block);
    contents.block.assign(reinterpret_cast<const char*>(&block->Block()),
                          static_cast<std::size_t>(block->Size()));
    if (block->IsProduct() && printer.IsProduct())
        contents.differences = DifferencesFrom(SettingsBlock(), *block);
}

PrinterContents ContentsOf(const Printer& printer) {
    PrinterContents contents;
    contents.name = ToUtf8(printer.name);
    contents.driver = ToUtf8(printer.driver);
    contents.port = ToUtf8(printer.port);
    try {
        AddSettings(contents, printer);
    } catch (const Failure& failure) {
        contents.state = "cannot be read";
        contents.reasons = {failure.what()};
        contents.text = std::string(failure.what()) + "\n";
    }
    return contents;
}

void GatherPrinters(Contents& contents) {
    try {
        const std::vector<Printer> printers = InstalledPrinters();
        Progress progress("printers read", printers.size());
        for (const Printer& printer : printers) {
            progress.Add();
            contents.printers.push_back(ContentsOf(printer));
        }
    } catch (const Failure& failure) {
        contents.printer_problem = failure.what();
    }
}

// The gaps in one line, and what is no matter of a certain place.
void AddDamage(std::vector<std::string>& problems, const LogSource& log) {
    const std::string name = OneLine(FromUtf8(log.name));
    std::uint64_t gaps = 0;
    for (const Mox::TLogSkip& skip : Skips(*log.reader)) {
        if (IsPlace(skip)) {
            ++gaps;
        } else {
            problems.push_back(name + ": " + SkipText(skip));
        }
    }
    if (gaps > 0) problems.push_back(name + ": " + "damaged, with " + Counted(gaps, "gap"));
    if (log.is_torn) problems.push_back(name + " did not come whole out of its archive");
}

}  // namespace

void Gather(Contents& contents) {
    contents.examination = Examine();
    GatherPrinters(contents);
    try {
        GatherLogs(contents, {});
    } catch (const Failure& failure) {
        contents.log_problems.emplace_back(failure.what());
    }
}

void GatherLogs(Contents& contents, const std::vector<std::string>& names) {
    contents.logs = OpenLogs(names);
    contents.ForEachRecord([](const Mox::TLogMsg&, std::size_t) {});
    for (const LogSource& log : contents.logs.logs) AddDamage(contents.log_problems, log);
}

Redaction LearnFrom(Contents& contents) {
    Redaction redaction;
    redaction.AddName(Kind::kUser, ToUtf8(::GetUserNameW(false)));
    const std::string machine = GetHostFacts().machine;
    redaction.AddName(Kind::kMachine, machine);
    redaction.AddName(Kind::kMachine, machine.substr(0, machine.find('.')));
    if (contents.examination) {
        ForEachText(*contents.examination,
                    [&](const Json& text) { redaction.Learn(text.get_ref<const std::string&>()); });
    }
    for (const PrinterContents& printer : contents.printers) redaction.Learn(printer.text);
    for (const LogSource& log : contents.logs.logs) redaction.Learn(log.name);
    contents.ForEachRecord(
        [&](const Mox::TLogMsg& record, std::size_t) { redaction.Learn(ToUtf8(record.text)); });
    return redaction;
}

void Redact(Contents& contents, const Redaction& redaction) {
    const auto redact = [&](std::string& text) { text = redaction.Apply(text); };
    if (contents.examination) Redact(*contents.examination, redaction);
    for (PrinterContents& printer : contents.printers) {
        for (std::string* text : {&printer.name, &printer.driver, &printer.port, &printer.text})
            redact(*text);
        for (std::string& reason : printer.reasons) redact(reason);
        printer.block.clear();
        if (!printer.differences) continue;
        for (Differing& differing : *printer.differences) {
            redact(differing.value);
            redact(differing.usual);
        }
    }
    redact(contents.printer_problem);
    for (LogSource& log : contents.logs.logs) redact(log.name);
    for (std::string& problem : contents.log_problems) redact(problem);
}

void Redact(Json& value, const Redaction& redaction) {
    ForEachText(value,
                [&](Json& text) { text = redaction.Apply(text.get_ref<const std::string&>()); });
}

}  // namespace qv
