#include <dlfcn.h>
#include <qv_host.h>
#include <unistd.h>

#include "console.h"
#include "doctor/examination.h"
#include "qv_rtl_main/runtime_version.h"

namespace qv {

HostFacts GetHostFacts() {
    HostFacts facts;
    Dl_info library{};
    if (dladdr(reinterpret_cast<const void*>(&QVRtlVersion), &library) != 0)
        facts.library = library.dli_fname;
    char machine[256] = {};
    if (gethostname(machine, sizeof(machine) - 1) == 0) facts.machine = machine;
    WCHAR folder[4096];
    const DWORD length = QvHostRoot(folder, 4096);
    if (length > 0 && length < 4096) facts.root = ToUtf8(UnicodeString(folder));
    return facts;
}

}  // namespace qv
