// The temporary and the system folder, as paths that the file calls of this host take.
#include <windows.h>

#include <sys/stat.h>

#include <cstdlib>

#include "host_root.h"
#include "host_text.h"

using namespace host;

namespace {

// TMP, else TEMP, else TMPDIR, as they stand; else C:\Temp, made when it is missing.
WideString TempFolder() {
    for (const char* name : {"TMP", "TEMP", "TMPDIR"}) {
        const char* value = std::getenv(name);
        if (value != nullptr && *value != 0) return FromUtf8(value);
    }
    const std::string drive = HostRoot() + "/drive_c";
    mkdir(HostRoot().c_str(), 0777);
    mkdir(drive.c_str(), 0777);
    mkdir((drive + "/Temp").c_str(), 0777);
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
