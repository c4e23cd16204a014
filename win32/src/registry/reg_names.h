// Names of the registry: its roots, the paths of keys, and what a name may be.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace host {

inline constexpr std::size_t kMaxKeyName = 255;      // UTF-16 units
inline constexpr std::size_t kMaxValueName = 16383;  // UTF-16 units
inline constexpr std::size_t kMaxKeyDepth = 512;     // levels below a root

using RegPath = std::vector<std::u16string>;

// One of the predefined keys. Its number in the store is its place in RegRoots(), from 1 on.
struct RegRoot {
    HKEY handle;
    std::u16string_view name, short_name;
    const char* text_file;  // that earlier versions kept it in
};
inline constexpr std::size_t kRegRoots = 5;
const RegRoot (&RegRoots())[kRegRoots];

// The number of a root; 0 when there is none. A name may be whole or short ("HKLM").
std::int64_t FindRoot(HKEY handle);
std::int64_t FindRoot(std::u16string_view name);
// Cuts the root off the front of a key's whole path.
std::int64_t TakeRoot(std::u16string_view& path);

// Cuts "a\b" into its names; runs of separators count as one. ERROR_BAD_PATHNAME for a path that
// begins with a separator.
LSTATUS SplitKeyPath(std::u16string_view text, RegPath& path);

// Whether a key of this name, or a value of this name, can be made and written as text:
// ERROR_INVALID_PARAMETER when it is too long, ERROR_INVALID_NAME for a line break in a key's name,
// ERROR_NO_UNICODE_TRANSLATION for an unpaired surrogate.
LSTATUS CheckKeyName(std::u16string_view name);
LSTATUS CheckValueName(std::u16string_view name);

// The name as it is compared: upper-case units, high byte first, so that bytes sort as units do.
std::string FoldedName(std::u16string_view name);

}  // namespace host
