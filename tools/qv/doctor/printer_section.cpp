// The printers, and whether the current user's settings of them are of use.
#include "base/progress.h"
#include "doctor/examination.h"
#include "driver_global/installation.h"
#include "settings/block_damage.h"

namespace qv {

namespace {

SettingsFinding Look(const Printer& printer) {
    try {
        return JudgeSettings(printer, ReadUserSettings(printer.name));
    } catch (const Failure& failure) {
        return {"cannot be read", {failure.what()}};
    }
}

}  // namespace

SettingsFinding JudgeSettings(const Printer& printer, const std::optional<SettingsBlock>& block) {
    if (!block) return {"none", {}};
    std::vector<std::string> reasons = SizeDamage(*block);
    if (!reasons.empty()) return {"damaged", reasons};
    if (!printer.IsProduct()) return {"of another driver", {}};
    reasons = ProductDamage(*block);
    if (!reasons.empty()) return {"damaged", reasons};
    return {"valid", {}};
}

Json ExaminePrinters(Problems& problems) {
    Json section = Json::array();
    bool any = false;
    try {
        const std::vector<Printer> printers = InstalledPrinters();
        Progress progress("printers examined", printers.size());
        for (const Printer& printer : printers) {
            progress.Add();
            const SettingsFinding finding = Look(printer);
            const std::string name = OneLine(printer.name);
            any = any || printer.IsProduct();
            section.push_back({{"name", name},
                               {"driver", OneLine(printer.driver)},
                               {"port", OneLine(printer.port)},
                               {"settings", finding.state},
                               {"reasons", finding.reasons}});
            if (!printer.IsProduct()) continue;
            const std::string whose = "the settings of '" + name + "': ";
            for (const std::string& reason : finding.reasons)
                problems.emplace_back(whose).append(reason);
        }
    } catch (const Failure& failure) {
        problems.push_back("the printers are not known: " + std::string(failure.what()));
        return section;
    }
    if (!any) {
        problems.push_back("no printer uses the driver '" + OneLine(UnicodeString(kProductDriver)) +
                           "'");
    }
    return section;
}

}  // namespace qv
