#include <windows.h>

#include <winspool.h>

#include <optional>
#include <utility>

#include "driver_devmode/field_map.h"
#include "driver_devmode/qvdm.h"
#include "driver_global/installation.h"
#include "mox_classes/memory/handles.h"
#include "mox_log/registry.h"
#include "printer_query/spooler.h"
#include "printer_query/versions.h"
#include "qv_rtl_main/request_vocabulary.h"
#include "qv_rtl_main/xml_request_handlers.h"

namespace {

using request::NameOf;

constexpr const WCHAR* kGlobalSettings[] = {TEXT("DefaultLocale"), TEXT("DefaultRasterizer"),
                                            TEXT("InstallPath"), TEXT("Language")};

// An empty filter takes every name.
bool Passes(const UnicodeString& filter, const UnicodeString& name) {
    return filter.Length() == 0 || XmlNamesEqual(filter, name);
}

void AddFile(TXmlNode& parent, const WCHAR* name, const UnicodeString& file) {
    TXmlNode* child = AddText(parent, name, file);
    SetText(child, TEXT("version"), FormatFileVersion(file, TEXT("%d.%d.%d.%d")));
}

void ReportGlobal(const TXmlNode& /*asked*/, TXmlNode& response, TXmlMessages& messages) {
    const System::TKeyHandle key(Mox::RegOpenToRead(HKEY_LOCAL_MACHINE, kProductKey));
    if (!key) {
        messages.Error(TEXT("Cannot open the registry for global settings"), GetLastError());
        return;
    }
    TXmlNode* global = response.AddChild(TEXT("global"));
    for (const WCHAR* name : kGlobalSettings) {
        const UnicodeString value = Mox::RegReadString(key.Get(), name, kMissingValue);
        if (value != kMissingValue) AddText(*global, name, value);
    }
}

void ReportMonitors(const TXmlNode& asked, TXmlNode& response, TXmlMessages& /*messages*/) {
    const TW32StructData<MONITOR_INFO_2W> monitors =
        GetMonitors(ChildText(asked, NameOf(TEXT("query/monitor/name"))));
    for (int i = 0; i < monitors.Count(); ++i) {
        auto monitor = NewElement(TEXT("monitor"));
        AddText(*monitor, TEXT("name"), monitors[i].pName);
        AddText(*monitor, TEXT("environment"), monitors[i].pEnvironment);
        AddFile(*monitor, TEXT("dllName"), monitors[i].pDLLName);
        Append(response, std::move(monitor));
    }
}

void ReportDriver(const DRIVER_INFO_3W& info, TXmlNode& response) {
    auto driver = NewElement(TEXT("driver"));
    AddText(*driver, TEXT("version"), UnicodeString(info.cVersion));
    AddText(*driver, TEXT("name"), info.pName);
    AddText(*driver, TEXT("environment"), info.pEnvironment);
    AddFile(*driver, TEXT("graphic"), info.pDriverPath);
    AddFile(*driver, TEXT("ui"), info.pConfigFile);
    AddText(*driver, TEXT("monitor"), info.pMonitorName);
    AddText(*driver, TEXT("datatype"), info.pDefaultDataType);
    Append(response, std::move(driver));
}

void ReportDrivers(const TXmlNode& asked, TXmlNode& response, TXmlMessages& messages) {
    const UnicodeString name = ChildText(asked, NameOf(TEXT("query/driver/name")));
    const TW32StructData<DRIVER_INFO_3W> drivers = GetInstalledPrinterDrivers();
    if (!drivers.IsSuccess()) {
        messages.Error(TEXT("Cannot get installed printer drivers information."),
                       drivers.GetErrorCode());
        return;
    }
    bool found = false;
    for (int i = 0; i < drivers.Count(); ++i) {
        if (!Passes(name, drivers[i].pName)) continue;
        ReportDriver(drivers[i], response);
        found = true;
    }
    if (!found) messages.Warning(TEXT("No printer driver was found"));
}

// Wrappers that start from the same defaults: making these asks the registry, once per query.
class TWrappers {
  public:
    TQVDM Make() {
        if (!defaults_) defaults_.emplace();
        return *defaults_;
    }

  private:
    std::optional<TQVDM> defaults_;
};

void ReportSettings(const UnicodeString& name, TWrappers& wrappers, TXmlNode& printer,
                    TXmlMessages& messages) {
    TW32StructData<DEVMODEW> settings = GetGlobalDevMode(name);
    if (!settings.IsSuccess()) {
        messages.Error(TEXT("Cannot get devmode of the printer, ") + name + TEXT("."),
                       settings.GetErrorCode());
        return;
    }
    if (settings.IsEmpty()) {
        SetText(messages.Warning(name + TEXT(" has no default DEVMODE data.")), TEXT("printer"),
                name);
        return;
    }
    TXmlNode* node = printer.AddChild(TEXT("devmode"));
    DEVMODEW* block = &settings[0];
    if (!QV_DEVMODE::IsValidQV_DEVMODE(block, settings.Size())) {
        DevModeToXmlNode(block, node);
        return;
    }
    TQVDM wrapper = wrappers.Make();
    wrapper.SetDEVMODE(block, settings.Size());
    wrapper.ToXmlNode(node);
}

void ReportPrinters(const TXmlNode& asked, TXmlNode& response, TXmlMessages& messages) {
    const UnicodeString driver = ChildText(asked, NameOf(TEXT("query/printer/driver")));
    const TW32StructData<PRINTER_INFO_2W> printers = GetInstalledPrintersInfo2();
    if (!printers.IsSuccess()) {
        messages.Error(TEXT("Cannot get installed printers"), printers.GetErrorCode());
        return;
    }
    TWrappers wrappers;
    bool found = false;
    for (int i = 0; i < printers.Count(); ++i) {
        if (!Passes(driver, printers[i].pDriverName)) continue;
        const UnicodeString name(printers[i].pPrinterName);
        auto printer = NewElement(TEXT("printer"));
        AddText(*printer, TEXT("name"), name);
        AddText(*printer, TEXT("port"), printers[i].pPortName);
        ReportSettings(name, wrappers, *printer, messages);
        Append(response, std::move(printer));
        found = true;
    }
    if (!found) messages.Warning(TEXT("No printer was found"));
}

struct TAnswer {
    const WCHAR* name;
    void (*report)(const TXmlNode& asked, TXmlNode& response, TXmlMessages& messages);
};
constexpr TAnswer kAnswers[] = {
    {NameOf(TEXT("query/global")), ReportGlobal},
    {NameOf(TEXT("query/monitor")), ReportMonitors},
    {NameOf(TEXT("query/driver")), ReportDrivers},
    {NameOf(TEXT("query/printer")), ReportPrinters},
};
static_assert(request::AreAllBelow(TEXT("query"), kAnswers));

}  // namespace

void AnswerQuery(const TXmlNode& request, TXmlNode& response, TXmlMessages& messages) {
    for (const TAnswer& answer : kAnswers) {
        const TXmlNode* asked = request.FindChild(answer.name, kUtf8);
        if (asked != nullptr) answer.report(*asked, response, messages);
    }
}
