// Logging from this folder: its name in log lines is set here and nowhere else.
#pragma once

#include "mox_log/log_source.h"

namespace mox_classes {

inline constexpr const WCHAR* kModule = TEXT("mox_classes");

inline UnicodeString Log(int level, const UnicodeString& text, int line = __builtin_LINE()) {
    return Mox::LogFrom(kModule, level, text, line);
}

}  // namespace mox_classes
