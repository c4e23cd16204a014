// The ANSI code page of a host root, where Windows keeps its own.
#include <windows.h>

#include <atomic>
#include <charconv>
#include <functional>
#include <string>

#include "root/host_root.h"
#include "text/code_page.h"
#include "text/host_text.h"

namespace host {

namespace {

constexpr UINT kDefaultPage = 1252;

// The code page that the registry names, when this host can convert it; else the default.
UINT PageInRegistry() {
    WCHAR text[16] = {};
    DWORD type = 0;
    DWORD bytes = sizeof text - sizeof(WCHAR);
    HKEY key = nullptr;
    const DWORD before = GetLastError();
    LONG error =
        RegOpenKeyExW(HKEY_LOCAL_MACHINE, TEXT("SYSTEM\\CurrentControlSet\\Control\\Nls\\CodePage"),
                      0, KEY_READ, &key);
    if (error == ERROR_SUCCESS) {
        error = RegQueryValueExW(key, TEXT("ACP"), nullptr, &type, reinterpret_cast<LPBYTE>(text),
                                 &bytes);
        RegCloseKey(key);
    }
    SetLastError(before);
    if (error != ERROR_SUCCESS || type != REG_SZ) return kDefaultPage;
    const std::string digits = ToUtf8(text);
    UINT page = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), page);
    return page == CP_UTF8 || OpenNarrowPage(page) != nullptr ? page : kDefaultPage;
}

}  // namespace

UINT AnsiCodePage() {
    // The root that was asked for last and its code page in one word: the hash of the root above,
    // the page below.
    static constinit std::atomic<ULONGLONG> known{0};
    const ULONGLONG root = std::hash<std::string>()(HostRoot()) & ~ULONGLONG{0xFFFF};
    const ULONGLONG last = known.load(std::memory_order_relaxed);
    if (last != 0 && (last & ~ULONGLONG{0xFFFF}) == root) return static_cast<UINT>(last & 0xFFFF);
    const UINT page = PageInRegistry();
    known.store(root | page, std::memory_order_relaxed);
    return page;
}

}  // namespace host
