// .reg files of the Linux host: one that is taken, exported and taken again is exported alike.
#include <qv_host.h>

#include "support/input.h"

namespace {

constexpr char kNothing[] =
    "Windows Registry Editor Version 5.00\n"
    "[-HKEY_CLASSES_ROOT]\n[-HKEY_CURRENT_USER]\n[-HKEY_LOCAL_MACHINE]\n[-HKEY_USERS]\n"
    "[-HKEY_CURRENT_CONFIG]\n";

bool Take(const char* name) {
    WCHAR problem[200];
    const std::string path = fuzz::FilePath(name);
    const std::u16string wide(path.begin(), path.end());
    return QvHostImport(wide.c_str(), problem, 200);
}

// Into an empty registry. What a file changes is never stored: it costs no disk.
bool Import(const char* name) {
    QvHostEndChanges(FALSE);
    QvHostBeginChanges();
    fuzz::Require(Take("nothing.reg"), "a registry can be emptied");
    return Take(name);
}

std::string Exported() {
    const std::string path = fuzz::FilePath("export.reg");
    const std::u16string wide(path.begin(), path.end());
    fuzz::Require(QvHostExport(nullptr, wide.c_str(), nullptr, 0), "a registry can be exported");
    return fuzz::ReadFile("export.reg");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::WriteFile("nothing.reg",
                    {reinterpret_cast<const std::uint8_t*>(kNothing), sizeof(kNothing) - 1});
    fuzz::WriteFile("input.reg", {data, size});
    if (!Import("input.reg")) return 0;
    const std::string first = Exported();
    fuzz::Require(Import("export.reg"), "what was exported can be imported");
    fuzz::Require(Exported() == first, "the second export is the first one");
    return 0;
}
