// Logging from this folder: its name in log lines is set here and nowhere else.
#pragma once

#include "mox_log/log_source.h"

namespace qv_rtl_main {

inline UnicodeString Log(int level, const UnicodeString& text, int line = __builtin_LINE()) {
    return Mox::LogFrom(TEXT("qv_rtl_main"), level, text, line);
}

}  // namespace qv_rtl_main
