#include "mox_classes/text/sysutils_platform.h"
#include "settings/journal.h"

namespace qv {

std::string JournalFolder() {
    const UnicodeString folder = Sysutils::GetEnvExpanded(TEXT("%LOCALAPPDATA%"));
    if (folder.Length() == 0 || folder == UnicodeString(TEXT("%LOCALAPPDATA%")))
        throw Failure("LOCALAPPDATA is not set", ExitCode::kCannotOpen);
    return ToUtf8(folder) + "\\Halvorn\\Vantrel\\qv";
}

}  // namespace qv
