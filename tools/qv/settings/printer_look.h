// Reads the settings of the chosen printers, one after the other. An error of one printer is
// reported, and the next printer follows.
#pragma once

#include <functional>

#include "settings/printer_choice.h"

namespace qv {

// The user's settings of a printer, as they are stored.
struct PrinterLook {
    Printer printer;
    std::optional<SettingsBlock> block;  // empty when there are none, or they cannot be read
    std::string error;                   // why `block` is empty
    std::vector<std::string> damage;
};

// Calls `use` for each printer of the choice, with a progress line.
void EachPrinter(const PrinterChoice& choice, const std::function<void(const Printer&)>& use);

// The same, with the user's settings. When the choice names one printer that cannot be read, this
// throws the Failure.
void LookAtPrinters(const PrinterChoice& choice,
                    const std::function<void(const PrinterLook&)>& use);

// Collects the errors of all printers, for the end of a command.
class LookFaults {
  public:
    void Add(const PrinterLook& look, bool is_many);
    // Prints the errors. Then throws a Failure without text: kDamaged when a block is damaged, else
    // kFailed when a printer has no settings.
    void Report() const;

  private:
    std::vector<std::string> texts_;
    bool damaged_ = false, failed_ = false;
};

}  // namespace qv
