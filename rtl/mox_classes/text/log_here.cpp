#include "mox_classes/text/log_here.h"

#include <algorithm>

#include "mox_classes/text/log_line.h"

namespace Mox {

UnicodeString ModuleName(const char* file) {
    const std::string_view module = ModuleOf(file);
    UnicodeString name;
    name.SetLength(static_cast<long long>(module.size()));
    std::copy(module.begin(), module.end(), name.data());
    return name;
}

UnicodeString ShowStatus(const UnicodeString& text, int line, const char* file) {
    return ODSLog('>', ModuleName(file), line, text, UnicodeString(), nullptr, 0);
}

}  // namespace Mox
