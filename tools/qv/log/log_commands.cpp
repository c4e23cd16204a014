// qv log: the shared log file as a person reads it.
#include <cstdlib>
#include <memory>

#include "base/commands.h"
#include "base/console.h"
#include "base/host.h"
#include "log/level_words.h"
#include "log/log_save.h"
#include "log/log_show.h"
#include "log/log_stat.h"
#include "log/log_verify.h"
#include "log/log_write.h"

namespace qv {

namespace {

constexpr const char* kFileHelp =
    "The log file, or an archive with one; - is standard input; without it the log in force";

struct ShowArguments {
    ShowOptions options;
    std::string colour = "auto", output = "text";
    bool json = false, csv = false;
};

std::string Environment(const char* name) {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): nothing here changes the environment.
    const char* const value = std::getenv(name);
    return value == nullptr ? std::string() : value;
}

bool IsColoured(const std::string& when) {
    if (when != "auto") return when == "always";
    return IsTerminal(Stream::kOutput) && Environment("NO_COLOR").empty() &&
           Environment("TERM") != "dumb";
}

LogStyle::Shape ShapeOf(const ShowArguments& arguments) {
    if (arguments.json || arguments.output == "json") return LogStyle::Shape::kJson;
    if (arguments.csv || arguments.output == "csv") return LogStyle::Shape::kCsv;
    return arguments.output == "export" ? LogStyle::Shape::kExport : LogStyle::Shape::kText;
}

void Show(const ShowArguments& arguments) {
    ShowOptions options = arguments.options;
    options.style.colour = IsColoured(arguments.colour);
    options.style.shape = ShapeOf(arguments);
    // A file may come from any machine.
    if (options.files.empty()) options.style.host = GetHostFacts().machine;
    ShowLog(options);
}

void AddShow(CLI::App& log) {
    auto arguments = std::make_shared<ShowArguments>();
    ShowOptions& options = arguments->options;
    CLI::App* show = log.add_subcommand("show", "Show the records, the oldest first");
    show->footer(
        "A line: local time, level, process, thread, session, [source,line], text, (label: data).\n"
        "Several logs are merged by time; the name of the log follows the time.\n"
        "Levels: X error, * warning, i information, blank trace, > the log itself.\n"
        "An expression of --grep: . [a-z] [^a-z] \\d \\w \\s \\D \\W \\S ^ $ \\b ( ) | * + ? "
        "{2,5}.\n"
        "Damaged records are left out: each gap is named, and the exit code is 3.");
    show->add_option("FILE", options.files,
                     "Log files, and ZIP archives with logs in them; - is standard input; without "
                     "any the log in force");
    AddFilterOptions(*show, options.filter);
    CLI::Option* output =
        show->add_option("-o,--output", arguments->output,
                         "text; json: an object a line; csv: with a header line; export: entries "
                         "for systemd-journal-remote")
            ->check(CLI::IsMember({"text", "json", "csv", "export"}));
    CLI::Option* json =
        show->add_flag("--json", arguments->json, "Short for --output json")->excludes(output);
    show->add_flag("--csv", arguments->csv, "Short for --output csv")
        ->excludes(json)
        ->excludes(output);
    show->add_flag("--utc", options.style.utc, "Times in UTC, to 100 ns (text only)");
    show->add_flag("--raw", options.style.raw, "Write control characters unchanged");
    show->add_option(
            "--color", arguments->colour,
            "Colours by level: auto (on a terminal, unless NO_COLOR is set), always, never")
        ->check(CLI::IsMember({"auto", "always", "never"}));
    show->add_flag("--follow", options.follow,
                   "Then show new records, until stopped or until the time of --until");
    show->add_option(
        "--cursor-file", options.cursor_file,
        "Only records behind the place that this file keeps; the file gets the new place");
    show->callback([arguments] { Show(*arguments); });
}

void AddReport(CLI::App& log, const char* name, const char* help,
               void (*report)(const std::string& file, bool json)) {
    struct Arguments {
        std::string file;
        bool json = false;
    };
    auto arguments = std::make_shared<Arguments>();
    CLI::App* command = log.add_subcommand(name, help);
    command->add_option("FILE", arguments->file, kFileHelp);
    command->add_flag("--json", arguments->json, "One JSON document");
    command->callback([arguments, report] { report(arguments->file, arguments->json); });
}

void AddSave(CLI::App& log) {
    auto options = std::make_shared<SaveOptions>();
    CLI::App* save = log.add_subcommand("save", "Save records as a new log file");
    save->add_option("OUT", options->output.name, "The new log file; - is standard output")
        ->required();
    save->add_option("FILE", options->file, kFileHelp);
    AddFilterOptions(*save, options->filter);
    AddForceOption(*save, options->output);
    save->callback([options] { SaveLog(*options); });
}

void AddWrite(CLI::App& log) {
    auto options = std::make_shared<WriteOptions>();
    CLI::App* write = log.add_subcommand("write", "Write a line into the log in force");
    write->footer(
        "The words are one line, joined by blanks; without them each line of standard input is a\n"
        "record. Put a text that may begin with - behind --.");
    write->add_option("TEXT", options->words,
                      "The line; without words, or with -, the lines of standard input");
    write->add_option("--level", options->level, kLevelWords)->capture_default_str();
    write->add_option("--source", options->source, "The module in the record")
        ->capture_default_str();
    write->callback([options] { WriteLog(*options); });
}

}  // namespace

void AddLogCommands(CLI::App& app) {
    CLI::App* log = app.add_subcommand("log", "The log that all modules of the product share");
    log->require_subcommand(1);
    AddShow(*log);
    AddReport(*log, "stat", "Count the records and draw the ring", ShowLogStat);
    AddReport(*log, "verify", "Check the log, also while others write it", VerifyLog);
    AddSave(*log);
    AddWrite(*log);
}

}  // namespace qv
