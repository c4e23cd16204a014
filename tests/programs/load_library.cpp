// load_library FILE COUNT: loads and unloads a module COUNT times. Linked to the host's calls only,
// so that nothing else keeps the module loaded.
#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <string>

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fputs("usage: load_library FILE COUNT\n", stderr);
        return 2;
    }
    const std::string file = argv[1];
    const std::basic_string<WCHAR> name(file.begin(), file.end());
    for (int i = std::atoi(argv[2]); i > 0; --i) {
        const HMODULE module = LoadLibraryW(name.c_str());
        if (module == nullptr || !FreeLibrary(module)) return 1;
        if (GetModuleHandleW(name.c_str()) != nullptr) return 3;
    }
    return 0;
}
