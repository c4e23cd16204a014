// .reg files of the Linux host: one that is taken, exported and taken again is exported alike.
#include <qv_host.h>
#include <unistd.h>

#include "support/input.h"

namespace {

const char* const kRoots[] = {"CLASSES_ROOT", "CURRENT_USER", "LOCAL_MACHINE", "USERS",
                              "CURRENT_CONFIG"};

std::string HivePath(const char* root) {
    return std::string(std::getenv("QV_HOST_ROOT")) + "/registry/HKEY_" + root + ".reg";
}

bool Import(const char* name) {
    WCHAR problem[200];
    const std::string path = fuzz::FilePath(name);
    const std::u16string wide(path.begin(), path.end());
    for (const char* root : kRoots) unlink(HivePath(root).c_str());
    return QvHostImport(wide.c_str(), problem, 200);
}

std::string Exported() {
    const std::string path = fuzz::FilePath("export.reg");
    const std::u16string wide(path.begin(), path.end());
    fuzz::Require(QvHostExport(nullptr, wide.c_str(), nullptr, 0), "a registry can be exported");
    return fuzz::ReadFile("export.reg");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::WriteFile("input.reg", {data, size});
    if (!Import("input.reg")) return 0;
    const std::string first = Exported();
    fuzz::Require(Import("export.reg"), "what was exported can be imported");
    fuzz::Require(Exported() == first, "the second export is the first one");
    return 0;
}
