#include "qv_rtl_main/devmode_commands.h"

#include "driver_devmode/pool_texts.h"
#include "driver_devmode/qvdm.h"
#include "driver_global/installation.h"
#include "mox_classes/text/sys_error.h"
#include "mox_classes/text/sysutils_command_line.h"
#include "mox_classes/text/sysutils_numbers.h"
#include "printer_query/spooler.h"
#include "qv_rtl_main/keyed_fields.h"
#include "xml/xml_node.h"
#include "xml/xml_writer.h"

using Mox::GetSysError;
using Sysutils::UnicodePrintf;

namespace {

constexpr const WCHAR* kPrinterKeyword = TEXT("printername");

enum TStatus : int {
    kBadCount = -10,
    kPrintersUnavailable = -10,
    kBadPrinterName = -20,
    kCannotRead = -30,
    kCannotEncode = -40,
    kCannotWrite = -50,
};

// The settings of one printer: the wrapper borrows the spooler's block when that is a block of the
// product, else it has defaults.
struct TPrinterSettings {
    TW32StructData<DEVMODEW> block;
    TQVDM wrapper;
};

// 0, or the status whose text was appended.
int ReadSettings(const UnicodeString& printer, TPrinterSettings& settings, UnicodeString& result) {
    settings.block = GetGlobalDevMode(printer);
    if (!settings.block.IsSuccess()) {
        result += UnicodePrintf(TEXT("Cannot get devmode of the printer, '%s.' : %s"), printer,
                                GetSysError(settings.block.GetErrorCode(), true));
        return kCannotRead;
    }
    if (settings.block.Count() > 0) {
        settings.wrapper.SetDEVMODE(&settings.block[0], settings.block.Size());
    }
    return 0;
}

int RefuseCount(UnicodeString& result) {
    result += TEXT("Invalid parameter count");
    return kBadCount;
}

// Whether the first pair names a printer; appends the error text when it does not.
bool HasPrinterName(TStrings* items, UnicodeString& result) {
    if (items->Get(0) == UnicodeString(kPrinterKeyword) && items->Get(1).Length() != 0) return true;
    result += TEXT("Invalid printer name parameter");
    return false;
}

}  // namespace

int CmdGetOrloPrinters(TStrings* /*items*/, UnicodeString& result) {
    const TW32StructData<PRINTER_INFO_2W> printers = GetInstalledPrintersInfo2();
    if (!printers.IsSuccess()) {
        result += UnicodePrintf(TEXT("Cannot get installed printers: %s"),
                                GetSysError(printers.GetErrorCode(), true));
        return kPrintersUnavailable;
    }
    int found = 0;
    for (int i = 0; i < printers.Count(); ++i) {
        if (UnicodeString(printers[i].pDriverName) != UnicodeString(kProductDriver)) continue;
        if (!result.IsEmpty()) result += UnicodeString(kTab);
        result += UnicodeString(printers[i].pPrinterName);
        ++found;
    }
    return found;
}

int CmdGetDevMode(TStrings* items, UnicodeString& result) {
    OutputDebugStringW(TEXT("GetQV_DEVMODE"));
    if (items->GetCount() < 2) return RefuseCount(result);
    OutputDebugStringW(TEXT("Params ok"));
    if (!HasPrinterName(items, result)) return kBadPrinterName;

    OutputDebugStringW(TEXT("Calling the GetGlobalDevMode()"));
    TPrinterSettings settings;
    const int status = ReadSettings(items->Get(1), settings, result);
    if (status < 0) return status;
    OutputDebugStringW(TEXT("Called the GetGlobalDevMode()"));

    qv_rtl_main::AppendKeyedFields(settings.wrapper, result);
    UnicodeString program, parameters;
    if (Sysutils::ParseCommandLine(settings.wrapper.Target, program, parameters)) {
        result.cat_printf(TEXT("\tAppName\t%s\tAppParam\t%s"), program, parameters);
        result += TEXT("\tMsgName\t\tMsgFormat\t\tMsgWinClass\t");
    }
    return 0;
}

namespace {

using TText = const UnicodeString&;

// What runs after a job, as the keywords name it.
struct TTarget {
    UnicodeString program;
    UnicodeString parameters;
    UnicodeString message_name;
    UnicodeString message_format;
    UnicodeString window_class;
};

struct TTargetKeyword {
    const WCHAR* name;
    UnicodeString TTarget::*member;
};
constexpr TTargetKeyword kTargetKeywords[] = {
    {TEXT("appname"), &TTarget::program},          {TEXT("appparam"), &TTarget::parameters},
    {TEXT("msgname"), &TTarget::message_name},     {TEXT("msgformat"), &TTarget::message_format},
    {TEXT("msgwinclass"), &TTarget::window_class},
};

// False for another keyword.
bool TakeTargetKeyword(TText name, TText value, TTarget& target) {
    for (const TTargetKeyword& keyword : kTargetKeywords) {
        if (name != UnicodeString(keyword.name)) continue;
        target.*keyword.member = value;
        return true;
    }
    return false;
}

// The description of an event that starts a program, sends a message to a window, or both.
UnicodeString EventText(const TTarget& wanted) {
    TXmlNode event;
    event.FName = TEXT("event");
    const auto add = [&event](const WCHAR* name, TText value) {
        if (value.Length() != 0) event.AddAttribute(name, value);
    };
    add(TEXT("file"), wanted.program);
    if (wanted.parameters == wanted.message_format) {
        add(TEXT("param"), wanted.parameters);
    } else {
        add(TEXT("param_run"), wanted.parameters);
        add(TEXT("param_msg"), wanted.message_format);
    }
    add(TEXT("msg"), wanted.message_name);
    add(TEXT("win"), wanted.window_class);
    TXmlFormatter compact;
    return event.SaveToString(compact);
}

void SetTarget(const TTarget& wanted, UnicodeString& target) {
    const bool has_message = wanted.message_name.Length() != 0 ||
                             wanted.message_format.Length() != 0 ||
                             wanted.window_class.Length() != 0;
    if (has_message) {
        target = EventText(wanted);
    } else if (wanted.program.Length() != 0 || wanted.parameters.Length() != 0) {
        target = Sysutils::BuildCommandLine(wanted.program, wanted.parameters);
    }
}

}  // namespace

int CmdSetDevMode(TStrings* items, UnicodeString& result) {
    const int count = items->GetCount();
    if (count < 2 || count % 2 != 0) return RefuseCount(result);
    if (!HasPrinterName(items, result)) return kBadPrinterName;
    const UnicodeString printer = items->Get(1);
    TPrinterSettings settings;
    const int status = ReadSettings(printer, settings, result);
    if (status < 0) return status;

    const driver_devmode::TDamagedTexts damaged(settings.wrapper);
    qv_rtl_main::TKeyedChanges changes(settings.wrapper);
    TTarget wanted;
    int understood = 0;
    for (int i = 2; i < count; i += 2) {
        const UnicodeString keyword = items->Get(i);
        const UnicodeString value = items->Get(i + 1);
        if (changes.Take(keyword, value) || TakeTargetKeyword(keyword, value, wanted)) {
            ++understood;
        } else {
            result.cat_printf(TEXT("Unsupported keyword '%s' was detected.\r\n"), keyword);
        }
    }
    SetTarget(wanted, settings.wrapper.Target);
    changes.Finish();
    for (const UnicodeString& text : damaged.Replaced(settings.wrapper))
        result += text + TEXT(".\r\n");

    if (!settings.wrapper.Encode()) {
        result += TEXT("Cannot encode the QV_DEVMODE extra data\r\n");
        return kCannotEncode;
    }
    TW32StructData<DEVMODEW> stored;
    if (settings.wrapper.StatedSizeFits()) {
        stored = SetGlobalDevMode(printer, settings.wrapper.GetDM(), nullptr);
    } else {
        stored.SetErrorCode(ERROR_INVALID_DATA);
    }
    if (!stored.IsSuccess()) {
        result += UnicodePrintf(TEXT("SetGlobalDevMode failed: %s"),
                                GetSysError(stored.GetErrorCode(), true));
        return kCannotWrite;
    }
    return understood;
}
