// Where the registry keeps printers, drivers, monitors and users' settings blocks, and how the
// spooler reads a key's values. Everything that a key holds is checked: a value of another type, or
// one whose bytes do not fit its type, counts as missing.
#pragma once

#include <windows.h>
#include <winspool.h>

#include <string>
#include <string_view>
#include <vector>

#include "base/call_ref.h"
#include "registry/reg_keys.h"

namespace host {

// Paths of keys. The first three lie below HKEY_LOCAL_MACHINE, the last one below
// HKEY_CURRENT_USER.
const RegPath& PrintersPath();
const RegPath& DriversPath();
const RegPath& MonitorsPath();
const RegPath& UserBlocksPath();

inline constexpr WCHAR kEnvironment[] = u"Windows x64";
inline constexpr WCHAR kDriverFolder[] = u"C:\\Windows\\System32\\spool\\drivers\\x64";

// Runs `read` on the key at `path` below a root, in one snapshot. A missing key reads as an empty
// one. Returns the code of the registry.
LSTATUS ReadPrintKey(HKEY root, const RegPath& path, const CallRef<void(const RegKey&)>& read);
// Runs `read` on the key of a printer. The name is that of the key or the listed one.
// ERROR_INVALID_PRINTER_NAME for an unknown name.
LSTATUS ReadPrinterKey(std::u16string_view printer, const CallRef<void(const RegKey&)>& read);

// All values of a key, read at once.
class PrintValues {
  public:
    explicit PrintValues(const RegKey& key) : values_(key.Values()) {}
    // Null for a value that is missing or has another type.
    const RegValue* Find(std::u16string_view name, DWORD type) const;

  private:
    std::shared_ptr<const RegValues> values_;
};

// A REG_SZ or REG_EXPAND_SZ value up to its first zero character; else empty.
std::u16string TextValue(const PrintValues& key, std::u16string_view name);
// The name under which a printer is listed: its value Name, else its key's name.
std::u16string PrinterName(const RegKey& key);
// The texts of a REG_MULTI_SZ value.
std::vector<std::u16string> TextsValue(const PrintValues& key, std::u16string_view name);
// A REG_DWORD value, or `fallback`.
DWORD NumberValue(const PrintValues& key, std::u16string_view name, DWORD fallback = 0);
// A settings block, cut to its own size. Empty when it is missing or shorter than its header says.
std::vector<BYTE> BlockOf(const RegValue* value);
std::vector<BYTE> BlockValue(const PrintValues& key, std::u16string_view name);

// The user's settings block of a printer, checked as above. Call it inside `read`.
std::vector<BYTE> UserBlock(std::u16string_view printer);

// The size that a settings block's header gives, extra part included; 0 when its public part is too
// short to have one.
std::size_t BlockSize(const DEVMODEW* block);

// The number of jobs below a printer's key.
DWORD CountJobs(const RegKey& printer);

// TRUE for the code 0; else sets the last error and returns FALSE.
BOOL Succeeded(LSTATUS code);

}  // namespace host
