// qv printers, qv get, qv set: the current user's settings of the printers.
#include <memory>
#include <vector>

#include "commands.h"
#include "console.h"
#include "driver_devmode/field_map.h"
#include "driver_devmode/qvdm.h"
#include "mox_log/sys_error.h"
#include "printer_query/spooler.h"
#include "qv_rtl_main/xml_request.h"
#include "xml/xml_doc.h"

namespace qv {

namespace {

using System::kCodePageUtf8;

void ListPrinters() {
    auto printers = GetInstalledPrintersInfo2();
    if (!printers.IsSuccess())
        throw Failure(OneLine(Mox::GetSysError(printers.GetErrorCode(), true).Trim()));
    for (int i = 0; i < printers.Count(); ++i) {
        const PRINTER_INFO_2W& printer = printers[i];
        PrintLine(OneLine(printer.pPrinterName) + "\t" + OneLine(printer.pDriverName) + "\t" +
                  OneLine(printer.pPortName));
    }
}

// Prints every leaf below `node` as "group.leaf=text".
void PrintFields(const TXmlNode& node, const std::string& prefix) {
    for (int i = 0; i < node.ChildCount(); ++i) {
        const TXmlNode& child = *node.GetChild(i);
        const std::string name = prefix + ToUtf8(child.FName);
        if (child.ChildCount() > 0) {
            PrintFields(child, name + ".");
        } else {
            PrintLine(name + "=" + OneLine(child.FValue));
        }
    }
}

void GetSettings(const std::string& printer) {
    auto settings = GetGlobalDevMode(FromUtf8(printer));
    if (!settings.IsSuccess()) {
        throw Failure("cannot read the settings of '" + printer +
                      "': " + OneLine(Mox::GetSysError(settings.GetErrorCode(), true).Trim()));
    }
    if (settings.IsEmpty())
        throw Failure("'" + printer + "' has no settings of the current user yet");
    const int size = settings.Size();
    TXmlNode fields;
    if (TQVDM wrapper; QV_DEVMODE::IsValidQV_DEVMODE(&settings[0], size) &&
                       wrapper.SetDEVMODE(&settings[0], size)) {
        wrapper.ToXmlNode(&fields);
    } else {
        DevModeToXmlNode(&settings[0], &fields);
    }
    PrintFields(fields, "");
}

struct Assignment {
    std::string name, value;
};

Assignment ParseAssignment(const std::string& text) {
    const std::size_t equals = text.find('=');
    if (equals == 0 || equals == std::string::npos) {
        throw CLI::ValidationError(text, "is not of the form KEYWORD=VALUE");
    }
    return {text.substr(0, equals), text.substr(equals + 1)};
}

// The element that stands for a dotted name below `node`: group and leaf, or the leaf alone.
TXmlNode* Place(TXmlNode* node, const UnicodeString& name) {
    const int dot = name.Pos(TEXT("."));
    if (dot > 1) {
        const UnicodeString group = name.SubString(1, dot - 1);
        TXmlNode* found = node->FindChild(group, kCodePageUtf8);
        node = found != nullptr ? found : node->AddChild(group);
    }
    return node->AddChild(name.SubString(dot + 1, name.Length()));
}

const TXmlNode* Previous(TXmlNode* devmode, const UnicodeString& name) {
    UnicodeString path = name;
    if (const int dot = path.Pos(TEXT(".")); dot > 0) path[dot] = '\\';
    return devmode == nullptr ? nullptr : devmode->Find(path, kCodePageUtf8);
}

void FailOnMessages(TXmlNode& response) {
    const TXmlNode* messages = response.FindChild(TEXT("message"), kCodePageUtf8);
    if (messages == nullptr) return;
    const TXmlNode& first = *messages->GetChild(0);
    throw Failure(OneLine(first.FValue) + " " +
                  OneLine(first.AttrGetString(TEXT("W32Msg"), kCodePageUtf8).Trim()));
}

void SetSettings(const std::string& printer, const std::vector<std::string>& texts) {
    TXmlDoc request;
    TXmlDoc response;
    request.FRoot->FName = TEXT("update");
    TXmlNode* entry = request.FRoot->AddChild(TEXT("printer"));
    entry->SetChild(TEXT("name"), FromUtf8(printer), kCodePageUtf8);
    TXmlNode* devmode = entry->AddChild(TEXT("devmode"));
    std::vector<Assignment> assignments;
    for (const std::string& text : texts) {
        assignments.push_back(ParseAssignment(text));
        Place(devmode, FromUtf8(assignments.back().name))->FValue =
            FromUtf8(assignments.back().value);
    }
    DoXML(&request, &response);
    FailOnMessages(*response.FRoot);
    std::string refused;
    for (const Assignment& a : assignments) {
        const TXmlNode* before = Previous(
            response.FRoot->Find(TEXT("printer\\devmode"), kCodePageUtf8), FromUtf8(a.name));
        if (before == nullptr) {
            refused += (refused.empty() ? "" : "\nqv: ") +
                       ("'" + a.name + "' cannot be set to '" + a.value + "'");
        } else {
            PrintLine(a.name + ": " + OneLine(before->FValue) + " -> " + a.value);
        }
    }
    if (!refused.empty()) throw Failure(refused);
}

}  // namespace

void AddPrinterCommands(CLI::App& app) {
    app.add_subcommand("printers", "List the installed printers: name, driver, port")
        ->callback(ListPrinters);

    auto printer = std::make_shared<std::string>();
    CLI::App* get = app.add_subcommand("get", "Show the current user's settings of a printer");
    get->add_option("PRINTER", *printer, "The printer's name")->required();
    get->callback([printer] { GetSettings(*printer); });

    auto assignments = std::make_shared<std::vector<std::string>>();
    CLI::App* set = app.add_subcommand("set", "Change the current user's settings of a printer");
    set->footer(
        "Keywords are the names that `qv get` shows. Example:\n"
        "  qv set \"Vantrel Fax\" dmCopies=2 exOut.UseSerial=False");
    set->add_option("PRINTER", *printer, "The printer's name")->required();
    set->add_option("KEYWORD=VALUE", *assignments, "What to change")->required();
    set->callback([printer, assignments] { SetSettings(*printer, *assignments); });
}

}  // namespace qv
