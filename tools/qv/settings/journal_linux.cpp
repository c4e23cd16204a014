#include <qv_host.h>

#include "settings/journal.h"

namespace qv {

// Beside the registry that the changes are in: another host root is another machine.
std::string JournalFolder() {
    WCHAR folder[4096];
    const DWORD length = QvHostRoot(folder, 4096);
    if (length == 0 || length >= 4096)
        throw Failure("the host root is not known", ExitCode::kCannotOpen);
    return ToUtf8(UnicodeString(folder)) + "/qv";
}

}  // namespace qv
