#include "settings/printer_settings.h"

#include "driver_global/installation.h"
#include "printer_query/spooler.h"
#include "settings/block_damage.h"

namespace qv {

namespace {

std::optional<SettingsBlock> BlockOf(TW32StructData<DEVMODEW>& settings) {
    if (settings.IsEmpty()) return {};
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(&settings[0]);
    return SettingsBlock({bytes, static_cast<std::size_t>(settings.Size())});
}

Printer MakePrinter(const PRINTER_INFO_2W& record) {
    return {record.pPrinterName, record.pDriverName, record.pPortName};
}

// For a printer of the product: true when its block can be changed as it is.
bool IsUsable(const SettingsBlock& block) {
    return block.IsProduct() && ProductDamage(block).empty();
}

StartingSettings StartOfProduct(const Printer& printer, bool force) {
    std::optional<SettingsBlock> users = ReadUserSettings(printer.name);
    if (users && IsUsable(*users)) return {std::move(*users), "", true};
    if (users && !force) {
        throw Failure("its settings are damaged (" + ProductDamage(*users).front() +
                      "); --force replaces what is lost by defaults");
    }
    const char* const why =
        users ? "its settings were damaged" : "no settings of the current user yet";
    if (users && users->IsProduct())
        return {std::move(*users), "its damaged texts become empty", false};
    auto of_printer = GetPrinterDevMode(printer.name);
    if (std::optional<SettingsBlock> block = BlockOf(of_printer); block && IsUsable(*block))
        return {std::move(*block), std::string(why) + ": starting from the printer's own", false};
    return {SettingsBlock(), std::string(why) + ": starting from the product's defaults", false};
}

}  // namespace

void PrintScope() {
    PrintError("settings of the current user");
}

bool Printer::IsProduct() const {
    return driver == UnicodeString(kProductDriver);
}

std::vector<Printer> InstalledPrinters() {
    const auto records = GetInstalledPrintersInfo2();
    if (!records.IsSuccess()) throw Failure(SystemText(records.GetErrorCode()));
    std::vector<Printer> printers;
    printers.reserve(static_cast<std::size_t>(records.Count()));
    for (int i = 0; i < records.Count(); ++i) printers.push_back(MakePrinter(records[i]));
    return printers;
}

Printer FindPrinter(const UnicodeString& name) {
    const auto record = GetPrinterInfo2(name);
    if (!record.IsSuccess() || record.Count() == 0)
        throw Failure("no printer " + Quoted(name) + ": " + SystemText(record.GetErrorCode()));
    return MakePrinter(record[0]);
}

std::optional<SettingsBlock> ReadUserSettings(const UnicodeString& printer) {
    auto settings = GetGlobalDevMode(printer);
    if (settings.IsSuccess()) return BlockOf(settings);
    throw Failure("cannot read the settings of " + Quoted(printer) + ": " +
                  SystemText(settings.GetErrorCode()));
}

SettingsBlock RequireUserSettings(const UnicodeString& printer) {
    std::optional<SettingsBlock> settings = ReadUserSettings(printer);
    if (settings) return std::move(*settings);
    throw Failure(Quoted(printer) + " has no settings of the current user yet");
}

StartingSettings ReadStart(const Printer& printer, bool force) {
    if (printer.IsProduct()) return StartOfProduct(printer, force);
    if (std::optional<SettingsBlock> users = ReadUserSettings(printer.name))
        return {std::move(*users), "", true};
    auto of_printer = GetPrinterDevMode(printer.name);
    if (std::optional<SettingsBlock> block = BlockOf(of_printer)) {
        return {std::move(*block),
                "no settings of the current user yet: starting from the printer's own", false};
    }
    throw Failure("it has no settings, and their defaults are known to its own driver only");
}

SettingsBlock StoreUserSettings(const UnicodeString& printer, const SettingsBlock& block) {
    auto stored = SetGlobalDevMode(printer, &block.Block(), nullptr);
    std::optional<SettingsBlock> result;
    if (stored.IsSuccess()) result = BlockOf(stored);
    if (!result) throw Failure("cannot store the settings: " + SystemText(stored.GetErrorCode()));
    return std::move(*result);
}

}  // namespace qv
