#include "mox_classes/text/sys_error.h"

#include "mox_classes/memory/handles.h"

namespace Mox {

namespace {

constexpr DWORD kNeutralLanguage = 0x400;

// Inserts such as %1 stay in the text, because there are no values for them.
UnicodeString SystemText(DWORD code) {
    System::TLocalBlock buffer;
    const DWORD length = FormatMessageW(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
        nullptr, code, kNeutralLanguage, reinterpret_cast<LPWSTR>(buffer.Receive()), 0, nullptr);
    return UnicodeString(static_cast<const WCHAR*>(buffer.Get()), static_cast<long long>(length));
}

}  // namespace

UnicodeString GetSysError(DWORD code, bool withCode) {
    const UnicodeString system_text = SystemText(code);
    if (!withCode) return system_text;
    UnicodeString text;
    return text.sprintf(TEXT("[%d]%s"), code, system_text);
}

}  // namespace Mox
