#include "settings/profile.h"

#include "base/files.h"

namespace qv {

SettingsText ReadProfile(const std::string& file) {
    const std::string bytes = ReadAll(file);
    if (!IsSettingsText(bytes))
        throw Failure(Quoted(file) + " is not what `qv export` writes", ExitCode::kDamaged);
    SettingsText text = ParseSettings(bytes);
    std::string faults;
    for (const LineFault& fault : text.faults)
        faults += LinePrefix(fault.line) + fault.text + "\nqv: ";
    if (!faults.empty()) throw Failure(faults + "nothing is set");
    if (text.assignments.empty()) throw Failure(Quoted(file) + " sets nothing");
    return text;
}

std::vector<Assignment> ForPrinter(const SettingsText& profile, const Printer& printer) {
    std::vector<Assignment> assignments = profile.assignments;
    if (profile.printer.Length() == 0 || printer.name.CompareIC(profile.printer) == 0)
        return assignments;
    std::erase_if(assignments,
                  [](const Assignment& a) { return NameOf(*a.field) == "dmDeviceName"; });
    return assignments;
}

}  // namespace qv
