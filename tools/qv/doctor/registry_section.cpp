// The product's values in force, each with the place that it comes from: the places are asked in
// the order in which the library asks them.
#include <windows.h>

#include <span>

#include "doctor/examination.h"
#include "driver_devmode/document_folders.h"
#include "driver_global/installation.h"
#include "mox_classes/text/sysutils.h"
#include "mox_log/registry.h"
#include "settings/printer_settings.h"

namespace qv {

namespace {

struct Place {
    HKEY root;
    UnicodeString path;
    const WCHAR* name;
};

Json Entry(const std::string& setting, const UnicodeString& value, std::span<const Place> places) {
    Json entry = {{"name", setting}, {"value", OneLine(value)}, {"from", "default"}};
    for (const Place& place : places) {
        if (Mox::ReadRegistry(place.root, place.path, place.name).IsEmpty()) continue;
        const bool is_user = place.root == HKEY_CURRENT_USER;
        entry["from"] = is_user ? "user" : "machine";
        entry["key"] =
            (is_user ? "HKCU\\" : "HKLM\\") + OneLine(place.path) + "|" + OneLine(place.name);
        break;
    }
    return entry;
}

Json ProductEntry(const WCHAR* name, const UnicodeString& value) {
    const Place place[] = {{HKEY_LOCAL_MACHINE, kProductKey, name}};
    return Entry(OneLine(name), value, place);
}

Json PrinterEntry(const UnicodeString& printer, const WCHAR* name, const WCHAR* default_name,
                  const UnicodeString& value) {
    const Place places[] = {
        {HKEY_LOCAL_MACHINE, Sysutils::ConfirmPathString(kPrintersKey) + printer, name},
        {HKEY_LOCAL_MACHINE, kProductKey, default_name}};
    return Entry(OneLine(printer) + ": " + OneLine(name), value, places);
}

void AddPrinter(Json& entries, const UnicodeString& printer) {
    UnicodeString parameters;
    const UnicodeString program = GetPrinterPost(printer, &parameters);
    entries.push_back(
        PrinterEntry(printer, TEXT("Locale"), TEXT("DefaultLocale"), GetPrinterLocale(printer)));
    entries.push_back(
        PrinterEntry(printer, TEXT("Rasterizer"), TEXT("DefaultRasterizer"), program));
    entries.push_back(PrinterEntry(printer, TEXT("RasterizerParams"),
                                   TEXT("DefaultRasterizerParams"), parameters));
}

}  // namespace

Json ExamineRegistry() {
    Json entries = Json::array();
    entries.push_back(ProductEntry(TEXT("InstallPath"), GetInstallPath()));
    entries.push_back(ProductEntry(TEXT("Language"), GetPrinterLanguage()));
    const Place log_places[] = {{HKEY_LOCAL_MACHINE, kProductKey, TEXT("Logfile")},
                                {HKEY_LOCAL_MACHINE, kShellFoldersKey, TEXT("Common Documents")}};
    entries.push_back(Entry("Logfile", GetPrinterLogFile(), log_places));
    const Place personal[] = {{HKEY_CURRENT_USER, kShellFoldersKey, TEXT("Personal")}};
    entries.push_back(Entry("Personal", GetUserDocument(UnicodeString()), personal));
    try {
        for (const Printer& printer : InstalledPrinters())
            if (printer.IsProduct()) AddPrinter(entries, printer.name);
    } catch (const Failure&) {
        // The section of the printers says so.
    }
    return entries;
}

}  // namespace qv
