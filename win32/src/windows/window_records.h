// The windows of all processes of this host root, as files in run/windows.
//
// A window is a record file with the window's number as its name. Its owner holds an flock on it
// while the window lives. Beside it is the socket (number and ".s") that receives its messages. The
// lock ends with the process: a record without a lock belongs to a dead window, and any process
// that meets it removes it.
#pragma once

#include <windows.h>

#include <optional>
#include <vector>

#include "base/unique_fd.h"
#include "text/host_text.h"

namespace host {

// An even number, never 0 nor 0xFFFF. A number is not used again before 2^30 others.
using WindowNumber = DWORD;

// What other processes know of a window. `process` and `thread` are ids of its owner.
struct WindowRecord {
    DWORD process = 0;
    DWORD thread = 0;
    bool message_only = false;
    WideString class_name;
    WideString title;
};

// One window among those of all processes. It owns the files of the window and removes them at its
// end.
class WindowClaim {
  public:
    WindowClaim() = default;
    WindowClaim(WindowClaim&& other) noexcept = default;
    WindowClaim& operator=(WindowClaim&& other) = delete;
    ~WindowClaim();

    // Publishes the window. Win32 code.
    DWORD Open(const WindowRecord& record);
    WindowNumber number() const { return number_; }
    // The listening socket of the window; non-blocking, and owned by this object.
    int listener() const { return listener_.get(); }

  private:
    DWORD Listen();
    DWORD Publish(const WindowRecord& record);

    WindowNumber number_ = 0;
    UniqueFd folder_, listener_, record_;
};

// The record of a living window, or nothing. Bytes that other processes wrote are checked.
std::optional<WindowRecord> ReadWindow(WindowNumber number);

struct LiveWindow {
    WindowNumber number;
    WindowRecord record;
};
// All living windows, the newest first. Removes the files of dead ones.
std::vector<LiveWindow> LiveWindows();

// A new connection to a window's socket, which does not block. Empty, with the Win32 code in
// `error`: ERROR_BUSY while too many others wait there.
UniqueFd ConnectToWindow(WindowNumber number, DWORD& error);

// The number that a handle stands for; 0 when it cannot be a window's.
WindowNumber NumberOf(HWND window);
HWND WindowOf(WindowNumber number);

}  // namespace host
