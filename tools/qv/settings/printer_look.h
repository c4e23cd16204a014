// Looks at the settings of the printers chosen, one after the other: what is wrong with one printer
// is said and does not keep the others from being looked at.
#pragma once

#include <functional>

#include "settings/printer_choice.h"

namespace qv {

// The user's settings of a printer as they are.
struct PrinterLook {
    Printer printer;
    std::optional<SettingsBlock> block;  // none when the user has none, or they cannot be read
    std::string error;                   // why there is none
    std::vector<std::string> damage;
};

// Calls `use` for each printer of the choice, with a progress line.
void EachPrinter(const PrinterChoice& choice, const std::function<void(const Printer&)>& use);

// The same with the user's settings. Of one printer that is
// named, what keeps it from being looked at is thrown as a Failure.
void LookAtPrinters(const PrinterChoice& choice,
                    const std::function<void(const PrinterLook&)>& use);

// Collects what is wrong for the end of a command.
class LookFaults {
  public:
    void Add(const PrinterLook& look, bool is_many);
    // Tells all. Throws a Failure without text for what stands there: kDamaged for damage, kFailed
    // for printers without settings.
    void Report() const;

  private:
    std::vector<std::string> texts_;
    bool damaged_ = false, failed_ = false;
};

}  // namespace qv
