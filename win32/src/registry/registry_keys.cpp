// Keys: open, make, list, remove.
#include <algorithm>
#include <span>

#include "registry/reg_calls.h"

using namespace host;

namespace {

// The whole path, below the root, of `text` below a key.
LSTATUS PathBelow(const RegPath& key, LPCWSTR text, RegPath& path) {
    path = key;
    const LSTATUS code = SplitKeyPath(ViewOf(text), path);
    if (code != ERROR_SUCCESS) return code;
    return path.size() > kMaxKeyDepth ? ERROR_INVALID_PARAMETER : ERROR_SUCCESS;
}

LSTATUS CheckNames(const RegPath& path) {
    for (const std::u16string& name : path) {
        const LSTATUS code = CheckKeyName(name);
        if (code != ERROR_SUCCESS) return code;
    }
    return ERROR_SUCCESS;
}

std::span<const std::u16string> Parent(const RegPath& path) {
    return std::span(path).first(path.size() - 1);
}

// Removes the key at `path` and what is below it.
LSTATUS Remove(const KeyContext& on, const RegPath& path, bool& changed) {
    if (path.empty()) return ERROR_ACCESS_DENIED;
    RegKey* const parent = on.hive.Root().FindPath(Parent(path));
    changed = parent != nullptr && parent->RemoveKey(path.back());
    if (!changed) return ERROR_FILE_NOT_FOUND;
    on.hive.MarkDeleted(path, true);
    return ERROR_SUCCESS;
}

LSTATUS OpenExisting(HKEY key, LPCWSTR path, REGSAM access, PHKEY result) {
    return ReadKey(key, 0, [&](const KeyContext& on) {
        RegPath whole;
        const LSTATUS code = PathBelow(on.path, path, whole);
        if (code != ERROR_SUCCESS) return code;
        if (on.hive.Root().FindPath(whole) == nullptr) return LSTATUS{ERROR_FILE_NOT_FOUND};
        return OpenKeyHandle(on.hive, std::move(whole), access, result);
    });
}

LSTATUS OpenOrMake(HKEY key, LPCWSTR path, REGSAM access, PHKEY result, DWORD& disposition) {
    return ChangeKey(key, 0, [&](const KeyContext& on, bool& changed) {
        RegPath whole;
        LSTATUS code = PathBelow(on.path, path, whole);
        if (code == ERROR_SUCCESS) code = CheckNames(whole);
        if (code != ERROR_SUCCESS) return code;
        changed = on.hive.Root().FindPath(whole) == nullptr;
        if (changed) on.hive.Root().MakePath(whole);
        disposition = changed ? REG_CREATED_NEW_KEY : REG_OPENED_EXISTING_KEY;
        return OpenKeyHandle(on.hive, std::move(whole), access, result);
    });
}

}  // namespace

LSTATUS RegOpenKeyExW(HKEY key, LPCWSTR path, DWORD options, REGSAM access, PHKEY result) {
    if (result == nullptr) return ERROR_INVALID_PARAMETER;
    if (options != 0) return ERROR_NOT_SUPPORTED;
    return OpenExisting(key, path, access, result);
}

LSTATUS RegCreateKeyExW(HKEY key, LPCWSTR path, DWORD reserved, LPWSTR, DWORD options,
                        REGSAM access, const SECURITY_ATTRIBUTES*, PHKEY result,
                        LPDWORD disposition) {
    if (result == nullptr || reserved != 0) return ERROR_INVALID_PARAMETER;
    if (path == nullptr) return ERROR_BADKEY;
    if (options != REG_OPTION_NON_VOLATILE) return ERROR_NOT_SUPPORTED;
    DWORD outcome = REG_OPENED_EXISTING_KEY;
    LSTATUS code = OpenExisting(key, path, access, result);
    if (code == ERROR_FILE_NOT_FOUND) code = OpenOrMake(key, path, access, result, outcome);
    if (code == ERROR_SUCCESS && disposition != nullptr) *disposition = outcome;
    return code;
}

LSTATUS RegDeleteTreeW(HKEY key, LPCWSTR path) {
    const bool itself = !ViewOf(path).empty();
    const REGSAM needed = itself ? 0 : KEY_SET_VALUE | KEY_ENUMERATE_SUB_KEYS;
    return ChangeKey(key, needed, [&](const KeyContext& on, bool& changed) {
        RegPath whole;
        const LSTATUS code = PathBelow(on.path, path, whole);
        if (code != ERROR_SUCCESS) return code;
        if (itself) return Remove(on, whole, changed);
        changed = on.key.HasKeys() || !on.key.Values().empty();
        on.key.Clear();
        on.hive.MarkDeleted(whole, false);
        return LSTATUS{ERROR_SUCCESS};
    });
}

LSTATUS RegEnumKeyExW(HKEY key, DWORD index, LPWSTR name, LPDWORD name_size, LPDWORD reserved,
                      LPWSTR key_class, LPDWORD class_size, FILETIME* written) {
    if (name == nullptr || name_size == nullptr || reserved != nullptr ||
        (key_class != nullptr && class_size == nullptr)) {
        return ERROR_INVALID_PARAMETER;
    }
    return ReadKey(key, KEY_ENUMERATE_SUB_KEYS, [&](const KeyContext& on) -> LSTATUS {
        if (index >= on.key.Keys().size()) return ERROR_NO_MORE_ITEMS;
        const std::u16string& found = on.key.Keys()[index]->Name();
        if (*name_size <= found.size()) return ERROR_MORE_DATA;
        if (key_class != nullptr && *class_size == 0) return ERROR_MORE_DATA;
        std::copy_n(found.c_str(), found.size() + 1, name);
        *name_size = static_cast<DWORD>(found.size());
        if (key_class != nullptr) *key_class = u'\0';
        if (class_size != nullptr) *class_size = 0;
        if (written != nullptr) *written = on.hive.Written();
        return ERROR_SUCCESS;
    });
}

LSTATUS RegCloseKey(HKEY key) {
    if (FindHive(key) != nullptr) return ERROR_SUCCESS;
    const HandlePin<OpenKey> open(reinterpret_cast<HANDLE>(key));
    if (!open || !CloseOpenHandle(reinterpret_cast<HANDLE>(key))) return ERROR_INVALID_HANDLE;
    return ERROR_SUCCESS;
}
