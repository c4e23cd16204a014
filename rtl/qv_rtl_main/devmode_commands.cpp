#include "qv_rtl_main/devmode_commands.h"

#include "driver_devmode/qvdm.h"
#include "driver_global/installation.h"
#include "mox_classes/text/sys_error.h"
#include "mox_classes/text/sysutils_command_line.h"
#include "mox_classes/text/sysutils_numbers.h"
#include "printer_query/spooler.h"
#include "xml/xml_node.h"
#include "xml/xml_writer.h"

using Mox::GetSysError;
using Sysutils::UnicodePrintf;

namespace {

constexpr const WCHAR* kPrinterKeyword = TEXT("printername");
constexpr WCHAR kTab = 9;
constexpr int kDefaultDither = 2;
constexpr int kDefaultColorWeight = 1;

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

void AppendSettings(const QV_DEVMODE& dm, const TQVDM& wrapper, UnicodeString& result) {
    const auto on = [](std::uint8_t flag) { return static_cast<std::int8_t>(flag); };
    const TColorMix mix = dm.exIPO.ColorMixer;
    result.cat_printf(TEXT("Mode\t%d"), dm.exDialog.Mode);
    result.cat_printf(TEXT("\tColorMix\t%d,%d,%d"), mix.Red, mix.Green, mix.Blue);
    result.cat_printf(TEXT("\tDitherMethod\t%d"), dm.exIPO.DitherMethod);
    result.cat_printf(TEXT("\tUseSerial\t%d"), on(dm.exOut.UseSerial));
    result.cat_printf(TEXT("\tUseDocname\t%d"), on(dm.exOut.UseDocNameAsFileName));
    result.cat_printf(TEXT("\tCallApp\t%d"), on(dm.exRun.Enabled));
    result.cat_printf(TEXT("\tDefaultSaveFile\t%s"), wrapper.FileName);
    result.cat_printf(TEXT("\tDefaultSaveDir\t%s"), wrapper.Directory);
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

    AppendSettings(*settings.wrapper.GetDM(), settings.wrapper, result);
    UnicodeString program, parameters;
    if (Sysutils::ParseCommandLine(settings.wrapper.Target, program, parameters)) {
        result.cat_printf(TEXT("\tAppName\t%s\tAppParam\t%s"), program, parameters);
        result += TEXT("\tMsgName\t\tMsgFormat\t\tMsgWinClass\t");
    }
    return 0;
}

namespace {

// Values that act together, after all pairs are read.
struct TPendingOptions {
    UnicodeString program;
    UnicodeString parameters;
    UnicodeString message_name;
    UnicodeString message_format;
    UnicodeString window_class;
    UnicodeString dither_method;
    UnicodeString color_mix;
    bool has_dither_method = false;
};

std::uint8_t LowByte(int number) {
    return static_cast<std::uint8_t>(number & 0xFF);
}

std::uint8_t ByteOf(const UnicodeString& value) {
    return LowByte(Sysutils::StrToInt(value));
}

struct TKeyword {
    const WCHAR* name;
    void (*apply)(TQVDM& wrapper, TPendingOptions& pending, const UnicodeString& value);
};

using TText = const UnicodeString&;
constexpr TKeyword kKeywords[] = {
    {TEXT("mode"),
     [](TQVDM& dm, TPendingOptions&, TText value) { dm.GetDM()->exDialog.Mode = ByteOf(value); }},
    {TEXT("useserial"),
     [](TQVDM& dm, TPendingOptions&, TText value) { dm.GetDM()->exOut.UseSerial = ByteOf(value); }},
    {TEXT("usedocname"),
     [](TQVDM& dm, TPendingOptions&, TText value) {
         dm.GetDM()->exOut.UseDocNameAsFileName = ByteOf(value);
     }},
    {TEXT("callapp"),
     [](TQVDM& dm, TPendingOptions&, TText value) { dm.GetDM()->exRun.Enabled = ByteOf(value); }},
    {TEXT("defaultsavefile"),
     [](TQVDM& dm, TPendingOptions&, TText value) { dm.FileName = value; }},
    {TEXT("defaultsavedir"),
     [](TQVDM& dm, TPendingOptions&, TText value) { dm.Directory = value; }},
    {TEXT("appname"),
     [](TQVDM&, TPendingOptions& pending, TText value) { pending.program = value; }},
    {TEXT("appparam"),
     [](TQVDM&, TPendingOptions& pending, TText value) { pending.parameters = value; }},
    {TEXT("msgname"),
     [](TQVDM&, TPendingOptions& pending, TText value) { pending.message_name = value; }},
    {TEXT("msgformat"),
     [](TQVDM&, TPendingOptions& pending, TText value) { pending.message_format = value; }},
    {TEXT("msgwinclass"),
     [](TQVDM&, TPendingOptions& pending, TText value) { pending.window_class = value; }},
    {TEXT("dithermethod"),
     [](TQVDM&, TPendingOptions& pending, TText value) {
         pending.dither_method = value;
         pending.has_dither_method = true;
     }},
    {TEXT("colormix"),
     [](TQVDM&, TPendingOptions& pending, TText value) { pending.color_mix = value; }},
};

bool ApplyKeyword(TText name, TText value, TQVDM& wrapper, TPendingOptions& pending) {
    for (const TKeyword& keyword : kKeywords) {
        if (name != UnicodeString(keyword.name)) continue;
        keyword.apply(wrapper, pending, value);
        return true;
    }
    return false;
}

// The description of an event that starts a program, sends a message to a window, or both.
UnicodeString EventText(const TPendingOptions& pending) {
    TXmlNode event;
    event.FName = TEXT("event");
    const auto add = [&event](const WCHAR* name, TText value) {
        if (value.Length() != 0) event.AddAttribute(name, value);
    };
    add(TEXT("file"), pending.program);
    if (pending.parameters == pending.message_format) {
        add(TEXT("param"), pending.parameters);
    } else {
        add(TEXT("param_run"), pending.parameters);
        add(TEXT("param_msg"), pending.message_format);
    }
    add(TEXT("msg"), pending.message_name);
    add(TEXT("win"), pending.window_class);
    TXmlFormatter compact;
    return event.SaveToString(compact);
}

void SetTarget(const TPendingOptions& pending, UnicodeString& target) {
    const bool has_message = pending.message_name.Length() != 0 ||
                             pending.message_format.Length() != 0 ||
                             pending.window_class.Length() != 0;
    if (has_message) {
        target = EventText(pending);
    } else if (pending.program.Length() != 0 || pending.parameters.Length() != 0) {
        target = Sysutils::BuildCommandLine(pending.program, pending.parameters);
    }
}

void SetImageOptions(const TPendingOptions& pending, TImageProcessOptions& options) {
    if (pending.has_dither_method) {
        const int method = Sysutils::StrToIntDef(pending.dither_method, kDefaultDither);
        options.DitherMethod = static_cast<std::int8_t>(LowByte(method));
    }
    TStringList list;
    TStrings& weights = list;
    weights.SetCommaText(pending.color_mix);
    if (weights.GetCount() < 3) return;
    const auto weight = [&weights](int i) {
        return Sysutils::StrToIntDef(weights.Get(i), kDefaultColorWeight);
    };
    options.ColorMixer.SetValues(weight(0), weight(1), weight(2));
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

    TPendingOptions pending;
    int understood = 0;
    for (int i = 2; i < count; i += 2) {
        if (ApplyKeyword(items->Get(i), items->Get(i + 1), settings.wrapper, pending)) {
            ++understood;
        } else {
            result.cat_printf(TEXT("Unsupported keyword '%s' was detected.\r\n"), items->Get(i));
        }
    }
    SetTarget(pending, settings.wrapper.Target);
    SetImageOptions(pending, settings.wrapper.GetDM()->exIPO);

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
