// What `qv doctor` looks at, as JSON; the text is made of that.
#pragma once

#include <string>
#include <vector>

#include "base/json_output.h"
#include "settings/printer_settings.h"

namespace qv {

// What is wrong, each in a line for people.
using Problems = std::vector<std::string>;

// Every section; "problems" is the last key.
Json Examine();

// Sections with their values below them, the problems last.
std::string ExaminationText(const Json& examination);

// The sections.
Json ExamineLibrary(Problems& problems);
Json ExaminePaths();
Json ExamineLog(Problems& problems);
Json ExamineResource(Problems& problems);
// Each value that is in force, and the key that it comes from or that it is a default.
Json ExamineRegistry();
Json ExaminePrinters(Problems& problems);

// Whether the user's settings of a printer are of use.
struct SettingsFinding {
    const char* state;
    std::vector<std::string> reasons;
};
SettingsFinding JudgeSettings(const Printer& printer, const std::optional<SettingsBlock>& block);

}  // namespace qv
