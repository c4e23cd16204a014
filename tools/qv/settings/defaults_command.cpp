// qv defaults: a printer's default behaviour for the current user.
#include <CLI/CLI.hpp>
#include <memory>

#include "driver_devmode/default_settings.h"
#include "settings/printer_settings.h"
#include "settings/recorded_call.h"
#include "settings/settings_commands.h"

namespace qv {

namespace {

struct DefaultsOptions {
    std::string printer, directory, file_name, program, parameters, message, window, format;
    bool silent = false, run = false, serial = false, document_name = false;
    RecordOptions record;
};

void CallDefaults(const DefaultsOptions& o) {
    const int done = SetQVDefaultSetting(
        FromUtf8(o.printer).t_str(), o.silent ? 1 : 0, o.run ? 1 : 0, o.serial ? 1 : 0,
        o.document_name ? 1 : 0, FromUtf8(o.directory).t_str(), FromUtf8(o.file_name).t_str(),
        FromUtf8(o.program).t_str(), FromUtf8(o.parameters).t_str(), FromUtf8(o.message).t_str(),
        FromUtf8(o.window).t_str(), FromUtf8(o.format).t_str());
    if (done != 1) {
        throw Failure("the defaults of " + Quoted(o.printer) +
                      " cannot be set: no such printer, no block of the product, or texts that are "
                      "too long; the log says more");
    }
}

void SetDefaults(const DefaultsOptions& options) {
    RecordCall({{FromUtf8(options.printer)}, {}}, options.record,
               [&options] { CallDefaults(options); });
    PrintScope();
}

}  // namespace

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
    command->add_option("--parameters", options->parameters, "Parameters of the program");
    command->add_option("--message", options->message, "Message to send after a job");
    command->add_option("--window", options->window,
                        "Class of the window that receives the message");
    command->add_option("--format", options->format, "Text of the message");
    AddRecordOptions(*command, options->record);
    command->callback([options] { SetDefaults(*options); });
}

}  // namespace qv
