#include "mox_log/log_source.h"

#include "mox_log/logger.h"

namespace Mox {

UnicodeString LogFrom(const UnicodeString& module, int level, const UnicodeString& text, int line) {
    return GetLogger()->Log(level, module, line, text, UnicodeString(), nullptr, 0);
}

}  // namespace Mox
