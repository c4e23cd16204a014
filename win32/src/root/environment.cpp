// Environment variables: the process's own, found without case, with the folders that every Windows
// process can rely on.
#include "root/environment.h"

#include <windows.h>

#include <algorithm>
#include <cstdlib>
#include <mutex>
#include <optional>

#include <unistd.h>

#include "base/fork_lock.h"
#include "text/case_fold.h"
#include "text/host_text.h"

namespace host {

namespace {

// Needs no constructor and no destructor at run time, so it is usable until the process ends.
constinit ForkLock environment_lock;

// Only these functions read and change the environment of the process, under the lock.
// NOLINTBEGIN(concurrency-mt-unsafe)
const char* Get(const char* name) {
    return std::getenv(name);
}
bool Set(const char* name, const char* value) {
    return setenv(name, value, 1) == 0;
}
bool Remove(const char* name) {
    return unsetenv(name) == 0;
}
// NOLINTEND(concurrency-mt-unsafe)

struct DefaultVariable {
    WideView name;
    WideView value;
};
constexpr DefaultVariable kDefaults[] = {
    {u"SystemDrive", u"C:"},
    {u"SystemRoot", u"C:\\Windows"},
    {u"windir", u"C:\\Windows"},
    {u"ProgramFiles", u"C:\\Program Files"},
    {u"CommonProgramFiles", u"C:\\Program Files\\Common Files"},
    {u"ProgramData", u"C:\\ProgramData"},
    {u"ALLUSERSPROFILE", u"C:\\ProgramData"},
    {u"PUBLIC", u"C:\\Users\\Public"},
    {u"OS", u"Windows_NT"},
    {u"PROCESSOR_ARCHITECTURE", u"AMD64"},
};

// False for a name that the ASCII characters at its front tell apart. Spares nearly all names the
// way to UTF-16.
bool MayBe(std::string_view key, WideView name) {
    const std::size_t common = std::min(key.size(), name.size());
    for (std::size_t i = 0; i < common; ++i) {
        const auto byte = static_cast<unsigned char>(key[i]);
        if (byte >= 0x80) return true;
        if (FoldFileNameUnit(byte) != FoldFileNameUnit(name[i])) return false;
    }
    return key.size() == name.size();
}

// The name of the variable as the environment spells it; the exact spelling comes first. The caller
// holds the lock.
std::optional<std::string> ActualName(WideView name) {
    const std::string exact = ToUtf8(name);
    if (Get(exact.c_str()) != nullptr) return exact;
    for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
        const std::string_view line = *entry;
        const std::string_view key = line.substr(0, line.find('='));
        if (MayBe(key, name) && SameFileName(FromUtf8(key), name)) return std::string(key);
    }
    return std::nullopt;
}

std::optional<WideString> Variable(WideView name) {
    {
        const std::lock_guard lock(environment_lock);
        if (const auto actual = ActualName(name)) return FromUtf8(Get(actual->c_str()));
    }
    for (const DefaultVariable& row : kDefaults) {
        if (SameFileName(row.name, name)) return WideString(row.value);
    }
    if (!SameFileName(name, u"TEMP") && !SameFileName(name, u"TMP")) return std::nullopt;
    WCHAR folder[MAX_PATH];
    const DWORD length = ::GetTempPathW(MAX_PATH, folder);
    if (length == 0 || length >= MAX_PATH) return std::nullopt;
    return WideString(folder, length - 1);
}

WideString Expand(WideView text) {
    WideString result;
    while (!text.empty()) {
        const std::size_t open = std::min(text.find(u'%'), text.size());
        result += text.substr(0, open);
        text.remove_prefix(open);
        const std::size_t close = text.empty() ? WideView::npos : text.find(u'%', 1);
        if (close == WideView::npos) return result += text;
        const auto value = close > 1 ? Variable(text.substr(1, close - 1)) : std::nullopt;
        result += value ? *value : WideString(text.substr(0, close + 1));
        text.remove_prefix(close + 1);
    }
    return result;
}

}  // namespace

std::string EnvironmentText(const char* name) {
    const std::lock_guard lock(environment_lock);
    const char* const value = Get(name);
    return value == nullptr ? std::string() : value;
}

}  // namespace host

using namespace host;

DWORD ExpandEnvironmentStringsW(LPCWSTR text, LPWSTR buffer, DWORD size) {
    const WideString expanded = Expand(ViewOf(text));
    CopyOut(expanded, buffer, size);
    return static_cast<DWORD>(expanded.size() + 1);
}

BOOL SetEnvironmentVariableW(LPCWSTR name, LPCWSTR value) {
    const WideView wide_name = ViewOf(name);
    if (wide_name.empty() || wide_name.find(u'=') != WideView::npos) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    const std::lock_guard lock(environment_lock);
    const auto actual = ActualName(wide_name);
    const std::string narrow_name = actual.value_or(ToUtf8(wide_name));
    if (value == nullptr) {
        if (!actual) SetLastError(ERROR_ENVVAR_NOT_FOUND);
        return actual && Remove(narrow_name.c_str()) ? TRUE : FALSE;
    }
    return Set(narrow_name.c_str(), ToUtf8(value).c_str()) ? TRUE : FALSE;
}
