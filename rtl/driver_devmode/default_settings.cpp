#include "driver_devmode/default_settings.h"

#include "driver_devmode/qvdm.h"
#include "mox_classes/text/sysutils.h"
#include "printer_query/spooler.h"
#include "xml/xml_node.h"
#include "xml/xml_writer.h"

namespace {

using System::kCodePageUtf8;

// What runs after a job, as the caller names it.
struct TTarget {
    UnicodeString program, parameters, message, window_class, message_format;

    bool IsEvent() const {
        return message.Length() > 0 || window_class.Length() > 0 || message_format.Length() > 0;
    }
};

UnicodeString CommandLine(const TTarget& target) {
    UnicodeString program = target.program;
    if (program.Pos(TEXT(" ")) > 0 || program.Pos(TEXT("\"")) > 0)
        program = Sysutils::AnsiQuotedStr(program, '"');
    return (program + TEXT(" ") + target.parameters).Trim();
}

UnicodeString EventText(const TTarget& target) {
    TXmlNode event;
    event.FName = TEXT("event");
    event.AddAttribute(TEXT("file"), target.program);
    const bool has_parameters = target.parameters.Length() > 0;
    if (has_parameters && target.parameters == target.message_format) {
        event.AddAttribute(TEXT("param"), target.parameters);
    } else {
        if (has_parameters) event.AddAttribute(TEXT("param_run"), target.parameters);
        if (target.message_format.Length() > 0)
            event.AddAttribute(TEXT("param_msg"), target.message_format);
    }
    event.AddAttribute(TEXT("msg"), target.message);
    event.AddAttribute(TEXT("win"), target.window_class);
    TXmlFormatter plain;
    return event.SaveToString(plain);
}

template <class Apply>
bool ChangeDefaults(const UnicodeString& printer, Apply apply) {
    TW32StructData<DEVMODEW> devmode = GetPrinterDevMode(printer);
    if (!devmode.IsSuccess() || devmode.IsEmpty()) return false;
    if (!QV_DEVMODE::IsValidQV_DEVMODE(&devmode[0], devmode.Size())) return false;
    TQVDM settings(&devmode[0]);
    apply(settings);
    if (!settings.Encode()) return false;
    return SetGlobalDevMode(printer, settings.GetDM(), nullptr).IsSuccess();
}

}  // namespace

int SetQVDefaultSetting(const WCHAR* printer_name, BYTE dialog_mode, BYTE run_enabled,
                        BYTE use_serial, BYTE use_document_name, const WCHAR* save_directory,
                        const WCHAR* save_file_name, const WCHAR* program,
                        const WCHAR* program_parameters, const WCHAR* message_name,
                        const WCHAR* message_window_class, const WCHAR* message_format) {
    try {
        const TTarget target{program, program_parameters, message_name, message_window_class,
                             message_format};
        return ChangeDefaults(printer_name, [&](TQVDM& settings) {
            QV_DEVMODE& block = *settings.GetDM();
            block.exDialog.Mode = dialog_mode;
            block.exRun.Enabled = run_enabled;
            block.exOut.UseSerial = use_serial;
            block.exOut.UseDocNameAsFileName = use_document_name;
            settings.Directory = save_directory;
            settings.FileName = save_file_name;
            settings.Target = target.IsEvent() ? EventText(target) : CommandLine(target);
        });
    } catch (...) {
        // A C interface: no exception may leave it, neither a message nor std::bad_alloc.
        return 0;
    }
}
