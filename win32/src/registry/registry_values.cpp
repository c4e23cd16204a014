// Values: read, write, list, remove.
#include <algorithm>
#include <optional>
#include <span>

#include "registry/reg_calls.h"

using namespace host;

namespace {

bool IsText(DWORD type) {
    return type == REG_SZ || type == REG_EXPAND_SZ || type == REG_MULTI_SZ;
}

// Hands a value's data out by the two-call protocol. A text that was stored without its terminator
// gets one when the buffer has room for it.
LSTATUS HandOut(const RegValue& value, LPDWORD type, LPBYTE data, LPDWORD bytes) {
    const auto size = static_cast<DWORD>(value.data.size());
    const DWORD room = data == nullptr || bytes == nullptr ? 0 : *bytes;
    if (type != nullptr) *type = value.type;
    if (bytes != nullptr) *bytes = size;
    if (data == nullptr) return ERROR_SUCCESS;
    if (room < size) return ERROR_MORE_DATA;
    std::ranges::copy(value.data, data);
    const bool ended = size >= 2 && data[size - 2] == 0 && data[size - 1] == 0;
    if (IsText(value.type) && !ended && room - size >= sizeof(WCHAR)) {
        std::fill_n(data + size, sizeof(WCHAR), BYTE{0});
    }
    return ERROR_SUCCESS;
}

}  // namespace

LSTATUS RegQueryValueExW(HKEY key, LPCWSTR name, LPDWORD reserved, LPDWORD type, LPBYTE data,
                         LPDWORD bytes) {
    if (reserved != nullptr || (data != nullptr && bytes == nullptr))
        return ERROR_INVALID_PARAMETER;
    return ReadKey(key, KEY_QUERY_VALUE, [&](const KeyContext& on) -> LSTATUS {
        const std::optional<RegValue> value = on.key.FindValue(ViewOf(name));
        return value ? HandOut(*value, type, data, bytes) : LSTATUS{ERROR_FILE_NOT_FOUND};
    });
}

LSTATUS RegSetValueExW(HKEY key, LPCWSTR name, DWORD reserved, DWORD type, const BYTE* data,
                       DWORD bytes) {
    if (reserved != 0 || (data == nullptr && bytes != 0)) return ERROR_INVALID_PARAMETER;
    return ChangeKey(key, KEY_SET_VALUE, [&](const KeyContext& on) {
        const LSTATUS code = CheckValueName(ViewOf(name));
        if (code != ERROR_SUCCESS) return code;
        on.key.SetValue(ViewOf(name), type, std::span(data, bytes));
        return LSTATUS{ERROR_SUCCESS};
    });
}

LSTATUS RegDeleteValueW(HKEY key, LPCWSTR name) {
    return ChangeKey(key, KEY_SET_VALUE, [&](const KeyContext& on) -> LSTATUS {
        return on.key.RemoveValue(ViewOf(name)) ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND;
    });
}

LSTATUS RegEnumValueW(HKEY key, DWORD index, LPWSTR name, LPDWORD name_size, LPDWORD reserved,
                      LPDWORD type, LPBYTE data, LPDWORD bytes) {
    if (name == nullptr || name_size == nullptr || reserved != nullptr ||
        (data != nullptr && bytes == nullptr)) {
        return ERROR_INVALID_PARAMETER;
    }
    return ReadKey(key, KEY_QUERY_VALUE, [&](const KeyContext& on) -> LSTATUS {
        const std::optional<RegValue> value = on.key.ValueAt(index);
        if (!value) return ERROR_NO_MORE_ITEMS;
        if (*name_size <= value->name.size()) return ERROR_MORE_DATA;
        std::copy_n(value->name.c_str(), value->name.size() + 1, name);
        *name_size = static_cast<DWORD>(value->name.size());
        return HandOut(*value, type, data, bytes);
    });
}
