#include "windows/thread_windows.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <climits>

namespace host {

namespace {

constexpr std::size_t kMostPosted = 10000;
constexpr std::size_t kMostArrivals = 64;
// The greatest depth of nested answers in a thread. Further senders wait.
constexpr int kDeepest = 32;

int MillisecondsUntil(const Deadline& deadline) {
    if (!deadline) return -1;
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(*deadline - std::chrono::steady_clock::now());
    return static_cast<int>(std::clamp<long long>(left.count(), 0, INT_MAX));
}

// A message that arrived, as the window's procedure gets it: its parameters point at a copy of the
// memory.
class DeliveredMessage {
  public:
    explicit DeliveredMessage(IpcMessage& wire) : lparam_(static_cast<LPARAM>(wire.packet.lparam)) {
        void* const bytes = wire.payload.empty() ? nullptr : wire.payload.data();
        if (wire.packet.message == WM_COPYDATA) {
            block_ = {wire.packet.copy_data, wire.packet.payload_bytes, bytes};
            lparam_ = reinterpret_cast<LPARAM>(&block_);
        } else if (CarriesMemory(wire.packet.message)) {
            lparam_ = reinterpret_cast<LPARAM>(bytes);
        }
    }
    DeliveredMessage(const DeliveredMessage&) = delete;
    DeliveredMessage& operator=(const DeliveredMessage&) = delete;
    LPARAM lparam() const { return lparam_; }

  private:
    COPYDATASTRUCT block_{};
    LPARAM lparam_;
};

}  // namespace

Deadline DeadlineAfter(UINT milliseconds) {
    return std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
}

bool MessageFilter::Takes(const MSG& message) const {
    return (window == nullptr || window == message.hwnd) && message.message >= first &&
           (last == 0 || message.message <= last);
}

ThreadWindows* ThreadWindows::OfThisThread() {
    struct Owner {
        explicit Owner(ThreadWindows*& slot) : slot_(slot) { slot_ = &windows_; }
        Owner(const Owner&) = delete;
        Owner& operator=(const Owner&) = delete;
        ~Owner() { slot_ = nullptr; }

      private:
        ThreadWindows*& slot_;
        ThreadWindows windows_;
    };
    // Has no destructor, so it is still valid while the thread's objects are destroyed.
    static thread_local constinit ThreadWindows* current = nullptr;
    static thread_local Owner owner(current);
    if (current != nullptr && current->process_ != ForkCount()) current->LeaveParents();
    return current;
}

void ThreadWindows::LeaveParents() {
    process_ = ForkCount();
    windows_.clear();
    arrivals_.clear();
    sent_.clear();
    posted_.clear();
}

void ThreadWindows::Add(std::unique_ptr<OwnWindow> window) {
    const WindowNumber number = window->claim.number();
    windows_.insert_or_assign(number, std::move(window));
}

void ThreadWindows::Remove(WindowNumber number) {
    const auto found = windows_.find(number);
    if (found == windows_.end()) return;
    windows_.erase(found);
    std::erase_if(posted_, [number](const MSG& m) { return m.hwnd == WindowOf(number); });
}

OwnWindow* ThreadWindows::Find(WindowNumber number) {
    const auto found = windows_.find(number);
    return found == windows_.end() ? nullptr : found->second.get();
}

LRESULT ThreadWindows::Call(WindowNumber number, UINT message, WPARAM wparam, LPARAM lparam) {
    const OwnWindow* const window = Find(number);
    if (window == nullptr) {
        SetLastError(ERROR_INVALID_WINDOW_HANDLE);
        return 0;
    }
    return window->procedure(WindowOf(number), message, wparam, lparam);
}

bool ThreadWindows::Post(const MSG& message) {
    if (posted_.size() >= kMostPosted) return false;
    posted_.push_back(message);
    return true;
}

void ThreadWindows::Accept() {
    for (const auto& [number, window] : windows_) {
        while (posted_.size() < kMostPosted) {
            const int connection =
                accept4(window->claim.listener(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
            if (connection < 0) break;
            arrivals_.push_back({number, UniqueFd(connection), {}});
            ReadArrivals();
        }
    }
}

void ThreadWindows::ReadArrivals() {
    std::deque<Arrival> waiting;
    for (Arrival& arrival : arrivals_) {
        const ReadOutcome outcome = ReadMessage(arrival.connection.get(), arrival.wire);
        if (outcome == ReadOutcome::kNothingYet) {
            waiting.push_back(std::move(arrival));
        } else if (outcome == ReadOutcome::kMessage) {
            const MessagePacket& packet = arrival.wire.packet;
            if (packet.kind == MessageKind::kSend) {
                sent_.push_back(std::move(arrival));
            } else {
                Post({WindowOf(arrival.window),
                      packet.message,
                      packet.wparam,
                      static_cast<LPARAM>(packet.lparam),
                      GetTickCount(),
                      {}});
            }
        }
    }
    // When too many connections wait, the oldest ones that have sent nothing are closed.
    while (waiting.size() > kMostArrivals) waiting.pop_front();
    arrivals_ = std::move(waiting);
}

void ThreadWindows::AnswerSent(Arrival arrival) {
    if (Find(arrival.window) == nullptr || PeerIsGone(arrival.connection.get())) return;
    const DeliveredMessage message(arrival.wire);
    const LRESULT answer = Call(arrival.window, arrival.wire.packet.message,
                                arrival.wire.packet.wparam, message.lparam());
    WriteAnswer(arrival.connection.get(), answer);
}

void ThreadWindows::Answer() {
    struct Level {
        explicit Level(int& depth) : depth_(++depth) {}
        Level(const Level&) = delete;
        Level& operator=(const Level&) = delete;
        ~Level() { --depth_; }

      private:
        int& depth_;
    };
    ReadArrivals();
    Accept();
    if (depth_ >= kDeepest) return;
    const Level level(depth_);
    while (!sent_.empty()) {
        Arrival arrival = std::move(sent_.front());
        sent_.pop_front();
        AnswerSent(std::move(arrival));
    }
}

bool ThreadWindows::Take(const MessageFilter& filter, bool remove, MSG& message) {
    const auto found =
        std::find_if(posted_.begin(), posted_.end(), [&](const MSG& m) { return filter.Takes(m); });
    if (found == posted_.end()) return false;
    message = *found;
    if (remove) posted_.erase(found);
    return true;
}

bool ThreadWindows::Wait(int connection, bool for_windows, const Deadline& deadline) {
    std::vector<pollfd> states{{connection, POLLIN, 0}};
    if (for_windows) {
        // New messages wait at their windows while the queue is full.
        const bool has_room = posted_.size() < kMostPosted;
        for (const auto& [number, window] : windows_) {
            if (!has_room) break;
            states.push_back({window->claim.listener(), POLLIN, 0});
        }
        for (const Arrival& arrival : arrivals_) {
            states.push_back({arrival.connection.get(), POLLIN, 0});
        }
    }
    const int ready = poll(states.data(), states.size(), MillisecondsUntil(deadline));
    if (ready < 0 && errno != EINTR) return false;  // it would fail again at once, without waiting
    return ready > 0 || MillisecondsUntil(deadline) != 0;
}

UniqueFd ThreadWindows::Connect(WindowNumber number, const Deadline& deadline, bool deaf,
                                DWORD& error) {
    constexpr UINT kPauseMilliseconds = 5;
    for (;;) {
        UniqueFd connection = ConnectToWindow(number, error);
        if (connection || error != ERROR_BUSY) return connection;
        if (MillisecondsUntil(deadline) == 0) {
            error = ERROR_TIMEOUT;
            return connection;
        }
        Sleep(kPauseMilliseconds);
        if (!deaf) Answer();
    }
}

DWORD ThreadWindows::Send(WindowNumber number, const IpcMessage& wire, const Deadline& deadline,
                          bool deaf, LRESULT& answer) {
    DWORD error = NO_ERROR;
    const UniqueFd connection = Connect(number, deadline, deaf, error);
    if (!connection) return error;
    if (!WriteMessage(connection.get(), wire)) return ERROR_NO_SYSTEM_RESOURCES;
    for (;;) {
        // A procedure that was called meanwhile has forked. The answer is the parent's.
        if (!connection) return ERROR_INVALID_WINDOW_HANDLE;
        const bool answering = !deaf && depth_ < kDeepest;
        if (!Wait(connection.get(), answering, deadline)) return ERROR_TIMEOUT;
        pollfd state{connection.get(), POLLIN, 0};
        if (poll(&state, 1, 0) == 1) {
            return ReadAnswer(connection.get(), answer) ? NO_ERROR : ERROR_INVALID_WINDOW_HANDLE;
        }
        if (answering) Answer();
    }
}

}  // namespace host
