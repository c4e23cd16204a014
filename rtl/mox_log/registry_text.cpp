#include "mox_log/registry_text.h"

#include <iterator>
#include <vector>

namespace Mox {

namespace {

constexpr DWORD kSmallestText = 3;  // fewer bytes hold at most a terminator
constexpr int kReadAttempts = 8;

UnicodeString TextOfUnits(const WCHAR* units, DWORD bytes) {
    if (bytes < kSmallestText) return UnicodeString();
    return UnicodeString(units, (bytes - DWORD{sizeof(WCHAR)}) / DWORD{sizeof(WCHAR)});
}

// Reads into a buffer of `bytes` bytes. Stores the code and, when the value is a text, the text.
void ReadInto(HKEY key, const UnicodeString& name, WCHAR* units, DWORD& bytes, TRegText& result) {
    result.code = RegQueryValueExW(key, name.t_str(), nullptr, &result.type,
                                   reinterpret_cast<BYTE*>(units), &bytes);
    if (result.code == ERROR_SUCCESS && result.type == REG_SZ) {
        result.state = TRegTextState::Found;
        result.text = TextOfUnits(units, bytes);
    }
}

}  // namespace

// Nearly every value fits the buffer on the stack, which saves a second call: half of the time of a
// read.
TRegText ReadRegText(HKEY key, const UnicodeString& name) {
    TRegText result;
    WCHAR first[256];
    DWORD bytes = sizeof first;
    ReadInto(key, name, first, bytes, result);
    if (result.code != ERROR_SUCCESS && result.code != ERROR_MORE_DATA) return result;
    std::vector<WCHAR> units;
    for (int attempt = 0; attempt < kReadAttempts && result.code == ERROR_MORE_DATA; ++attempt) {
        if (result.type != REG_SZ) break;
        units.resize(bytes / sizeof(WCHAR) + 1);
        ReadInto(key, name, units.data(), bytes, result);
    }
    if (result.type != REG_SZ) {
        result.state = TRegTextState::WrongType;
    } else if (result.code != ERROR_SUCCESS) {
        result.state = TRegTextState::Failed;
    }
    return result;
}

}  // namespace Mox
