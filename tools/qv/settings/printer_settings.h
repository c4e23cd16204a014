// A printer and the current user's settings of it.
#pragma once

#include "settings/settings_block.h"

namespace qv {

// Every output names this scope, because a printer has other defaults for other users.
constexpr const char* kScope = "current user";
void PrintScope();

struct Printer {
    UnicodeString name;
    UnicodeString driver;
    UnicodeString port;

    // True when the product's driver serves the printer.
    bool IsProduct() const;
};

// The installed printers. Throws Failure when the spooler does not answer.
std::vector<Printer> InstalledPrinters();
// The printer of that name; throws Failure when there is none.
Printer FindPrinter(const UnicodeString& name);

// The user's block as it is stored, or nullopt when there is none. Throws Failure.
std::optional<SettingsBlock> ReadUserSettings(const UnicodeString& printer);
// The same, but throws Failure when there is none.
SettingsBlock RequireUserSettings(const UnicodeString& printer);

// The settings that a change starts from.
struct StartingSettings {
    SettingsBlock block;
    std::string note;      // says where the block comes from when it is not the user's
    bool is_users = true;  // false when the user has no settings that can be used
};

// The user's settings, or the printer's own, or the product's defaults: the first that exist.
// Throws Failure when the user's settings are damaged or belong to another driver; with `force`
// they are replaced.
StartingSettings ReadStart(const Printer& printer, bool force);

// Lets the driver check the block, stores the driver's result and returns it. Throws Failure.
SettingsBlock StoreUserSettings(const UnicodeString& printer, const SettingsBlock& block);

}  // namespace qv
