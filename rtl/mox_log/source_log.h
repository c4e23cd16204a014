// Logging from this folder: its name in log lines is set here and nowhere else.
#pragma once

#include "mox_log/log_source.h"
#include "mox_log/logger.h"

namespace mox_log {

inline constexpr const WCHAR* kModule = TEXT("mox_log");

inline UnicodeString Log(int level, const UnicodeString& text, int line = __builtin_LINE()) {
    return Mox::LogFrom(kModule, level, text, line);
}

// A status line of the logging machinery, which must not re-enter the logger.
inline UnicodeString Status(const UnicodeString& text, int line = __builtin_LINE()) {
    return Mox::ODSLog('>', kModule, line, text, UnicodeString(), nullptr, 0);
}

}  // namespace mox_log
