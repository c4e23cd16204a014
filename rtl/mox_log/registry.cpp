#include "mox_log/registry.h"

#include "mox_classes/memory/handles.h"
#include "mox_classes/text/log_here.h"
#include "mox_classes/text/sys_error.h"
#include "mox_log/registry_text.h"
#include "mox_log/wow64.h"

namespace Mox {

namespace {

UnicodeString ErrorText(LSTATUS code) {
    return GetSysError(static_cast<DWORD>(code), true);
}

// The registry calls return their error code. Functions of this file that return none set it as the
// thread's last error.
bool Succeeded(LSTATUS code) {
    if (code != ERROR_SUCCESS) SetLastError(static_cast<DWORD>(code));
    return code == ERROR_SUCCESS;
}

HKEY OpenKey(HKEY root, const UnicodeString& path) {
    HKEY key = nullptr;
    const LSTATUS code = RegOpenKeyExW(root, path.t_str(), 0, SAM64(KEY_READ), &key);
    return Succeeded(code) ? key : nullptr;
}

LSTATUS CreateKey(HKEY root, const UnicodeString& path, HKEY& key) {
    key = nullptr;
    const LSTATUS code = RegCreateKeyExW(root, path.t_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                                         SAM64(KEY_ALL_ACCESS), nullptr, &key, nullptr);
    if (!Succeeded(code)) key = nullptr;
    return code;
}

LSTATUS StoreText(HKEY key, const UnicodeString& name, const UnicodeString& value) {
    const auto bytes = (static_cast<DWORD>(value.Length()) + 1) * sizeof(WCHAR);
    return RegSetValueExW(key, name.t_str(), 0, REG_SZ,
                          reinterpret_cast<const BYTE*>(value.t_str()), static_cast<DWORD>(bytes));
}

void LogReadFailure(const TRegText& read, const UnicodeString& key_and_name) {
    UnicodeString text;
    if (read.state == TRegTextState::WrongType) {
        text.printf(TEXT("RegQueryValueEx(): Invalid data type(%d)\r\n Key=\"%s\""), read.type,
                    key_and_name);
    } else {
        text.printf(TEXT("RegQueryValueEx(): %s Key=\"%s\""), ErrorText(read.code), key_and_name);
    }
    Mox::LogHere('X', text);
}

// The text; or the default when the value is missing, or when it cannot be read, which is logged.
UnicodeString TextOr(const TRegText& read, const UnicodeString& shown_name,
                     const UnicodeString& fallback) {
    if (read.state == TRegTextState::Found) return read.text;
    if (read.state != TRegTextState::Missing) LogReadFailure(read, shown_name);
    return fallback;
}

}  // namespace

UnicodeString ReadRegistry(HKEY root, UnicodeString path, UnicodeString name) {
    const System::TKeyHandle opened(path.Length() == 0 ? nullptr : OpenKey(root, path));
    const HKEY key = path.Length() == 0 ? root : opened.Get();
    if (key == nullptr) return UnicodeString();
    return TextOr(ReadRegText(key, name), path + TEXT("|") + name, UnicodeString());
}

bool WriteRegistry(HKEY root, UnicodeString path, UnicodeString name, UnicodeString value) {
    HKEY created = nullptr;
    UnicodeString text;
    if (path.Length() > 0) {
        const LSTATUS code = CreateKey(root, path, created);
        if (code != ERROR_SUCCESS) {
            Mox::LogHere('X',
                         text.sprintf(TEXT("RegCreateKey() %s Key=\"%s\""), ErrorText(code), path));
            return false;
        }
    }
    const System::TKeyHandle owner(created);
    const LSTATUS code = StoreText(path.Length() == 0 ? root : created, name, value);
    if (code == ERROR_SUCCESS) return true;
    Mox::LogHere('X', text.sprintf(TEXT("RegSetValueEx() %s Key=\"%s|%s\"; Value=\"%s\""),
                                   ErrorText(code), path, name, value));
    return false;
}

HKEY RegOpenToRead(HKEY root, const UnicodeString& path) {
    return path.Length() == 0 ? nullptr : OpenKey(root, path);
}

HKEY RegOpenToWrite(HKEY root, const UnicodeString& path) {
    HKEY key = nullptr;
    if (path.Length() > 0) CreateKey(root, path, key);
    return key;
}

void RegClose(HKEY key) {
    if (key != nullptr && key != static_cast<void*>(INVALID_HANDLE_VALUE)) RegCloseKey(key);
}

UnicodeString RegReadString(HKEY key, UnicodeString name, UnicodeString defaultValue) {
    return TextOr(ReadRegText(key, name), name, defaultValue);
}

DWORD RegReadInteger(HKEY key, UnicodeString name, DWORD defaultValue) {
    TRegText read;
    DWORD value = 0;
    DWORD size = sizeof(value);
    const LSTATUS code = RegQueryValueExW(key, name.t_str(), nullptr, &read.type,
                                          reinterpret_cast<BYTE*>(&value), &size);
    // A value that is too long exists, but it is no integer.
    if (code != ERROR_SUCCESS && code != ERROR_MORE_DATA) return defaultValue;
    if (code == ERROR_SUCCESS && read.type == REG_DWORD && size == sizeof(value)) return value;
    read.state = TRegTextState::WrongType;
    LogReadFailure(read, name);
    return defaultValue;
}

bool RegWriteString(HKEY key, UnicodeString name, UnicodeString value) {
    return Succeeded(StoreText(key, name, value));
}

bool RegWriteInteger(HKEY key, UnicodeString name, DWORD value) {
    return Succeeded(RegSetValueExW(key, name.t_str(), 0, REG_DWORD,
                                    reinterpret_cast<const BYTE*>(&value), sizeof(value)));
}

}  // namespace Mox

void MoxRegOpenKey(HKEY& userKey, HKEY& machineKey, UnicodeString path) {
    userKey = Mox::RegOpenToRead(HKEY_CURRENT_USER, path);
    machineKey = Mox::RegOpenToRead(HKEY_LOCAL_MACHINE, path);
}

void MoxRegCloseKey(HKEY userKey, HKEY machineKey) {
    Mox::RegClose(userKey);
    Mox::RegClose(machineKey);
}

UnicodeString MoxRegReadString(HKEY userKey, HKEY machineKey, UnicodeString name,
                               UnicodeString defaultValue) {
    UnicodeString value = defaultValue;
    if (machineKey != nullptr) value = Mox::RegReadString(machineKey, name, value);
    if (userKey != nullptr) value = Mox::RegReadString(userKey, name, value);
    return value;
}

int MoxRegReadInteger(HKEY userKey, HKEY machineKey, UnicodeString name, int defaultValue) {
    auto value = static_cast<DWORD>(defaultValue);
    if (machineKey != nullptr) value = Mox::RegReadInteger(machineKey, name, value);
    if (userKey != nullptr) value = Mox::RegReadInteger(userKey, name, value);
    return static_cast<int>(value);
}
