// qv host: where the files lie that replace those of Windows, and its registry as text.
#include <qv_host.h>

#include <memory>

#include "base/commands.h"
#include "base/console.h"
#include "base/host.h"

namespace qv {

namespace {

constexpr DWORD kMessageRoom = 1024;

void PrintRoot() {
    const std::string root = GetHostFacts().root;
    if (root.empty()) throw Failure("the host root is not known");
    PrintLine(root);
}

void Import(const std::string& file) {
    WCHAR message[kMessageRoom] = {};
    const UnicodeString name = FromUtf8(file);
    if (QvHostImport(name.t_str(), message, kMessageRoom)) return;
    const bool is_file = FindFile(name).kind == FileKind::kFile;
    throw Failure(OneLine(UnicodeString(message)),
                  is_file ? ExitCode::kFailed : ExitCode::kCannotOpen);
}

void Export(const std::string& key) {
    WCHAR message[kMessageRoom] = {};
    const UnicodeString wide_key = FromUtf8(key);
    if (QvHostExport(key.empty() ? nullptr : wide_key.t_str(), nullptr, message, kMessageRoom))
        return;
    // The host's code for a pipe that nobody reads, and for nothing else.
    if (GetLastError() == ERROR_WRITE_FAULT) throw ClosedPipe();
    throw Failure(OneLine(UnicodeString(message)));
}

}  // namespace

void AddHostCommands(CLI::App& app) {
    CLI::App* host =
        app.add_subcommand("host", "The registry and files that replace those of Windows");
    host->require_subcommand(1);
    host->add_subcommand("root", "Show the folder of the registry and files")->callback(PrintRoot);
    auto text = std::make_shared<std::string>();
    CLI::App* importer = host->add_subcommand("import", "Apply a .reg file to the registry");
    importer
        ->add_option("FILE.reg", *text,
                     "A file that the Windows registry editor exported, or one in UTF-8")
        ->required();
    importer->callback([text] { Import(*text); });
    CLI::App* exporter =
        host->add_subcommand("export", "Write the registry, or one key, as .reg text");
    exporter->add_option("KEY", *text, "For example HKLM\\Software\\Halvorn");
    exporter->callback([text] { Export(*text); });
}

}  // namespace qv
