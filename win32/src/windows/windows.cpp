// Creates, finds and destroys windows.
#include <windows.h>

#include "base/os_error.h"
#include "text/case_fold.h"
#include "windows/name_table.h"
#include "windows/thread_windows.h"

using namespace host;

namespace {

HWND FailWindow(DWORD code) {
    SetLastError(code);
    return nullptr;
}

bool Matches(const WindowRecord& record, LPCWSTR class_name, LPCWSTR title) {
    return (class_name == nullptr || SameFileName(record.class_name, class_name)) &&
           (title == nullptr || SameFileName(record.title, title));
}

// Sends the first two messages of a window; false when its procedure refuses the window.
bool AcceptedByItsProcedure(ThreadWindows& windows, WindowNumber number, CREATESTRUCTW& create) {
    const auto parameter = reinterpret_cast<LPARAM>(&create);
    return windows.Call(number, WM_NCCREATE, 0, parameter) != FALSE &&
           windows.Call(number, WM_CREATE, 0, parameter) != -1;
}

OwnWindow* OwnWindowOf(HWND window) {
    ThreadWindows* const windows = ThreadWindows::OfThisThread();
    OwnWindow* const own = windows == nullptr ? nullptr : windows->Find(NumberOf(window));
    if (own == nullptr) SetLastError(ERROR_INVALID_WINDOW_HANDLE);
    return own;
}

}  // namespace

HWND CreateWindowExW(DWORD extended_style, LPCWSTR class_name, LPCWSTR title, DWORD style, int x,
                     int y, int width, int height, HWND parent, HMENU menu, HINSTANCE instance,
                     LPVOID parameter) {
    ThreadWindows* const windows = ThreadWindows::OfThisThread();
    if (windows == nullptr) return FailWindow(ERROR_NOT_ENOUGH_MEMORY);
    if (parent != nullptr && parent != HWND_MESSAGE) return FailWindow(ERROR_NOT_SUPPORTED);
    const WindowClass* const window_class = FindWindowClass(class_name);
    if (window_class == nullptr) return FailWindow(ERROR_CANNOT_FIND_WND_CLASS);
    WindowClaim claim;
    // Atoms that are sent to the window stay when their sender ends.
    DWORD error = NameTable::Atoms().Join();
    if (error == NO_ERROR) {
        error = claim.Open({GetCurrentProcessId(), GetCurrentThreadId(), parent == HWND_MESSAGE,
                            window_class->name, WideString(ViewOf(title))});
    }
    if (error != NO_ERROR) return FailWindow(error);
    const WindowNumber number = claim.number();
    windows->Add(std::make_unique<OwnWindow>(std::move(claim), window_class->procedure));
    CREATESTRUCTW create{
        parameter, instance,   menu,          parent, height, width, y, x, static_cast<LONG>(style),
        title,     class_name, extended_style};
    if (AcceptedByItsProcedure(*windows, number, create)) return WindowOf(number);
    windows->Remove(number);
    return nullptr;
}

BOOL DestroyWindow(HWND window) {
    ThreadWindows* const windows = ThreadWindows::OfThisThread();
    const WindowNumber number = NumberOf(window);
    if (windows == nullptr || windows->Find(number) == nullptr) {
        return Fail(ReadWindow(number) ? ERROR_ACCESS_DENIED : ERROR_INVALID_WINDOW_HANDLE);
    }
    windows->Call(number, WM_DESTROY, 0, 0);
    if (windows->Find(number) != nullptr) windows->Call(number, WM_NCDESTROY, 0, 0);
    windows->Remove(number);
    return TRUE;
}

LRESULT DefWindowProcW(HWND window, UINT message, WPARAM, LPARAM) {
    if (message == WM_NCCREATE) return TRUE;
    if (message == WM_CLOSE) DestroyWindow(window);
    return 0;
}

LONG_PTR GetWindowLongPtrW(HWND window, int index) {
    const OwnWindow* const own = OwnWindowOf(window);
    if (own == nullptr || index != GWLP_USERDATA) {
        if (own != nullptr) SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    return own->user_data;
}

LONG_PTR SetWindowLongPtrW(HWND window, int index, LONG_PTR value) {
    OwnWindow* const own = OwnWindowOf(window);
    if (own == nullptr || index != GWLP_USERDATA) {
        if (own != nullptr) SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    return std::exchange(own->user_data, value);
}

HWND FindWindowW(LPCWSTR class_name, LPCWSTR title) {
    // A class atom. This host knows windows by name only.
    if (class_name != nullptr && reinterpret_cast<ULONG_PTR>(class_name) <= 0xFFFF) {
        return FailWindow(ERROR_NOT_SUPPORTED);
    }
    HWND message_only = nullptr;
    for (const LiveWindow& window : LiveWindows()) {
        if (!Matches(window.record, class_name, title)) continue;
        if (!window.record.message_only) return WindowOf(window.number);
        if (message_only == nullptr) message_only = WindowOf(window.number);
    }
    return message_only;
}
