// A printer and the current user's settings of it.
#pragma once

#include "settings/settings_block.h"

namespace qv {

// Said with every output, so that nobody takes the settings for the printer's or for everybody's.
constexpr const char* kScope = "current user";
void PrintScope();

struct Printer {
    UnicodeString name;
    UnicodeString driver;
    UnicodeString port;

    // Whether the product's driver serves it.
    bool IsProduct() const;
};

// The printers that are installed. Throws Failure when the spooler does not tell.
std::vector<Printer> InstalledPrinters();
// The printer of that name; throws Failure when there is none.
Printer FindPrinter(const UnicodeString& name);

// The user's block as it is stored, or nothing when there is none. Throws Failure.
std::optional<SettingsBlock> ReadUserSettings(const UnicodeString& printer);
// The same; throws Failure also when there is none.
SettingsBlock RequireUserSettings(const UnicodeString& printer);

// What a change starts from.
struct StartingSettings {
    SettingsBlock block;
    std::string note;      // when that is not what the user has
    bool is_users = true;  // false when the user has none, or none of use
};

// The user's settings, else the printer's own, else the product's defaults. Throws Failure when
// the user's are damaged or not the driver's, unless `force` lets them be replaced.
StartingSettings ReadStart(const Printer& printer, bool force);

// Hands the block to the driver and stores what it makes of it; returns that. Throws Failure.
SettingsBlock StoreUserSettings(const UnicodeString& printer, const SettingsBlock& block);

// "[1801]The printer name is invalid." of a Win32 code.
std::string SystemText(DWORD code);

}  // namespace qv
