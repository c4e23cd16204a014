#include "os_xp/program_start.h"

#include <commctrl.h>
#include <shellapi.h>

#include "mox_classes/text/log_here.h"
#include "mox_classes/text/sys_error.h"
#include "mox_classes/text/sysutils_paths.h"

static_assert(sizeof(SHELLEXECUTEINFOW) == 112);

bool RunAs(UnicodeString program, UnicodeString parameters, bool elevate) {
    const UnicodeString folder = Sysutils::ExtractFilePath(program);
    SHELLEXECUTEINFOW start{};
    start.cbSize = sizeof(start);
    start.lpVerb = elevate ? TEXT("runas") : nullptr;
    start.lpFile = program.t_str();
    start.lpParameters = parameters.t_str();
    start.lpDirectory = folder.t_str();
    start.nShow = SW_SHOWNORMAL;
    if (!ShellExecuteExW(&start)) {
        const UnicodeString reason = Mox::GetSysError(GetLastError(), true);
        Mox::LogHere('X', UnicodeString().sprintf(TEXT("ShellExecuteEx('%s', '%s') failed: %s"),
                                                  program, parameters, reason));
    }
    return true;
}

void ShowShieldIcon(HWND button) {
    PostMessageW(button, BCM_SETSHIELD, 0, TRUE);
}

HICON GetShieldIcon() {
    return nullptr;
}
