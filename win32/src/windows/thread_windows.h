// The windows of one thread, and the messages that wait for it.
//
// A window belongs to the thread that made it. Only that thread calls it: when it looks for
// messages, and when it waits for an answer to one of its own. The windows of a thread end with it.
#pragma once

#include <windows.h>

#include <chrono>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "base/fork_count.h"
#include "windows/ipc.h"
#include "windows/window_class.h"
#include "windows/window_records.h"

namespace host {

using Deadline = std::optional<std::chrono::steady_clock::time_point>;  // nothing: never
Deadline DeadlineAfter(UINT milliseconds);

struct OwnWindow {
    OwnWindow(WindowClaim place, WNDPROC of) : claim(std::move(place)), procedure(of) {}

    WindowClaim claim;
    WNDPROC procedure;
    LONG_PTR user_data = 0;
};

// Selects posted messages. `last` 0 means all numbers.
struct MessageFilter {
    HWND window = nullptr;
    UINT first = 0;
    UINT last = 0;
    bool Takes(const MSG& message) const;
};

class ThreadWindows {
  public:
    // Null while the thread is ending: its windows are gone then.
    static ThreadWindows* OfThisThread();

    void Add(std::unique_ptr<OwnWindow> window);
    void Remove(WindowNumber number);
    OwnWindow* Find(WindowNumber number);
    // Calls the window's procedure; 0 with ERROR_INVALID_WINDOW_HANDLE without such a window.
    LRESULT Call(WindowNumber number, UINT message, WPARAM wparam, LPARAM lparam);

    // False when too many messages wait.
    bool Post(const MSG& message);
    // Receives the messages that have arrived and answers the sent ones; never waits for a message.
    void Answer();
    // The next posted message; false when there is none.
    bool Take(const MessageFilter& filter, bool remove, MSG& message);
    // Waits until `connection` can be read, or until something arrives for a window.
    // False when the deadline has passed, or the system cannot wait.
    bool Wait(int connection, bool for_windows, const Deadline& deadline);

    // Sends to a window of another thread and waits for the answer. Meanwhile it answers messages
    // that are sent to this thread, unless `deaf` is set. Returns a Win32 code.
    DWORD Send(WindowNumber number, const IpcMessage& wire, const Deadline& deadline, bool deaf,
               LRESULT& answer);

  private:
    // In the child of a fork: the windows and messages are the parent's.
    void LeaveParents();

    struct Arrival {
        WindowNumber window;
        UniqueFd connection;
        IpcMessage wire;
    };
    void Accept();
    void ReadArrivals();
    void AnswerSent(Arrival arrival);
    UniqueFd Connect(WindowNumber number, const Deadline& deadline, bool deaf, DWORD& error);

    std::map<WindowNumber, std::unique_ptr<OwnWindow>> windows_;
    std::deque<Arrival> arrivals_;  // accepted, message not yet read
    std::deque<Arrival> sent_;      // waiting for an answer
    std::deque<MSG> posted_;
    int depth_ = 0;  // of answers that are being made
    unsigned process_ = ForkCount();
};

}  // namespace host
