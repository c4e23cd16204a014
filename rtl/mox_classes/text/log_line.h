// The shape of a log line as people read it, and the parts that it is made of.
#pragma once

#include <windows.h>

#include "mox_classes/text/unicode_string.h"
#include "qv_api.h"

namespace Mox {

// "i T3412.S1 [driver_global,701] text", followed by " (+label 3bytes 010203)" when there is a data
// block; of a block longer than 100 bytes the first 100 are shown.
UnicodeString FormatLogLine(int level, const UnicodeString& source, int line,
                            const UnicodeString& text, const UnicodeString& dataLabel,
                            const void* data, int dataSize);

// Formats a line as the logger does and shows it on the debugger output. Reads no logger state.
QV_API UnicodeString ODSLog(int level, UnicodeString source, int line, UnicodeString text,
                            UnicodeString dataLabel, void* data, int dataSize);

// Session of the calling process; 0xFFFFFFFF when it is not known.
QV_API DWORD GetSessionId();
// Two upper-case digits per byte, a blank before every eighth but the first group.
QV_API UnicodeString GetHexEncoded(const void* data, int size);
// Module name of a source file: its name without folder and without the last extension.
QV_API UnicodeString BuildNamespace(UnicodeString path);

}  // namespace Mox
