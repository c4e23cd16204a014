// File names and paths. Delimiters are '\' and ':'; '/' is none.
#pragma once

#include "mox_classes/text/unicode_string.h"
#include "qv_api.h"

namespace Sysutils {

using System::UnicodeString;

QV_API UnicodeString ExtractFileName(UnicodeString name);
// The last delimiter included.
QV_API UnicodeString ExtractFilePath(UnicodeString name);
// The dot included.
QV_API UnicodeString ExtractFileExt(UnicodeString name);
// `ext` carries its own dot. With `check_ext` an old extension that is not alphanumeric is part of
// the name and stays.
[[nodiscard]] QV_API UnicodeString ChangeFileExt(UnicodeString name, UnicodeString ext,
                                                 bool check_ext);
// Ends in '\', but for the empty text.
[[nodiscard]] QV_API UnicodeString ConfirmPathString(UnicodeString path);
// `path` below `base`, unless it is absolute or one of them is empty.
QV_API UnicodeString GetFullpath(UnicodeString base, UnicodeString path);

// Return a copy of the text in which each unit that occurs in `chars` (that no file or folder name
// can hold) is replaced. `replacement` 0 means the unit's full-width form. Nothing is thrown but
// std::bad_alloc.
[[nodiscard]] QV_API UnicodeString FixCharacters(const UnicodeString& chars, UnicodeString text,
                                                 WCHAR replacement);
[[nodiscard]] QV_API UnicodeString FixFileName(UnicodeString name, WCHAR replacement);
[[nodiscard]] QV_API UnicodeString FixDirName(UnicodeString name, WCHAR replacement);

// A file that is there but cannot be opened exists.
QV_API bool FileExists(UnicodeString name);
QV_API bool DirectoryExists(UnicodeString name);

}  // namespace Sysutils
