// The common file dialog in one call.
#pragma once

#include <windows.h>

#include "mox_classes/text/unicode_string.h"
#include "qv_api.h"

// Asks the user for a file to open or, without `open`, to save; true when one was chosen, which
// `fileName` then names. `fileName` is also the name offered first, cut to 259 characters; with
// `mustExist` a name without a file is cleared, and stays so when nothing is chosen. `filter` holds
// pairs of description and pattern: "Texts|*.txt|All files|*.*".
QV_API bool OpenSaveFileDialog(HWND owner, UnicodeString defaultExt, UnicodeString filter,
                               UnicodeString initialDir, UnicodeString title,
                               UnicodeString& fileName, bool mustExist, bool overwritePrompt,
                               bool noChangeDir, bool open);
