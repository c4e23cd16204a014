// Logging from this folder: its name in log lines is set here and nowhere else.
#pragma once

#include "mox_log/log_source.h"

namespace os_xp {

inline UnicodeString Log(int level, const UnicodeString& text, int line = __builtin_LINE()) {
    return Mox::LogFrom(TEXT("os_xp"), level, text, line);
}

}  // namespace os_xp
