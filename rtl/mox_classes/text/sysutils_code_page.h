// Byte-order marks.
#pragma once

#include "mox_classes/text/code_page.h"
#include "qv_api.h"

namespace Sysutils {

// The encoding that the first bytes of a text announce, ASCII without a mark; the result is the
// length of the mark in bytes.
QV_API int CheckBOM(System::TCodePage* code_page, const void* data, int size);

}  // namespace Sysutils
