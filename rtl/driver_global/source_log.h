// Logging from this folder: its name in log lines is set here and nowhere else.
#pragma once

#include "mox_log/log_source.h"

namespace driver_global {

inline UnicodeString Log(int level, const UnicodeString& text, int line = __builtin_LINE()) {
    return Mox::LogFrom(TEXT("driver_global"), level, text, line);
}

}  // namespace driver_global
