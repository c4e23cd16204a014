// qv report, qv bundle: all that support needs to know of this machine, as a page or an archive.
#include <memory>

#include "base/commands.h"
#include "report/bundle.h"
#include "report/report_page.h"

namespace qv {

namespace {

constexpr const char* kRedactHelp =
    "Replace the names of users, machines and documents by placeholders, and leave out bytes that "
    "cannot be rewritten";

struct ReportOptions {
    Output output;
    std::vector<std::string> files;
    LogFilterOptions filter;
    bool redact = false;
};

void Report(const ReportOptions& options) {
    const LogFilter filter(options.filter);  // a fault in it is told before the work
    RefuseExisting(options.output);
    Contents contents;
    options.files.empty() ? Gather(contents) : GatherLogs(contents, options.files);
    std::optional<Redaction> redaction;
    if (options.redact) {
        redaction = LearnFrom(contents);
        Redact(contents, *redaction);
    }
    WriteOutput(options.output,
                ReportPage(contents, redaction ? &*redaction : nullptr, options.filter));
    FailOnDamage(contents.logs);
}

void AddReport(CLI::App& app) {
    auto options = std::make_shared<ReportOptions>();
    CLI::App* report =
        app.add_subcommand("report", "Write health, settings and log as one page for a browser");
    report->footer(
        "Without FILE: this machine, with the log in force. With FILE: only "
        "these logs.\n"
        "The page needs no network. Damage of the log is marked on it, and the exit code is 3.");
    report->add_option("OUT.html", options->output.name, "The page; - is standard output")
        ->required();
    report->add_option("FILE", options->files,
                       "Log files, and archives with logs in them; - is standard input");
    AddForceOption(*report, options->output);
    report->add_flag("--redact", options->redact, kRedactHelp);
    AddFilterOptions(*report, options->filter);
    report->callback([options] { Report(*options); });
}

void AddBundle(CLI::App& app) {
    auto options = std::make_shared<BundleOptions>();
    CLI::App* bundle = app.add_subcommand(
        "bundle", "Put log, settings and the doctor's findings into one ZIP archive");
    bundle->add_option("OUT.zip", options->output.name, "The archive; - is standard output")
        ->required();
    AddForceOption(*bundle, options->output);
    bundle->add_flag("--redact", options->redact, kRedactHelp);
    bundle->callback([options] { WriteBundle(*options); });
}

}  // namespace

void AddReportCommands(CLI::App& app) {
    AddReport(app);
    AddBundle(app);
}

}  // namespace qv
