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
    SetConsoleOutputCP(CP_UTF8);
    // Colours are escape sequences, which older consoles act on only when they are asked to.
    DWORD mode = 0;
    const HANDLE output = StandardHandle(Stream::kOutput);
    if (GetConsoleMode(output, &mode))
        SetConsoleMode(output, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
    int count = 0;
    const std::unique_ptr<LPWSTR, decltype(&LocalFree)> list(
        CommandLineToArgvW(GetCommandLineW(), &count), &LocalFree);
    std::vector<std::string> arguments;
    for (int i = 0; i < count; ++i) arguments.push_back(ToUtf8(list.get()[i]));
    return arguments;
}

}  // namespace qv
