// Settings as text that printers are to have: what `qv export` wrote, whole or cut down.
#pragma once

#include "settings/printer_settings.h"
#include "settings/settings_text.h"

namespace qv {

// Reads all of the file, `-` for standard input. Throws Failure: kDamaged when it is no such text,
// else with every bad line.
SettingsText ReadProfile(const std::string& file);

// What the printer is to be given. The device name is the printer's own: only the printer that the
// text was written for gets it.
std::vector<Assignment> ForPrinter(const SettingsText& profile, const Printer& printer);

}  // namespace qv
