// Where documents lie, as the shell's registry key says.
#pragma once

#include <windows.h>

#include "mox_classes/text/unicode_string.h"
#include "qv_api.h"

inline constexpr const WCHAR* kShellFoldersKey =
    TEXT("SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\explorer\\Shell Folders");

// The user's documents, or `defaultPath` when the system does not say.
QV_API UnicodeString GetUserDocument(UnicodeString defaultPath);
// The documents of all users; "" when the system does not say.
QV_API UnicodeString GetPublicDocument();
