// qv event fire, qv event listen, qv tags: fire an event of a sample job, and show what it sends.
#include <windows.h>

#include <winspool.h>

#include <chrono>
#include <fstream>
#include <iterator>
#include <memory>

#include "base/commands.h"
#include "base/files.h"
#include "driver_devmode/qvdm.h"
#include "driver_global/events.h"
#include "events/sample_job.h"
#include "mox_classes/format/template_string.h"
#include "mox_classes/text/sysutils.h"
#include "printer_query/spooler.h"

namespace qv {

namespace {

// Returns nullopt when the file cannot be read.
bool ReadDescription(const std::string& name, UnicodeString& text) {
    const UnicodeString wide = FromUtf8(name);
    if (!Sysutils::FileExists(wide)) return false;
    text = FromUtf8(ReadAll(name));
    return true;
}

// The description in a printer's settings.
UnicodeString PrinterEvent(const std::string& printer) {
    auto settings = GetGlobalDevMode(FromUtf8(printer));
    if (!settings.IsSuccess()) {
        throw Failure("cannot read the settings of " + Quoted(printer) + ": " +
                      SystemText(settings.GetErrorCode()));
    }
    TQVDM wrapper;
    if (settings.IsEmpty() || !wrapper.SetDEVMODE(&settings[0], settings.Size()))
        throw Failure(Quoted(printer) + " has no settings of the product");
    const UnicodeString target = wrapper.Target;
    if (target.Length() == 0 || target[1] != '<')
        throw Failure(Quoted(printer) + " has no event in its settings");
    return target;
}

std::string ActionText(const TEventAction& action) {
    if (action.window != nullptr)
        return "send\t" + OneLine(action.message) + "\t" + OneLine(action.text);
    if (action.refused) return "refuse\t" + OneLine(action.program);
    std::string text = "start\t" + OneLine(action.program);
    for (const UnicodeString& argument : action.arguments) text += "\n\t" + OneLine(argument);
    return text;
}

// One argument a line: a joined command line would not show where an argument ends.
void ShowEvent(const UnicodeString& event, const UnicodeString& description, TFillTagsInfo& info) {
    for (const TEventAction& action : PlanXmlEvent(event, description, &info))
        PrintLine(ActionText(action));
}

void FireEvent(const std::string& source, const std::string& event, const JobOptions& options,
               bool dry_run) {
    SampleJob job(options);
    UnicodeString description;
    if (!ReadDescription(source, description)) description = PrinterEvent(source);
    if (dry_run) return ShowEvent(FromUtf8(event), description, job.Info());
    if (!DoXmlEvent(FromUtf8(event), description, &job.Info()))
        throw Failure("the description is empty or not well-formed");
}

// Prints the text of each atom of a message that is registered or above WM_USER.
void PrintAtom(UINT message, ATOM atom) {
    WCHAR text[256];
    const UINT length = GlobalGetAtomNameW(atom, text, 256);
    if (length == 0) return;
    GlobalDeleteAtom(atom);
    PrintLine("atom\t" + std::to_string(message) + "\t" + OneLine(UnicodeString(text, length)));
}

struct Listener {
    long left;  // messages to print; negative: no limit
};

void PrintCopyData(const COPYDATASTRUCT& data) {
    const auto* text = static_cast<const WCHAR*>(data.lpData);
    std::size_t units = data.cbData / sizeof(WCHAR);
    if (units > 0 && text[units - 1] == 0) --units;
    PrintLine("text\t" + std::to_string(data.dwData) + "\t" +
              OneLine(UnicodeString(text, static_cast<long long>(units))));
}

LRESULT CALLBACK ListenerProcedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    auto* listener = reinterpret_cast<Listener*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (listener == nullptr || listener->left == 0)
        return DefWindowProcW(window, message, wparam, lparam);
    if (message == WM_COPYDATA) {
        PrintCopyData(*reinterpret_cast<const COPYDATASTRUCT*>(lparam));
    } else if (message >= WM_USER && wparam >= 0xC000 && wparam <= 0xFFFF) {
        PrintAtom(message, static_cast<ATOM>(wparam));
    } else {
        return DefWindowProcW(window, message, wparam, lparam);
    }
    if (listener->left > 0) --listener->left;
    return TRUE;
}

void Listen(const std::string& class_name, long count, long timeout) {
    const UnicodeString name = FromUtf8(class_name);
    WNDCLASSW window_class{};
    window_class.lpfnWndProc = ListenerProcedure;
    window_class.lpszClassName = name.t_str();
    HWND window = nullptr;
    if (RegisterClassW(&window_class) != 0) {
        window = CreateWindowExW(0, name.t_str(), name.t_str(), 0, 0, 0, 0, 0, nullptr, nullptr,
                                 nullptr, nullptr);
    }
    if (window == nullptr) {
        throw Failure("cannot make the window " + Quoted(name) + ": " + SystemText(GetLastError()));
    }
    Listener listener{count > 0 ? count : -1};
    SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(&listener));
    constexpr DWORD kPause = 10;  // milliseconds
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeout);
    while (listener.left != 0 && (timeout <= 0 || std::chrono::steady_clock::now() < end)) {
        MSG message;
        while (listener.left != 0 && PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            DispatchMessageW(&message);
        }
        if (listener.left != 0) Sleep(kPause);
    }
    DestroyWindow(window);
    if (listener.left > 0) throw Failure("timed out");
}

}  // namespace

void AddEventCommands(CLI::App& app) {
    auto job = std::make_shared<JobOptions>();
    auto text = std::make_shared<std::string>();
    auto name = std::make_shared<std::string>();
    auto limits = std::make_shared<std::pair<long, long>>(0, 0);

    CLI::App* event =
        app.add_subcommand("event", "Fire events of a job, and show the texts that they send");
    event->require_subcommand(1);
    CLI::App* fire = event->add_subcommand("fire", "Fire the event of a printer or of a file");
    fire->add_option("PRINTER|FILE", *text, "A printer's name, or a file with the description")
        ->required();
    fire->add_option("EVENT", *name, "The event's name")->required();
    auto dry_run = std::make_shared<bool>(false);
    fire->add_flag("-n,--dry-run", *dry_run,
                   "Show the texts that would be sent, and the programs with each argument");
    AddJobOptions(*fire, *job);
    fire->callback([=] { FireEvent(*text, *name, *job, *dry_run); });

    CLI::App* listen = event->add_subcommand("listen", "Print the texts that a window receives");
    listen->add_option("CLASS", *name, "The window's class and title")->required();
    listen->add_option("--count", limits->first, "End after that many texts");
    listen->add_option("--timeout", limits->second, "End after that many milliseconds");
    listen->callback([=] { Listen(*name, limits->first, limits->second); });

    CLI::App* tags = app.add_subcommand("tags", "Fill a template with the tags of a job");
    tags->add_option("TEMPLATE", *text, "For example \"{docname} {jobid%05d}\"")->required();
    AddJobOptions(*tags, *job);
    tags->callback([=] {
        SampleJob sample(*job);
        PrintLine(OneLine(TemplateStringSafeFormat(FromUtf8(*text), QVFillField, &sample.Info())));
    });
}

}  // namespace qv
