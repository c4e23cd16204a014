// The lookup of a product setting in the user's and the machine's keys.
#include <initializer_list>

#include "driver_global/installation.h"
#include "mox_classes/memory/handles.h"
#include "mox_classes/text/log_here.h"
#include "mox_classes/text/sys_error.h"
#include "mox_classes/text/sysutils_paths.h"
#include "mox_log/registry.h"
#include "mox_log/registry_text.h"

namespace {

// Whether this place ends the search. A value that exists but cannot be read does not end it.
bool FindSetting(HKEY root, const UnicodeString& path, const UnicodeString& name,
                 UnicodeString& value) {
    const System::TKeyHandle key(Mox::RegOpenToRead(root, path));
    if (!key) return false;
    const Mox::TRegText read = Mox::ReadRegText(key.Get(), name);
    if (read.state == Mox::TRegTextState::Failed) {
        UnicodeString text;
        Mox::LogHere(
            'X', text.sprintf(TEXT("RegQueryValueEx(): %s Key=\"%s|%s\""),
                              Mox::GetSysError(static_cast<DWORD>(read.code), true), path, name));
    }
    value = read.text;
    return read.state == Mox::TRegTextState::Found;
}

}  // namespace

UnicodeString GetRegistrySetting(const UnicodeString& section, const UnicodeString& name) {
    UnicodeString value;
    for (const HKEY root : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE}) {
        if (section.Length() > 0 &&
            FindSetting(root, Sysutils::ConfirmPathString(kPrintersKey) + section, name, value)) {
            return value;
        }
        if (FindSetting(root, kProductKey, name, value)) return value;
    }
    return UnicodeString();
}
