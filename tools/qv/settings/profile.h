// A profile: settings as text that printers should have. `qv export` writes one; lines may be left
// out.
#pragma once

#include "settings/printer_settings.h"
#include "settings/settings_text.h"

namespace qv {

// Reads the file, standard input for `-`. Throws Failure: kDamaged when it is not a profile, else
// a list of all bad lines.
SettingsText ReadProfile(const std::string& file);

// The assignments for one printer. Only the printer that the profile was written for gets its
// device name.
std::vector<Assignment> ForPrinter(const SettingsText& profile, const Printer& printer);

}  // namespace qv
