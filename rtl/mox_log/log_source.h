// How the library's own modules log: one short call with level and text.
//
// Each source folder has a header source_log.h that names the folder once and offers Log(level,
// text) on top of this; the line number is that of the call site.
#pragma once

#include "mox_classes/text/unicode_string.h"

namespace Mox {

// Logs through GetLogger() and returns the logged text. `module` is the folder's name as log lines
// show it.
UnicodeString LogFrom(const UnicodeString& module, int level, const UnicodeString& text, int line);

}  // namespace Mox
