// Registry access: REG_SZ and REG_DWORD values, one shot or on an open key, and pairs of keys in
// which a user's value overrides the machine's.
//
// Nothing throws. A missing key or value gives the default without a word; other failures are
// logged at level 'X' and give the default. Opening and writing leave the code as the last error.
// Any thread may call; an open key belongs to its caller. The last two bytes of a text count as its
// terminator, whatever they are: n bytes give (n - 2) / 2 characters. An odd byte count and a value
// that grows while it is read never lead outside a buffer.
#pragma once

#include <windows.h>

#include "mox_classes/text/unicode_string.h"
#include "qv_api.h"

namespace Mox {

// An empty path means `root` itself.
QV_API UnicodeString ReadRegistry(HKEY root, UnicodeString path, UnicodeString name);
QV_API bool WriteRegistry(HKEY root, UnicodeString path, UnicodeString name, UnicodeString value);

// Null when the path is empty or cannot be opened. Closed with RegClose.
[[nodiscard]] QV_API HKEY RegOpenToRead(HKEY root, const UnicodeString& path);
// Creates the key when it is missing.
[[nodiscard]] QV_API HKEY RegOpenToWrite(HKEY root, const UnicodeString& path);
// Ignores a key that is null or has all bits set.
QV_API void RegClose(HKEY key);

QV_API UnicodeString RegReadString(HKEY key, UnicodeString name, UnicodeString defaultValue);
QV_API DWORD RegReadInteger(HKEY key, UnicodeString name, DWORD defaultValue);
QV_API bool RegWriteString(HKEY key, UnicodeString name, UnicodeString value);
QV_API bool RegWriteInteger(HKEY key, UnicodeString name, DWORD value);

}  // namespace Mox

// `path` under HKEY_CURRENT_USER and HKEY_LOCAL_MACHINE; a key that cannot be opened is null.
QV_API void MoxRegOpenKey(HKEY& userKey, HKEY& machineKey, UnicodeString path);
QV_API void MoxRegCloseKey(HKEY userKey, HKEY machineKey);
// The user's value, else the machine's, else the default. Either key may be null.
QV_API UnicodeString MoxRegReadString(HKEY userKey, HKEY machineKey, UnicodeString name,
                                      UnicodeString defaultValue);
QV_API int MoxRegReadInteger(HKEY userKey, HKEY machineKey, UnicodeString name, int defaultValue);
