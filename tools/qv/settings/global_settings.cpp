#include "settings/global_settings.h"

#include <windows.h>

#include "driver_global/installation.h"
#include "mox_classes/memory/handles.h"
#include "mox_log/registry.h"
#include "settings/printer_settings.h"

namespace qv {

std::optional<UnicodeString> ReadGlobal(const UnicodeString& name) {
    const System::TKeyHandle key(Mox::RegOpenToRead(HKEY_LOCAL_MACHINE, kProductKey));
    if (!key) return {};
    // A missing value returns the default. Two different defaults tell it from a stored text.
    UnicodeString value = Mox::RegReadString(key.Get(), name, TEXT("0"));
    if (value != Mox::RegReadString(key.Get(), name, TEXT("1"))) return {};
    return value;
}

void WriteGlobal(const UnicodeString& name, const std::optional<UnicodeString>& value) {
    const System::TKeyHandle key(Mox::RegOpenToWrite(HKEY_LOCAL_MACHINE, kProductKey));
    DWORD code = key ? DWORD{NO_ERROR} : GetLastError();
    if (key && value) {
        code = Mox::RegWriteString(key.Get(), name, *value) ? DWORD{NO_ERROR} : GetLastError();
    } else if (key) {
        code = static_cast<DWORD>(RegDeleteValueW(key.Get(), name.t_str()));
    }
    if (code != NO_ERROR && code != ERROR_FILE_NOT_FOUND)
        throw Failure("cannot set '" + OneLine(name) + "': " + SystemText(code));
}

}  // namespace qv
