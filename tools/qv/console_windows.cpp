#include <windows.h>

#include <fcntl.h>
#include <io.h>
#include <shellapi.h>

#include <cstdio>
#include <memory>

#include "console.h"

namespace qv {

namespace {

HANDLE StandardHandle(Stream stream) {
    switch (stream) {
        case Stream::kInput:
            return GetStdHandle(STD_INPUT_HANDLE);
        case Stream::kOutput:
            return GetStdHandle(STD_OUTPUT_HANDLE);
        default:
            return GetStdHandle(STD_ERROR_HANDLE);
    }
}

// UTF-8 and colours for the time of this program: the console is that of others as well, who find
// it as it was.
class ConsoleForm {
  public:
    ConsoleForm() {
        SetConsoleOutputCP(CP_UTF8);
        // Colours are escape sequences, which older consoles act on only when they are asked to.
        if (has_mode_) SetConsoleMode(output_, mode_ | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
    }
    ~ConsoleForm() {
        if (has_mode_) SetConsoleMode(output_, mode_);
        if (code_page_ != 0) SetConsoleOutputCP(code_page_);
    }
    ConsoleForm(const ConsoleForm&) = delete;
    ConsoleForm& operator=(const ConsoleForm&) = delete;

  private:
    const UINT code_page_ = GetConsoleOutputCP();
    const HANDLE output_ = StandardHandle(Stream::kOutput);
    DWORD mode_ = 0;
    const bool has_mode_ = GetConsoleMode(output_, &mode_) != FALSE;
};

}  // namespace

bool IsTerminal(Stream stream) {
    DWORD mode = 0;
    return GetConsoleMode(StandardHandle(stream), &mode) != FALSE;
}

bool OutputHasNoReader() {
    const DWORD error = GetLastError();
    return error == ERROR_NO_DATA || error == ERROR_BROKEN_PIPE;
}

std::vector<std::string> PrepareConsole(int /*argc*/, char** /*argv*/) {
    for (std::FILE* stream : {stdin, stdout, stderr}) _setmode(_fileno(stream), _O_BINARY);
    static const ConsoleForm form;
    int count = 0;
    const std::unique_ptr<LPWSTR, decltype(&LocalFree)> list(
        CommandLineToArgvW(GetCommandLineW(), &count), &LocalFree);
    std::vector<std::string> arguments;
    for (int i = 0; i < count; ++i) arguments.push_back(ToUtf8(list.get()[i]));
    return arguments;
}

}  // namespace qv
