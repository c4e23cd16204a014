#include "driver_global/events.h"

#include <shellapi.h>

#include <limits>
#include <utility>

#include "driver_global/argv_split.h"
#include "driver_global/program_texts.h"
#include "mox_classes/format/template_string.h"
#include "mox_classes/text/log_here.h"
#include "mox_classes/text/sys_error.h"
#include "mox_classes/text/sysutils.h"
#include "xml/xml_doc.h"

namespace {

constexpr int kDefaultTimeout = 3000;  // milliseconds

// The value of an attribute; empty when it is missing.
UnicodeString Attribute(const TXmlNode& action, const WCHAR* name) {
    return action.AttrGetString(name, System::kCodePageUtf8);
}

UnicodeString Filled(const UnicodeString& text, TFillTagsInfo& info) {
    return TemplateStringSafeFormat(text, QVFillField, &info);
}

UnicodeString FirstText(const UnicodeString& text, const UnicodeString& otherwise) {
    return text.Length() > 0 ? text : otherwise;
}

// Describes `text` with its terminator as a block for WM_COPYDATA. False when the text is too long
// for one.
bool MakeCopyData(ULONG_PTR id, const UnicodeString& text, COPYDATASTRUCT& data) {
    const unsigned long long bytes = (static_cast<unsigned long long>(text.Length()) + 1) * 2;
    if (bytes > std::numeric_limits<DWORD>::max()) return false;
    data = {id, static_cast<DWORD>(bytes), const_cast<WCHAR*>(text.t_str())};
    return true;
}

// Finds the window that the attribute "win" names: by the number of its handle, by its class, or by
// its title.
HWND FindTarget(const UnicodeString& win) {
    if (win.Length() == 0) return nullptr;
    auto* window = static_cast<HWND>(Sysutils::StrToHandleDef(win, nullptr));
    if (window == nullptr) window = FindWindowW(win.t_str(), nullptr);
    return window != nullptr ? window : FindWindowW(nullptr, win.t_str());
}

// The receiver deletes the atom. No message is posted without the text that it is to bring.
void PostText(HWND window, UINT number, const UnicodeString& text) {
    const ATOM atom = text.Length() > 0 ? GlobalAddAtomW(text.t_str()) : ATOM{0};
    const bool has_text = atom != 0 || text.Length() == 0;
    if (has_text && PostMessageW(window, number, atom, 0)) return;
    const DWORD code = GetLastError();
    if (atom != 0) GlobalDeleteAtom(atom);
    Mox::LogHere('X', TEXT("DoXmlEvent: a text was not posted: ") + Mox::GetSysError(code, true));
}

UnicodeString TextToSend(const TXmlNode& action, TFillTagsInfo& info) {
    return Filled(FirstText(Attribute(action, TEXT("param_msg")), Attribute(action, TEXT("param"))),
                  info);
}

void DeliverText(const TEventAction& plan, const TXmlNode& action) {
    UINT number = static_cast<UINT>(Sysutils::StrToIntDef(plan.message, 0));
    if (number == 0) number = RegisterWindowMessageW(plan.message.t_str());
    const int timeout = Sysutils::StrToIntDef(Attribute(action, TEXT("timeout")), kDefaultTimeout);
    if (timeout < 1) {
        PostText(plan.window, number, plan.text);
        return;
    }
    COPYDATASTRUCT data;
    DWORD_PTR result = 0;
    if (!MakeCopyData(number, plan.text, data)) return;
    SendMessageTimeoutW(plan.window, WM_COPYDATA, 0, reinterpret_cast<LPARAM>(&data), SMTO_NORMAL,
                        static_cast<UINT>(timeout), &result);
}

// Windows ignores dots and blanks at the end of a file name, so they are ignored here too.
bool IsBatchFile(const UnicodeString& file) {
    int length = file.Length();
    while (length > 0 && (file[length] == '.' || file[length] == ' ')) --length;
    const UnicodeString extension =
        length < 4 ? UnicodeString() : file.SubString(length - 3, 4).LowerCase();
    return extension == TEXT(".bat") || extension == TEXT(".cmd");
}

std::vector<UnicodeString> ArgumentsOf(const UnicodeString& parameters) {
    const driver_global::TUnits units(parameters.t_str(),
                                      static_cast<std::size_t>(parameters.Length()));
    std::vector<UnicodeString> arguments;
    for (const auto& argument :
         driver_global::SplitArguments(units, driver_global::TQuoteRule::Program))
        arguments.emplace_back(argument.value.c_str());
    return arguments;
}

void PlanProgram(const TXmlNode& action, TFillTagsInfo& info, TEventAction& plan) {
    plan.verb = FirstText(Filled(Attribute(action, TEXT("op")), info), TEXT("Open"));
    plan.program = driver_global::FilledPath(Attribute(action, TEXT("file")), info);
    if (plan.program.Length() == 0) return;
    plan.folder = driver_global::FilledPath(Attribute(action, TEXT("dir")), info);
    const UnicodeString pattern =
        FirstText(Attribute(action, TEXT("param_run")), Attribute(action, TEXT("param")));
    plan.refused = IsBatchFile(plan.program) && driver_global::HoldsCommandUnits(pattern, info);
    if (plan.refused) return;
    plan.parameters = driver_global::FilledParameters(pattern, info);
    plan.arguments = ArgumentsOf(plan.parameters);
}

void StartProgram(const TEventAction& plan, const TXmlNode& action) {
    if (plan.refused) {
        Mox::LogHere('*', Sysutils::UnicodePrintf(
                              TEXT("DoXmlEvent: '%s' is not started: a value could act as a "
                                   "command of a batch file"),
                              plan.program));
    } else if (plan.program.Length() > 0) {
        ShellExecuteW(nullptr, plan.verb.t_str(), plan.program.t_str(), plan.parameters.t_str(),
                      plan.folder.t_str(),
                      Sysutils::StrToIntDef(Attribute(action, TEXT("showcmd")), SW_SHOW));
    }
}

TEventAction Plan(const UnicodeString& event_name, const TXmlNode& action, TFillTagsInfo& info) {
    info.FileNameSafe = false;
    TEventAction plan;
    plan.window = FindTarget(Attribute(action, TEXT("win")));
    plan.message = FirstText(Attribute(action, TEXT("msg")), event_name);
    if (plan.message.Length() == 0) plan.window = nullptr;
    if (plan.window != nullptr) {
        plan.text = TextToSend(action, info);
    } else {
        PlanProgram(action, info, plan);
    }
    return plan;
}

void Fire(const UnicodeString& event_name, const TXmlNode& action, TFillTagsInfo& info) {
    const TEventAction plan = Plan(event_name, action, info);
    if (plan.window != nullptr) {
        DeliverText(plan, action);
    } else {
        StartProgram(plan, action);
    }
}

class TKeepFileNameSafe {
  public:
    explicit TKeepFileNameSafe(TFillTagsInfo& info) : info_(info), kept_(info.FileNameSafe) {}
    TKeepFileNameSafe(const TKeepFileNameSafe&) = delete;
    TKeepFileNameSafe& operator=(const TKeepFileNameSafe&) = delete;
    ~TKeepFileNameSafe() { info_.FileNameSafe = kept_; }

  private:
    TFillTagsInfo& info_;
    const bool kept_;
};

}  // namespace

bool DoXmlEvent(const UnicodeString& event_name, const UnicodeString& description,
                TFillTagsInfo* info) {
    Mox::LogHere('i', Sysutils::UnicodePrintf(TEXT("DoXmlEvent: %s,%s"), event_name, description));
    if (description.Length() == 0) return false;
    TXmlDoc events;
    if (!events.LoadFromString(description, TEXT("events"))) return false;
    TFillTagsInfo nothing;
    TFillTagsInfo& source = info != nullptr ? *info : nothing;
    const TKeepFileNameSafe keep(source);
    for (int i = 0; i < events.FRoot->ChildCount(); ++i) {
        Fire(event_name, *events.FRoot->GetChild(i), source);
    }
    return true;
}

std::vector<TEventAction> PlanXmlEvent(const UnicodeString& event_name,
                                       const UnicodeString& description, TFillTagsInfo* info) {
    TXmlDoc events;
    if (description.Length() == 0 || !events.LoadFromString(description, TEXT("events")))
        throw UnicodeString(TEXT("the description is empty or not well-formed"));
    TFillTagsInfo nothing;
    TFillTagsInfo& source = info != nullptr ? *info : nothing;
    const TKeepFileNameSafe keep(source);
    std::vector<TEventAction> actions;
    for (int i = 0; i < events.FRoot->ChildCount(); ++i) {
        TEventAction action = Plan(event_name, *events.FRoot->GetChild(i), source);
        if (action.window != nullptr || action.program.Length() > 0)
            actions.push_back(std::move(action));
    }
    return actions;
}

long long SendString(HWND window, ULONG id, UnicodeString text) {
    COPYDATASTRUCT data;
    if (!MakeCopyData(id, text, data)) return 0;
    return SendMessageW(window, WM_COPYDATA, reinterpret_cast<WPARAM>(window),
                        reinterpret_cast<LPARAM>(&data));
}
