// Messages: sent, posted, taken.
#include <windows.h>

#include <string>

#include "base/os_error.h"
#include "registry/reg_calls.h"
#include "windows/thread_windows.h"

using namespace host;

namespace {

// Sends a message. Returns a Win32 code.
DWORD SendTo(ThreadWindows& windows, WindowNumber number, UINT message, WPARAM wparam,
             LPARAM lparam, const Deadline& deadline, bool deaf, LRESULT& answer) {
    if (windows.Find(number) != nullptr) {
        answer = windows.Call(number, message, wparam, lparam);
        return NO_ERROR;
    }
    IpcMessage wire;
    const DWORD error = PackMessage(MessageKind::kSend, message, wparam, lparam, wire);
    return error == NO_ERROR ? windows.Send(number, wire, deadline, deaf, answer) : error;
}

// Each window may take the whole time-out. The answers are dropped.
void Broadcast(ThreadWindows& windows, UINT message, WPARAM wparam, LPARAM lparam,
               const std::optional<UINT>& timeout, bool deaf) {
    for (const LiveWindow& window : LiveWindows()) {
        if (window.record.message_only) continue;
        LRESULT unused = 0;
        SendTo(windows, window.number, message, wparam, lparam,
               timeout ? DeadlineAfter(*timeout) : Deadline(), deaf, unused);
    }
}

// Whether this broadcast is sent later, after the group of changes to the registry. Programs that
// get it before would still read the old settings of the printer.
bool WaitsForChanges(UINT message, LPARAM lparam, UINT flags, UINT timeout) {
    if (message != WM_DEVMODECHANGE || lparam == 0) return false;
    const std::u16string printer(reinterpret_cast<LPCWSTR>(lparam));
    return RunAfterGroup([printer, flags, timeout] {
        SendMessageTimeoutW(HWND_BROADCAST, WM_DEVMODECHANGE, 0,
                            reinterpret_cast<LPARAM>(printer.c_str()), flags, timeout, nullptr);
    });
}

BOOL PostTo(WindowNumber number, const IpcMessage& wire) {
    DWORD error = NO_ERROR;
    const UniqueFd connection = ConnectToWindow(number, error);
    if (!connection) return Fail(error == ERROR_BUSY ? ERROR_NOT_ENOUGH_QUOTA : error);
    return WriteMessage(connection.get(), wire) ? TRUE : Fail(ERROR_NO_SYSTEM_RESOURCES);
}

// Whether `window` can select messages: null, or a window of this thread.
bool CheckFilter(ThreadWindows* windows, LPMSG message, HWND window) {
    if (windows == nullptr || message == nullptr) return Fail(ERROR_INVALID_PARAMETER);
    return window == nullptr || windows->Find(NumberOf(window)) != nullptr ||
           Fail(ERROR_INVALID_WINDOW_HANDLE);
}

}  // namespace

LRESULT SendMessageTimeoutW(HWND window, UINT message, WPARAM wparam, LPARAM lparam, UINT flags,
                            UINT timeout, PDWORD_PTR result) {
    if (result != nullptr) *result = 0;
    ThreadWindows* const windows = ThreadWindows::OfThisThread();
    if (windows == nullptr) return Fail(ERROR_INVALID_WINDOW_HANDLE);
    const bool deaf = (flags & SMTO_BLOCK) != 0;
    if (window == HWND_BROADCAST) {
        if (!WaitsForChanges(message, lparam, flags, timeout)) {
            Broadcast(*windows, message, wparam, lparam, timeout, deaf);
        }
        return TRUE;
    }
    LRESULT answer = 0;
    const DWORD error = SendTo(*windows, NumberOf(window), message, wparam, lparam,
                               DeadlineAfter(timeout), deaf, answer);
    if (error != NO_ERROR) return Fail(error);
    if (result != nullptr) *result = static_cast<DWORD_PTR>(answer);
    return TRUE;
}

LRESULT SendMessageW(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    ThreadWindows* const windows = ThreadWindows::OfThisThread();
    if (windows == nullptr) return Fail(ERROR_INVALID_WINDOW_HANDLE);
    if (window == HWND_BROADCAST) {
        Broadcast(*windows, message, wparam, lparam, std::nullopt, false);
        return TRUE;
    }
    LRESULT answer = 0;
    const DWORD error =
        SendTo(*windows, NumberOf(window), message, wparam, lparam, Deadline(), false, answer);
    if (error != NO_ERROR) SetLastError(error);
    return answer;
}

BOOL PostMessageW(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    if (CarriesMemory(message)) return Fail(ERROR_MESSAGE_SYNC_ONLY);
    if (window == nullptr) {
        ThreadWindows* const windows = ThreadWindows::OfThisThread();
        const bool posted = windows != nullptr &&
                            windows->Post({nullptr, message, wparam, lparam, GetTickCount(), {}});
        return posted ? TRUE : Fail(ERROR_NOT_ENOUGH_QUOTA);
    }
    IpcMessage wire;
    PackMessage(MessageKind::kPost, message, wparam, lparam, wire);
    if (window != HWND_BROADCAST) return PostTo(NumberOf(window), wire);
    for (const LiveWindow& target : LiveWindows()) {
        if (!target.record.message_only) PostTo(target.number, wire);
    }
    return TRUE;
}

BOOL PeekMessageW(LPMSG message, HWND window, UINT first, UINT last, UINT remove) {
    ThreadWindows* const windows = ThreadWindows::OfThisThread();
    if (!CheckFilter(windows, message, window)) return FALSE;
    windows->Answer();
    return windows->Take({window, first, last}, (remove & PM_REMOVE) != 0, *message) ? TRUE : FALSE;
}

LRESULT DispatchMessageW(const MSG* message) {
    ThreadWindows* const windows = ThreadWindows::OfThisThread();
    if (windows == nullptr || message == nullptr || message->hwnd == nullptr) return 0;
    return windows->Call(NumberOf(message->hwnd), message->message, message->wParam,
                         message->lParam);
}
