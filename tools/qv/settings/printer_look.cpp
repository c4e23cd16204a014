#include "settings/printer_look.h"

#include "base/progress.h"
#include "settings/block_damage.h"

namespace qv {

namespace {

PrinterLook LookAt(const Printer& printer) {
    PrinterLook look{printer, {}, {}, {}};
    look.block = RequireUserSettings(printer.name);
    look.damage = printer.IsProduct() ? ProductDamage(*look.block) : SizeDamage(*look.block);
    return look;
}

}  // namespace

void EachPrinter(const PrinterChoice& choice, const std::function<void(const Printer&)>& use) {
    const std::vector<Printer> printers = ChoosePrinters(choice, Purpose::kLook);
    Progress progress("printers read", printers.size());
    for (const Printer& printer : printers) {
        progress.Add();
        use(printer);
    }
}

void LookAtPrinters(const PrinterChoice& choice,
                    const std::function<void(const PrinterLook&)>& use) {
    EachPrinter(choice, [&](const Printer& printer) {
        PrinterLook look{printer, {}, {}, {}};
        try {
            look = LookAt(printer);
        } catch (const Failure& failure) {
            if (!choice.IsMany()) throw;
            look.error = failure.what();
        }
        use(look);
    });
}

void LookFaults::Add(const PrinterLook& look, bool is_many) {
    const std::string prefix = is_many ? OneLine(look.printer.name) + ": " : "";
    for (const std::string& reason : look.damage) texts_.push_back(prefix + reason);
    if (!look.error.empty()) texts_.push_back(look.error);
    damaged_ = damaged_ || !look.damage.empty();
    failed_ = failed_ || !look.error.empty();
}

void LookFaults::Report() const {
    for (const std::string& text : texts_) PrintError(text);
    if (damaged_) throw Failure("", ExitCode::kDamaged);
    if (failed_) throw Failure("");
}

}  // namespace qv
