// Starting a program, elevated when that is asked for, and the shield that announces it on buttons.
#pragma once

#include <windows.h>

#include "mox_classes/text/unicode_string.h"
#include "qv_api.h"

// Starts `program` in its own folder. Always true; a start that failed shows in the log only.
QV_API bool RunAs(UnicodeString program, UnicodeString parameters, bool elevate);

QV_API void ShowShieldIcon(HWND button);
// Always null: the button draws its shield itself.
QV_API HICON GetShieldIcon();
