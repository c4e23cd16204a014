#include <windows.h>

#include "files.h"

namespace qv {

DWORD MoveInPlace(const UnicodeString& from, const UnicodeString& to) {
    return MoveFileExW(from.t_str(), to.t_str(), MOVEFILE_REPLACE_EXISTING) ? DWORD{NO_ERROR}
                                                                            : GetLastError();
}

}  // namespace qv
