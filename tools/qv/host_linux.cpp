// qv host: the state that this host keeps in place of Windows: where it lies, and its registry as
// text.
#include <qv_host.h>

#include <memory>

#include "commands.h"
#include "console.h"

namespace qv {

namespace {

constexpr DWORD kMessageSize = 1024;

void PrintRoot() {
    WCHAR folder[4096];
    const DWORD length = QvHostRoot(folder, 4096);
    if (length == 0 || length >= 4096) throw Failure("the host root is not known");
    PrintLine(ToUtf8(UnicodeString(folder)));
}

void Import(const std::string& file) {
    WCHAR message[kMessageSize] = {};
    if (!QvHostImport(FromUtf8(file).t_str(), message, kMessageSize))
        throw Failure(OneLine(UnicodeString(message)));
}

void Export(const std::string& key) {
    WCHAR message[kMessageSize] = {};
    const UnicodeString wide_key = FromUtf8(key);
    if (!QvHostExport(key.empty() ? nullptr : wide_key.t_str(), nullptr, message, kMessageSize)) {
        throw Failure(OneLine(UnicodeString(message)));
    }
}

}  // namespace

void AddHostCommands(CLI::App& app) {
    CLI::App* host =
        app.add_subcommand("host", "The registry and files that stand in for Windows here");
    host->require_subcommand(1);
    host->add_subcommand("root", "Show the folder that holds everything")->callback(PrintRoot);
    auto text = std::make_shared<std::string>();
    CLI::App* importer = host->add_subcommand("import", "Apply a .reg file to the registry");
    importer->add_option("FILE.reg", *text, "What the Windows registry editor exports, or UTF-8")
        ->required();
    importer->callback([text] { Import(*text); });
    CLI::App* exporter =
        host->add_subcommand("export", "Write the registry, or one key, as .reg text");
    exporter->add_option("KEY", *text, "For example HKLM\\Software\\Halvorn");
    exporter->callback([text] { Export(*text); });
}

}  // namespace qv
