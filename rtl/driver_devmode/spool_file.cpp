#include "driver_devmode/spool_file.h"

#include <windows.h>

#include <algorithm>
#include <atomic>

#include "mox_classes/text/log_here.h"
#include "mox_classes/text/log_line.h"
#include "mox_classes/text/sysutils.h"

namespace {

// The performance counter, or the number behind the last one: two threads that ask within one of
// its ticks would write two jobs into one file.
LONGLONG NextCount() {
    static std::atomic<LONGLONG> last{0};
    LARGE_INTEGER counter{};
    QueryPerformanceCounter(&counter);
    LONGLONG before = last.load();
    LONGLONG own = counter.QuadPart;
    do {
        own = std::max<LONGLONG>(counter.QuadPart, before + 1);
    } while (!last.compare_exchange_weak(before, own));
    return own;
}

}  // namespace

UnicodeString MakeSpoolFilename() {
    const LONGLONG counter = NextCount();
    const UnicodeString folder = Sysutils::ConfirmPathString(Sysutils::GetTempPathW());
    UnicodeString name;
    name.printf(TEXT("%s%08x_%s.qvspl"), folder, Mox::GetSessionId(),
                Mox::GetHexEncoded(&counter, sizeof(counter)));
    UnicodeString text;
    Mox::LogHere(' ',
                 text.sprintf(TEXT("[MakeSpoolFilename()] sTempPath=%s, sSpool=%s"), folder, name));
    return name;
}
