#include "driver_devmode/spool_file.h"

#include <windows.h>

#include "mox_classes/text/log_here.h"
#include "mox_classes/text/log_line.h"
#include "mox_classes/text/sysutils.h"

UnicodeString MakeSpoolFilename() {
    LARGE_INTEGER counter{};
    QueryPerformanceCounter(&counter);
    const UnicodeString folder = Sysutils::ConfirmPathString(Sysutils::GetTempPathW());
    UnicodeString name;
    name.printf(TEXT("%s%08x_%s.qvspl"), folder, Mox::GetSessionId(),
                Mox::GetHexEncoded(&counter, sizeof(counter)));
    UnicodeString text;
    Mox::LogHere(' ',
                 text.sprintf(TEXT("[MakeSpoolFilename()] sTempPath=%s, sSpool=%s"), folder, name));
    return name;
}
