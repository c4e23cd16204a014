#include "mox_classes/text/sysutils_paths.h"

#include <windows.h>

#include <string_view>

#include "mox_classes/memory/handles.h"
#include "mox_classes/text/sysutils_text.h"

namespace Sysutils {

namespace {

using TUnits = std::basic_string_view<WCHAR>;

constexpr TUnits kNotInFileNames = TEXT("\\/:*?\"<>|");
constexpr TUnits kNotInDirNames = TEXT("/*?\"<>|");

WCHAR FullWidth(WCHAR unit) {
    return static_cast<WCHAR>(unit + 0xFEE0);
}

UnicodeString Fix(TUnits chars, UnicodeString text, WCHAR replacement) {
    if (text.Length() == 0) return UnicodeString();
    text.Unique();
    WCHAR* const units = text.data();
    for (int i = 0; i < text.Length(); ++i) {
        if (chars.find(units[i]) == TUnits::npos) continue;
        units[i] = replacement == 0 ? FullWidth(units[i]) : replacement;
    }
    return text;
}

bool IsAbsolute(const UnicodeString& path) {
    if (path.Length() <= 2) return false;
    return (path[1] == '\\' && path[2] == '\\') || (path[2] == ':' && path[3] == '\\');
}

// Asks the folder for the file. Needed when the file's attributes cannot be read, because it is
// locked or access is denied.
bool IsListedAsFile(const UnicodeString& name) {
    WIN32_FIND_DATAW found;
    const System::TSearchHandle search(FindFirstFileW(name.t_str(), &found));
    return search && (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

}  // namespace

UnicodeString ExtractFileName(UnicodeString name) {
    return name.SubString(LastDelimiter(TEXT("\\:"), name) + 1, name.Length());
}

UnicodeString ExtractFilePath(UnicodeString name) {
    return name.SubString(1, LastDelimiter(TEXT("\\:"), name));
}

UnicodeString ExtractFileExt(UnicodeString name) {
    const int last = LastDelimiter(TEXT(".\\:"), name);
    if (last == 0 || name.t_str()[last - 1] != '.') return UnicodeString();
    return name.SubString(last, name.Length());
}

UnicodeString ChangeFileExt(UnicodeString name, UnicodeString ext, bool check_ext) {
    const UnicodeString old = ExtractFileExt(name);
    if (old.Length() == 0 || (check_ext && !IsAlphaNumericString(old))) return name + ext;
    return name.SubString(1, name.Length() - old.Length()) + ext;
}

UnicodeString ConfirmPathString(UnicodeString path) {
    const int length = path.Length();
    return length == 0 || IsPathDelimiter(path, length) ? path : path + TEXT("\\");
}

UnicodeString GetFullpath(UnicodeString base, UnicodeString path) {
    if (base.Length() == 0 || path.Length() == 0 || IsAbsolute(path)) return path;
    return ConfirmPathString(base) + path;
}

UnicodeString FixCharacters(const UnicodeString& chars, UnicodeString text, WCHAR replacement) {
    return Fix(TUnits(chars.t_str(), static_cast<std::size_t>(chars.Length())), std::move(text),
               replacement);
}

UnicodeString FixFileName(UnicodeString name, WCHAR replacement) {
    return Fix(kNotInFileNames, std::move(name), replacement);
}

UnicodeString FixDirName(UnicodeString name, WCHAR replacement) {
    return Fix(kNotInDirNames, std::move(name), replacement);
}

bool FileExists(UnicodeString name) {
    const DWORD attributes = GetFileAttributesW(name.t_str());
    if (attributes != INVALID_FILE_ATTRIBUTES) return (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
    switch (GetLastError()) {
        case ERROR_FILE_NOT_FOUND:
        case ERROR_PATH_NOT_FOUND:
        case ERROR_INVALID_NAME:
            return false;
        default:
            return IsListedAsFile(name);
    }
}

bool DirectoryExists(UnicodeString name) {
    const DWORD attributes = GetFileAttributesW(name.t_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

}  // namespace Sysutils
