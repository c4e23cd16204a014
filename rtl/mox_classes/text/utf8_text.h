// UTF-8 into strings: the one road by which files, records and blocks become text.
#pragma once

#include "mox_classes/text/unicode_string.h"
#include "qv_api.h"

namespace System {

// The text of `count` bytes as the platform converts it: what is ill-formed becomes U+FFFD. Null
// when there is nothing to convert.
QV_API UnicodeString StringFromUtf8(const char* bytes, int count);

}  // namespace System
