// Windows file names as paths of this host, and back.
//
// "C:\x" is drive_c/x under the host root, "Z:\" is "/", a name without a drive is relative to the
// current folder, a name that starts with "/" is taken as it is. Backslash and slash both separate.
// "." and ".." are taken away by the text alone and stop at the drive's root. A component that does
// not exist in the spelling given is looked up in its folder without regard to case.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>

namespace host {

struct HostPath {
    DWORD error = NO_ERROR;  // Win32 code; the other members hold only when it is NO_ERROR
    std::string path;        // never empty, no separator at its end except for "/"
    bool ends_in_separator = false;
    bool is_drive_root = false;
};

// Translates a file name. Errors: ERROR_PATH_NOT_FOUND for an empty name, another drive or a
// network name; ERROR_INVALID_NAME for characters that Windows refuses and for unpaired surrogates.
// Whether the file exists is not an error of the translation. Any thread.
[[nodiscard]] HostPath ToHostPath(LPCWSTR name);

// The Windows name of an absolute host path: "C:\..." under drive_c, else "Z:\...". Bytes that are
// not UTF-8 become U+FFFD.
std::u16string FromHostPath(std::string_view path);

// Strict conversions: false, with the output unspecified, for malformed input.
[[nodiscard]] bool NameToUtf8(std::u16string_view name, std::string& utf8);
[[nodiscard]] bool NameFromUtf8(std::string_view utf8, std::u16string& name);

// What to report when a call on `path` failed with `code` of errno: a missing file is
// ERROR_FILE_NOT_FOUND in a folder that exists and ERROR_PATH_NOT_FOUND elsewhere.
DWORD PathError(int code, const std::string& path);

}  // namespace host
