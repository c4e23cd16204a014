// qv devmode, qv job, qv defaults: settings blocks and job records as bytes, and a printer's
// defaults.
#include <algorithm>
#include <memory>
#include <vector>

#include "commands.h"
#include "driver_devmode/default_settings.h"
#include "driver_devmode/qvdm.h"
#include "driver_global/diagnostic_text.h"
#include "events/sample_job.h"
#include "files.h"
#include "mox_classes/sysutils.h"
#include "mox_log/sys_error.h"
#include "printer_query/job_record.h"
#include "printer_query/spooler.h"

namespace qv {

namespace {

std::string BlockOf(const std::string& source) {
    const UnicodeString name = FromUtf8(source);
    if (Sysutils::FileExists(name)) return ReadAll(source);
    auto settings = GetGlobalDevMode(name);
    if (!settings.IsSuccess()) {
        throw Failure("neither a file nor a printer: '" + source + "' " +
                      OneLine(Mox::GetSysError(settings.GetErrorCode(), true).Trim()));
    }
    if (settings.IsEmpty())
        throw Failure("'" + source + "' has no settings of the current user yet");
    const auto* bytes = reinterpret_cast<const char*>(&settings[0]);
    return {bytes, bytes + settings.Size()};
}

// Why a block of `size` bytes is not one of this driver, or what in it is wrong; empty when all is
// well.
std::vector<std::string> Complaints(QV_DEVMODE& block, int size) {
    if (size < QV_DEVMODE::Size()) {
        return {"the block has " + std::to_string(size) + " bytes, not " +
                std::to_string(QV_DEVMODE::Size())};
    }
    std::vector<std::string> found;
    if (block.dmSize != QV_DEVMODE_EXTRA::kPublicSize) {
        found.push_back("dmSize is " + std::to_string(block.dmSize) + ", not 220");
    }
    if (block.dmDriverExtra < QV_DEVMODE_EXTRA::kExtraSize) {
        found.push_back("dmDriverExtra is " + std::to_string(block.dmDriverExtra) + ", below 4180");
    }
    if (std::string(block.exID, sizeof(block.exID)) !=
        std::string("QV DEVMODEex", sizeof(block.exID))) {
        found.emplace_back("exID is not the product's identifier");
    }
    if (block.exVersion < QV_DEVMODE_EXTRA::kOldestVersion) {
        found.push_back("exVersion is " + std::to_string(block.exVersion) + ", below 261");
    }
    TQVDM reader(&block);
    UnicodeString text;
    const struct {
        const char* name;
        short offset;
    } strings[] = {{"exOut.Directory", block.exOut.DirectoryOffset},
                   {"exOut.FileName", block.exOut.FileNameOffset},
                   {"exRun.Target", block.exRun.TargetOffset}};
    for (const auto& s : strings) {
        if (!reader.ReadString(text, s.offset)) {
            found.push_back(std::string(s.name) + " has the offset " + std::to_string(s.offset) +
                            ", where no string ends inside the pool");
        }
    }
    return found;
}

void ShowBlock(const std::string& source) {
    std::string bytes = BlockOf(source);
    const int size = static_cast<int>(bytes.size());
    // Room for a whole block, so that the fields that a short one has can be looked at.
    bytes.resize(std::max<std::size_t>(bytes.size(), sizeof(QV_DEVMODE)));
    auto& block = *static_cast<QV_DEVMODE*>(reinterpret_cast<DEVMODEW*>(bytes.data()));
    const std::vector<std::string> complaints = Complaints(block, size);
    PrintLine(ToUtf8(TQVDM(&block).ToString(TEXT("\n"), 0)));
    std::string text;
    for (const std::string& complaint : complaints)
        text += (text.empty() ? "" : "\nqv: ") + complaint;
    if (!text.empty()) throw Failure(text);
}

void EncodeJob(const std::string& file, const JobOptions& options) {
    SampleJob job(options);
    auto block = EncodeJobInfo2(&job.Record());
    const auto* bytes = reinterpret_cast<const char*>(&block[0]);
    WriteAll(file, {bytes, bytes + block.Size()});
}

void DecodeJob(const std::string& file) {
    const std::string bytes = ReadAll(file);
    auto job = DecodeJobInfo2(bytes.data(), static_cast<int>(bytes.size()));
    if (!job.IsSuccess()) {
        throw Failure("'" + file + "' is no job record: " +
                      OneLine(Mox::GetSysError(job.GetErrorCode(), true).Trim()));
    }
    PrintLine(OneLine(TextTypeJOB_INFO_2(&job[0]).TrimRight()));
}

struct DefaultsOptions {
    std::string printer, directory, file_name, program, parameters, message, window, format;
    bool silent = false, run = false, serial = false, document_name = false;
};

void SetDefaults(const DefaultsOptions& o) {
    const int done = SetQVDefaultSetting(
        FromUtf8(o.printer).t_str(), o.silent ? 1 : 0, o.run ? 1 : 0, o.serial ? 1 : 0,
        o.document_name ? 1 : 0, FromUtf8(o.directory).t_str(), FromUtf8(o.file_name).t_str(),
        FromUtf8(o.program).t_str(), FromUtf8(o.parameters).t_str(), FromUtf8(o.message).t_str(),
        FromUtf8(o.window).t_str(), FromUtf8(o.format).t_str());
    if (done != 1) {
        throw Failure("the defaults of '" + o.printer +
                      "' cannot be set: no such printer, no block of the product, or texts that "
                      "are too long; "
                      "the log says more");
    }
}

void AddDefaultsCommand(CLI::App& app) {
    auto options = std::make_shared<DefaultsOptions>();
    CLI::App* command =
        app.add_subcommand("defaults", "Set a printer's default behaviour for the current user");
    command->add_option("PRINTER", options->printer, "The printer's name")->required();
    command->add_flag("--silent", options->silent, "Ask nothing while printing");
    command->add_flag("--run", options->run, "Run the target after a job");
    command->add_flag("--serial", options->serial, "Number the output files");
    command->add_flag("--document-name", options->document_name,
                      "Name output files after the document");
    command->add_option("--directory", options->directory, "Output folder");
    command->add_option("--file-name", options->file_name, "Output file");
    command->add_option("--program", options->program, "Program to run after a job");
    command->add_option("--parameters", options->parameters, "Its parameters");
    command->add_option("--message", options->message, "Message to send after a job");
    command->add_option("--window", options->window, "Class of the window that receives it");
    command->add_option("--format", options->format, "Text of the message");
    command->callback([options] { SetDefaults(*options); });
}

}  // namespace

void AddBlockCommands(CLI::App& app) {
    auto name = std::make_shared<std::string>();
    CLI::App* devmode = app.add_subcommand("devmode", "Settings blocks, byte for byte");
    devmode->require_subcommand(1);
    CLI::App* show =
        devmode->add_subcommand("show", "Show every field by name, and what is invalid");
    show->add_option("FILE|PRINTER", *name, "A file that holds a block, or a printer's name")
        ->required();
    show->callback([name] { ShowBlock(*name); });

    auto job = std::make_shared<JobOptions>();
    CLI::App* records = app.add_subcommand("job", "Flattened job records");
    records->require_subcommand(1);
    CLI::App* encode =
        records->add_subcommand("encode", "Write the record of a job that the options describe");
    encode->add_option("FILE", *name, "The file to write")->required();
    AddJobOptions(*encode, *job);
    encode->callback([name, job] { EncodeJob(*name, *job); });
    CLI::App* decode = records->add_subcommand("decode", "Check a record and show it");
    decode->add_option("FILE", *name, "A file that holds a record")->required();
    decode->callback([name] { DecodeJob(*name); });

    AddDefaultsCommand(app);
}

}  // namespace qv
