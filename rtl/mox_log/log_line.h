// The shape of a log line as people read it.
#pragma once

#include "mox_classes/text/unicode_string.h"

namespace Mox {

// "i T3412.S1 [driver_global,701] text", followed by " (+label 3bytes 010203)" when there is a data
// block; of a block longer than 100 bytes the first 100 are shown.
UnicodeString FormatLogLine(int level, const UnicodeString& source, int line,
                            const UnicodeString& text, const UnicodeString& dataLabel,
                            const void* data, int dataSize);

}  // namespace Mox
