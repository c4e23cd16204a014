// What the platform tells: folders, modules, environment, version. Failure gives the empty string
// or false.
#pragma once

#include "mox_classes/text/unicode_string.h"
#include "qv_api.h"

namespace Sysutils {

using System::UnicodeString;

QV_API UnicodeString GetEnvExpanded(UnicodeString text);
QV_API UnicodeString GetSystemDir();
QV_API UnicodeString GetTempPathW();
// The module's path, up to 4095 code units.
QV_API UnicodeString ExeName(HINSTANCE module);
// Empty for every id; UnicodeString::LoadStr reads a module's string table.
QV_API UnicodeString LoadStrW(int id);
// Whether the platform's version is at least this one. Read once.
QV_API bool CheckWin32Version(int major, int minor);

}  // namespace Sysutils
