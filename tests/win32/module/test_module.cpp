// A module for the tests of loading: what its DllMain can still do, exports, a string table.
#include <qv_host.h>
#include <windows.h>

#include <string>

#define MODULE_API extern "C" __attribute__((visibility("default")))

namespace {

using Wide = std::basic_string<WCHAR>;

DWORD slot = TLS_OUT_OF_INDEXES;
CRITICAL_SECTION guard;

struct Global {
    Global() { alive = true; }
    ~Global() { alive = false; }
    inline static bool alive = false;
} global;

// Appends to the file that the test named, with the host layer's own calls.
void Report(const char* line) {
    WCHAR name[MAX_PATH];
    ExpandEnvironmentStringsW(TEXT("%qv_test_module_report%"), name, MAX_PATH);
    if (name[0] == TEXT('%')) return;
    const HANDLE file =
        CreateFileW(name, GENERIC_WRITE, FILE_SHARE_READ, nullptr, OPEN_ALWAYS, 0, nullptr);
    SetFilePointer(file, 0, nullptr, FILE_END);
    const std::string text(line);
    DWORD done = 0;
    WriteFile(file, text.data(), static_cast<DWORD>(text.size()), &done, nullptr);
    CloseHandle(file);
}

void ReportModule(HMODULE module) {
    WCHAR name[MAX_PATH] = {};
    GetModuleFileNameW(module, name, MAX_PATH);
    const bool own = Wide(name).ends_with(TEXT("test_module.so"));
    Report(own && Global::alive ? "attach\n" : "attach with a wrong module\n");
}

bool HostLayerWorks() {
    EnterCriticalSection(&guard);
    const bool slot_kept = TlsGetValue(slot) == &guard;
    LeaveCriticalSection(&guard);
    WCHAR* message = nullptr;
    const DWORD length =
        FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM, nullptr,
                       ERROR_ACCESS_DENIED, 0, reinterpret_cast<LPWSTR>(&message), 0, nullptr);
    LocalFree(message);
    HKEY key = nullptr;
    const LONG opened = RegOpenKeyExW(HKEY_CURRENT_USER, TEXT("none"), 0, KEY_READ, &key);
    return slot_kept && length > 0 && opened == ERROR_FILE_NOT_FOUND;
}

}  // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID /*reserved*/) {
    if (reason == DLL_PROCESS_ATTACH) {
        InitializeCriticalSection(&guard);
        slot = TlsAlloc();
        TlsSetValue(slot, &guard);
        ReportModule(module);
    } else if (reason == DLL_PROCESS_DETACH) {
        Report(HostLayerWorks() ? "detach\n" : "detach without the host layer\n");
        TlsFree(slot);
        DeleteCriticalSection(&guard);
    }
    return TRUE;
}

MODULE_API INT_PTR TestModuleAnswer() {
    return 42;
}

MODULE_API const QvStringBlock qv_module_strings[];
const QvStringBlock qv_module_strings[] = {
    QvStrings(7,
              u"\2OK"
              u"\6Cancel"
              u"\0\0\0\0\0\0\0\0\0\0\0\0\0"
              u"\4last"),
    QvStrings(8, u"\5short"),
    {},
};
