// The temporary and the system folder, as paths that the file calls of this host take.
#include <windows.h>

#include <filesystem>

#include "root/environment.h"
#include "root/host_root.h"
#include "text/host_text.h"

using namespace host;

namespace {

// TMP, else TEMP, else TMPDIR, as they are set; else C:\Temp, which is made when it is missing.
WideString TempFolder() {
    for (const char* name : {"TMP", "TEMP", "TMPDIR"}) {
        const std::string value = EnvironmentText(name);
        if (!value.empty()) return FromUtf8(value);
    }
    std::error_code ignored;
    std::filesystem::create_directories(HostRoot() + "/drive_c/Temp", ignored);
    return u"C:\\Temp";
}

}  // namespace

DWORD GetTempPathW(DWORD size, LPWSTR buffer) {
    WideString folder = TempFolder();
    // The callers append file names and look for a backslash.
    if (folder.back() == u'/' && folder.size() > 1) folder.pop_back();
    if (folder.back() != u'\\') folder += u'\\';
    return CopyOut(folder, buffer, size);
}

UINT GetSystemDirectoryW(LPWSTR buffer, UINT size) {
    return CopyOut(u"C:\\Windows\\System32", buffer, size);
}
