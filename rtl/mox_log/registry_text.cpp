#include "mox_log/registry_text.h"

#include <cstring>
#include <vector>

namespace Mox {

namespace {

constexpr DWORD kSmallestText = 3;  // fewer bytes hold at most a terminator
constexpr int kReadAttempts = 8;

UnicodeString TextOfBytes(const std::vector<BYTE>& bytes, DWORD size) {
    if (size < kSmallestText) return UnicodeString();
    std::vector<WCHAR> units(size / sizeof(WCHAR));
    std::memcpy(units.data(), bytes.data(), units.size() * sizeof(WCHAR));
    if (units.back() == 0) units.pop_back();
    return UnicodeString(units.data(), static_cast<long long>(units.size()));
}

}  // namespace

TRegText ReadRegText(HKEY key, const UnicodeString& name) {
    TRegText result;
    DWORD size = 0;
    if (RegQueryValueExW(key, name.t_str(), nullptr, &result.type, nullptr, &size) !=
        ERROR_SUCCESS) {
        return result;
    }
    std::vector<BYTE> bytes;
    result.code = ERROR_SUCCESS;
    for (int attempt = 0; attempt < kReadAttempts; ++attempt) {
        if (result.type != REG_SZ) {
            result.state = TRegTextState::WrongType;
            return result;
        }
        if (size < kSmallestText) break;
        bytes.resize(size);
        result.code =
            RegQueryValueExW(key, name.t_str(), nullptr, &result.type, bytes.data(), &size);
        if (result.code != ERROR_MORE_DATA) break;
    }
    if (result.code != ERROR_SUCCESS) {
        result.state = TRegTextState::Failed;
    } else if (result.type != REG_SZ) {
        result.state = TRegTextState::WrongType;
    } else {
        result.state = TRegTextState::Found;
        result.text = TextOfBytes(bytes, size);
    }
    return result;
}

}  // namespace Mox
