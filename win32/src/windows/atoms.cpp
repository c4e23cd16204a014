// Global atoms and the numbers of registered messages.
#include <windows.h>

#include <algorithm>
#include <cstring>
#include <string>

#include "windows/name_table.h"

using namespace host;

namespace {

ATOM FailAtom(DWORD code) {
    SetLastError(code);
    return 0;
}

// The meaning of a name before the table is asked: an atom with its own number, an error, or a
// text.
struct AtomName {
    WideView text;
    ATOM integer = 0;
    DWORD error = NO_ERROR;
};

// "#123" means the number 123. A '#' in front of anything else is part of a name.
bool ReadInteger(WideView text, DWORD& number) {
    if (text.size() < 2 || text[0] != u'#') return false;
    number = 0;
    for (const WCHAR unit : text.substr(1)) {
        if (unit < u'0' || unit > u'9') return false;
        number = std::min<DWORD>(number * 10 + (unit - u'0'), 0x10000);
    }
    return true;
}

AtomName ReadName(LPCWSTR name) {
    AtomName result;
    DWORD number = 0;
    const auto value = reinterpret_cast<ULONG_PTR>(name);
    const bool is_number = value <= 0xFFFF;
    if (is_number) {
        number = static_cast<DWORD>(value);
    } else {
        result.text = name;
    }
    if (is_number || ReadInteger(result.text, number)) {
        result.integer = number < kFirstNamed ? static_cast<ATOM>(number) : ATOM{0};
        if (result.integer == 0) result.error = ERROR_INVALID_PARAMETER;
    } else if (result.text.empty()) {
        result.error = ERROR_INVALID_NAME;
    } else if (result.text.size() > kLongestAtomName) {
        result.error = ERROR_INVALID_PARAMETER;
    }
    return result;
}

UINT CopyName(WideView name, LPWSTR buffer, int size) {
    const std::size_t length = std::min(name.size(), static_cast<std::size_t>(size) - 1);
    std::memcpy(buffer, name.data(), length * sizeof(WCHAR));
    buffer[length] = 0;
    if (length < name.size()) SetLastError(ERROR_MORE_DATA);
    return static_cast<UINT>(length);
}

}  // namespace

ATOM GlobalAddAtomW(LPCWSTR name) {
    const AtomName wanted = ReadName(name);
    if (wanted.error != NO_ERROR) return FailAtom(wanted.error);
    if (wanted.integer != 0) return wanted.integer;
    ATOM atom = 0;
    const DWORD error = NameTable::Atoms().Add(wanted.text, atom);
    return error == NO_ERROR ? atom : FailAtom(error);
}

ATOM GlobalDeleteAtom(ATOM atom) {
    if (atom < kFirstNamed) return 0;
    const DWORD error = NameTable::Atoms().Release(atom);
    if (error == NO_ERROR) return 0;
    SetLastError(error);
    return atom;
}

UINT GlobalGetAtomNameW(ATOM atom, LPWSTR buffer, int size) {
    if (atom == 0) return FailAtom(ERROR_INVALID_PARAMETER);
    if (buffer == nullptr || size <= 0) return FailAtom(ERROR_MORE_DATA);
    if (atom < kFirstNamed) return CopyName(FromUtf8('#' + std::to_string(atom)), buffer, size);
    WideString name;
    const DWORD error = NameTable::Atoms().NameOf(atom, name);
    return error == NO_ERROR ? CopyName(name, buffer, size) : FailAtom(error);
}

UINT RegisterWindowMessageW(LPCWSTR name) {
    const auto value = reinterpret_cast<ULONG_PTR>(name);
    const WideView text = value <= 0xFFFF ? WideView() : WideView(name);
    if (text.empty() || text.size() > kLongestAtomName) return FailAtom(ERROR_INVALID_PARAMETER);
    ATOM number = 0;
    const DWORD error = NameTable::Messages().Add(text, number);
    return error == NO_ERROR ? number : FailAtom(error);
}
