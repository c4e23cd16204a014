// The windows of all processes of this host root, as files of run/windows.
//
// A window is a record file named by its number, under an flock that its owner holds for as long as
// the window lives, and beside it the socket (number and ".s") at which its messages arrive. The
// lock goes with the process: a record that nobody has locked is a dead window's and is removed by
// whoever meets it.
#pragma once

#include <windows.h>

#include <optional>
#include <vector>

#include "base/unique_fd.h"
#include "text/host_text.h"

namespace host {

// Even, never 0 nor 0xFFFF, not given again before 2^30 others.
using WindowNumber = DWORD;

struct WindowRecord {
    DWORD process = 0;
    DWORD thread = 0;
    bool message_only = false;
    WideString class_name;
    WideString title;
};

// A window's place among the others. Owns what makes it alive; the end takes its files away.
class WindowClaim {
  public:
    WindowClaim() = default;
    WindowClaim(WindowClaim&& other) noexcept = default;
    WindowClaim& operator=(WindowClaim&& other) = delete;
    ~WindowClaim();

    // Publishes the window. Win32 code.
    DWORD Open(const WindowRecord& record);
    WindowNumber number() const { return number_; }
    // Where connections to the window arrive; does not block.
    int listener() const { return listener_.get(); }

  private:
    DWORD Listen();
    DWORD Publish(const WindowRecord& record);

    WindowNumber number_ = 0;
    UniqueFd folder_, listener_, record_;
};

// The record of a living window; nothing when there is none. What other processes wrote is checked.
std::optional<WindowRecord> ReadWindow(WindowNumber number);

struct LiveWindow {
    WindowNumber number;
    WindowRecord record;
};
// Newest first.
std::vector<LiveWindow> LiveWindows();

// A new connection to a window's socket, which does not block. Empty, with the Win32 code in
// `error`: ERROR_BUSY while too many others wait there.
UniqueFd ConnectToWindow(WindowNumber number, DWORD& error);

// The number that a handle stands for; 0 when it cannot be a window's.
WindowNumber NumberOf(HWND window);
HWND WindowOf(WindowNumber number);

}  // namespace host
