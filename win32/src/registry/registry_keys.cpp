// Keys: open, make, list, remove.
#include <algorithm>
#include <optional>
#include <span>

#include "registry/reg_calls.h"

using namespace host;

namespace {

// The path of `text` below a key.
LSTATUS PathBelow(const KeyContext& on, LPCWSTR text, RegPath& path) {
    const LSTATUS code = SplitKeyPath(ViewOf(text), path);
    if (code != ERROR_SUCCESS) return code;
    return on.depth + path.size() > kMaxKeyDepth ? ERROR_INVALID_PARAMETER : ERROR_SUCCESS;
}

LSTATUS CheckNames(const RegPath& path) {
    for (const std::u16string& name : path) {
        const LSTATUS code = CheckKeyName(name);
        if (code != ERROR_SUCCESS) return code;
    }
    return ERROR_SUCCESS;
}

// Removes the key at `path` and what is below it.
LSTATUS Remove(const KeyContext& on, const RegPath& path) {
    const auto parent = on.key.FindPath(std::span(path).first(path.size() - 1));
    return parent && parent->RemoveKey(path.back()) ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND;
}

// Opens the key at `path`. With `outcome` a key that is missing is made.
LSTATUS Open(HKEY key, LPCWSTR path, REGSAM access, PHKEY result, DWORD* outcome) {
    std::int64_t id = 0;
    std::size_t depth = 0;
    const auto open = [&](const KeyContext& on) -> LSTATUS {
        RegPath below;
        LSTATUS named = PathBelow(on, path, below);
        if (named == ERROR_SUCCESS && outcome != nullptr) named = CheckNames(below);
        if (named != ERROR_SUCCESS) return named;
        const auto found = on.key.FindPath(below);
        if (!found && outcome == nullptr) return ERROR_FILE_NOT_FOUND;
        if (outcome != nullptr) *outcome = found ? REG_OPENED_EXISTING_KEY : REG_CREATED_NEW_KEY;
        id = found ? found->Id() : on.key.MakePath(below).Id();
        depth = on.depth + below.size();
        return ERROR_SUCCESS;
    };
    const LSTATUS code = outcome == nullptr ? ReadKey(key, 0, open) : ChangeKey(key, 0, open);
    return code == ERROR_SUCCESS ? OpenKeyHandle(id, depth, access, result) : code;
}

}  // namespace

LSTATUS RegOpenKeyExW(HKEY key, LPCWSTR path, DWORD options, REGSAM access, PHKEY result) {
    if (result == nullptr) return ERROR_INVALID_PARAMETER;
    if (options != 0) return ERROR_NOT_SUPPORTED;
    return Open(key, path, access, result, nullptr);
}

LSTATUS RegCreateKeyExW(HKEY key, LPCWSTR path, DWORD reserved, LPWSTR, DWORD options,
                        REGSAM access, const SECURITY_ATTRIBUTES*, PHKEY result,
                        LPDWORD disposition) {
    if (result == nullptr || reserved != 0) return ERROR_INVALID_PARAMETER;
    if (path == nullptr) return ERROR_BADKEY;
    if (options != REG_OPTION_NON_VOLATILE) return ERROR_NOT_SUPPORTED;
    DWORD outcome = REG_OPENED_EXISTING_KEY;
    LSTATUS code = Open(key, path, access, result, nullptr);
    if (code == ERROR_FILE_NOT_FOUND) code = Open(key, path, access, result, &outcome);
    if (code == ERROR_SUCCESS && disposition != nullptr) *disposition = outcome;
    return code;
}

LSTATUS RegDeleteTreeW(HKEY key, LPCWSTR path) {
    const bool itself = !ViewOf(path).empty();
    const REGSAM needed = itself ? 0 : KEY_SET_VALUE | KEY_ENUMERATE_SUB_KEYS;
    return ChangeKey(key, needed, [&](const KeyContext& on) {
        RegPath below;
        const LSTATUS code = PathBelow(on, path, below);
        if (code != ERROR_SUCCESS) return code;
        if (!below.empty()) return Remove(on, below);
        if (itself) return LSTATUS{ERROR_ACCESS_DENIED};
        on.key.Clear();
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
        FILETIME time;
        const std::optional<RegKey> at = on.key.KeyAt(index, time);
        if (!at) return ERROR_NO_MORE_ITEMS;
        const std::u16string& found = at->Name();
        if (*name_size <= found.size()) return ERROR_MORE_DATA;
        if (key_class != nullptr && *class_size == 0) return ERROR_MORE_DATA;
        std::copy_n(found.c_str(), found.size() + 1, name);
        *name_size = static_cast<DWORD>(found.size());
        if (key_class != nullptr) *key_class = u'\0';
        if (class_size != nullptr) *class_size = 0;
        if (written != nullptr) *written = time;
        return ERROR_SUCCESS;
    });
}

LSTATUS RegCloseKey(HKEY key) {
    if (FindRoot(key) != 0) return ERROR_SUCCESS;
    const HandlePin<OpenKey> open(reinterpret_cast<HANDLE>(key));
    if (!open || !CloseOpenHandle(reinterpret_cast<HANDLE>(key))) return ERROR_INVALID_HANDLE;
    return ERROR_SUCCESS;
}
