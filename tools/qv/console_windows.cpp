#include <windows.h>

#include <fcntl.h>
#include <io.h>
#include <shellapi.h>

#include <cstdio>
#include <memory>

#include "console.h"

namespace qv {

bool OutputHasNoReader() {
    const DWORD error = GetLastError();
    return error == ERROR_NO_DATA || error == ERROR_BROKEN_PIPE;
}

std::vector<std::string> PrepareConsole(int /*argc*/, char** /*argv*/) {
    for (std::FILE* stream : {stdin, stdout, stderr}) _setmode(_fileno(stream), _O_BINARY);
    SetConsoleOutputCP(CP_UTF8);
    int count = 0;
    const std::unique_ptr<LPWSTR, decltype(&LocalFree)> list(
        CommandLineToArgvW(GetCommandLineW(), &count), &LocalFree);
    std::vector<std::string> arguments;
    for (int i = 0; i < count; ++i) arguments.push_back(ToUtf8(list.get()[i]));
    return arguments;
}

}  // namespace qv
