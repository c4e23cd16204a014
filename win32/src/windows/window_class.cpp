#include "windows/window_class.h"

#include <map>
#include <mutex>

#include "base/fork_lock.h"
#include "base/os_error.h"
#include "text/case_fold.h"

namespace host {

namespace {

struct ClassTable {
    ForkLock lock;
    std::map<WideString, WindowClass, FoldedLess> classes;
};

ClassTable& Classes() {
    // Never destroyed, because a thread that ends late still calls its windows.
    static auto& table = *new ClassTable;
    return table;
}

bool IsAtom(LPCWSTR name) {
    return reinterpret_cast<ULONG_PTR>(name) <= 0xFFFF;
}

const WindowClass* FindIn(const ClassTable& table, LPCWSTR name) {
    if (!IsAtom(name)) {
        const auto found = table.classes.find(name);
        return found == table.classes.end() ? nullptr : &found->second;
    }
    for (const auto& [key, entry] : table.classes) {
        if (entry.atom == reinterpret_cast<ULONG_PTR>(name)) return &entry;
    }
    return nullptr;
}

}  // namespace

const WindowClass* FindWindowClass(LPCWSTR name) {
    ClassTable& table = Classes();
    const std::lock_guard lock(table.lock);
    return FindIn(table, name);
}

}  // namespace host

using namespace host;

ATOM RegisterClassW(const WNDCLASSW* description) {
    constexpr std::size_t kLongestName = 255;
    const WideView name = description == nullptr || IsAtom(description->lpszClassName)
                              ? WideView()
                              : description->lpszClassName;
    if (name.empty() || name.size() > kLongestName || description->lpfnWndProc == nullptr) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    // As on Windows, class names and registered messages share one set of numbers.
    const UINT atom = RegisterWindowMessageW(description->lpszClassName);
    if (atom == 0) return 0;
    ClassTable& table = Classes();
    const std::lock_guard lock(table.lock);
    const auto [entry, added] = table.classes.try_emplace(WideString(name));
    if (!added) {
        SetLastError(ERROR_CLASS_ALREADY_EXISTS);
        return 0;
    }
    entry->second = {WideString(name), description->lpfnWndProc, static_cast<ATOM>(atom)};
    return entry->second.atom;
}
