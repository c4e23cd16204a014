#include "windows/window_records.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <string>

#include "base/os_error.h"
#include "root/open_folder.h"
#include "root/runtime_directory.h"

namespace host {

namespace {

constexpr const char* kFolder = "windows";
constexpr WindowNumber kFirst = 0x10002;
constexpr WindowNumber kLast = 0x7FFFFFFE;
constexpr std::size_t kLongestText = 0x7FFF;

// The first bytes of a record file. The units of class and title follow.
struct RecordHead {
    DWORD magic, process, thread, message_only, class_units, title_units;
};
static_assert(sizeof(RecordHead) == 24);
constexpr DWORD kRecordMagic = 0x4E575651;

std::string NameOf(WindowNumber number) {
    char digits[9] = {};
    std::to_chars(digits, digits + 8, number, 16);
    return digits;
}

// The number in a file name; 0 when it does not have the form that NameOf gives.
WindowNumber ParseName(std::string_view name) {
    WindowNumber number = 0;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), number, 16);
    const bool whole = error == std::errc() && end == name.data() + name.size();
    return whole && NumberOf(WindowOf(number)) == number && NameOf(number) == name ? number : 0;
}

// The address names the socket through the folder's descriptor, because it has room for 107 bytes
// only.
sockaddr_un AddressOf(int folder, WindowNumber number) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string path =
        "/proc/self/fd/" + std::to_string(folder) + '/' + NameOf(number) + ".s";
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    return address;
}

std::string ReadUpTo(int fd, std::size_t most) {
    std::string bytes(most, '\0');
    const ssize_t count = pread(fd, bytes.data(), most, 0);
    bytes.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return bytes;
}

// Takes the number that follows the last one. The caller holds the folder's lock.
DWORD TakeNumber(int folder, WindowNumber& number) {
    const UniqueFd counter(openat(folder, "next", O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (!counter) return ErrorFromErrno(errno);
    number = std::max(ParseName(ReadUpTo(counter.get(), 8)), kFirst);
    struct stat taken;
    while (fstatat(folder, NameOf(number).c_str(), &taken, AT_SYMLINK_NOFOLLOW) == 0) {
        number = number >= kLast ? kFirst : number + 2;
    }
    const std::string next = NameOf(number >= kLast ? kFirst : number + 2);
    const bool kept =
        ftruncate(counter.get(), 0) == 0 &&
        pwrite(counter.get(), next.data(), next.size(), 0) == static_cast<ssize_t>(next.size());
    return kept ? NO_ERROR : ErrorFromErrno(errno);
}

std::string Encode(const WindowRecord& record) {
    const WideView name = WideView(record.class_name).substr(0, kLongestText);
    const WideView title = WideView(record.title).substr(0, kLongestText);
    const RecordHead head{kRecordMagic,
                          record.process,
                          record.thread,
                          record.message_only ? 1u : 0u,
                          static_cast<DWORD>(name.size()),
                          static_cast<DWORD>(title.size())};
    std::string bytes(reinterpret_cast<const char*>(&head), sizeof head);
    for (const WideView text : {name, title}) {
        bytes.append(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(WCHAR));
    }
    return bytes;
}

std::optional<WindowRecord> Decode(std::string_view bytes) {
    RecordHead head;
    if (bytes.size() < sizeof head) return std::nullopt;
    std::memcpy(&head, bytes.data(), sizeof head);
    bytes.remove_prefix(sizeof head);
    if (head.magic != kRecordMagic || head.class_units > kLongestText ||
        head.title_units > kLongestText ||
        bytes.size() != (std::size_t{head.class_units} + head.title_units) * sizeof(WCHAR)) {
        return std::nullopt;
    }
    WideString texts(bytes.size() / sizeof(WCHAR), 0);
    std::memcpy(texts.data(), bytes.data(), bytes.size());
    return WindowRecord{head.process, head.thread, head.message_only != 0,
                        texts.substr(0, head.class_units), texts.substr(head.class_units)};
}

std::optional<WindowRecord> ReadIn(int folder, WindowNumber number) {
    const std::string name = NameOf(number);
    const UniqueFd fd(openat(folder, name.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    if (!fd) return std::nullopt;
    if (flock(fd.get(), LOCK_SH | LOCK_NB) == 0) {
        unlinkat(folder, name.c_str(), 0);
        unlinkat(folder, (name + ".s").c_str(), 0);
        return std::nullopt;
    }
    constexpr std::size_t kMost = sizeof(RecordHead) + 2 * kLongestText * sizeof(WCHAR) + 1;
    return Decode(ReadUpTo(fd.get(), kMost));
}

}  // namespace

WindowClaim::~WindowClaim() {
    if (!listener_) return;
    unlinkat(folder_.get(), NameOf(number_).c_str(), 0);
    unlinkat(folder_.get(), (NameOf(number_) + ".s").c_str(), 0);
}

DWORD WindowClaim::Listen() {
    listener_ = UniqueFd(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const sockaddr_un address = AddressOf(folder_.get(), number_);
    constexpr int kWaiting = 4096;
    unlinkat(folder_.get(), (NameOf(number_) + ".s").c_str(), 0);
    const bool listens =
        listener_ &&
        bind(listener_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
        listen(listener_.get(), kWaiting) == 0;
    return listens ? NO_ERROR : ErrorFromErrno(errno);
}

// The record gets its name only when it is whole and locked.
DWORD WindowClaim::Publish(const WindowRecord& record) {
    const std::string bytes = Encode(record);
    const char* const draft = "draft";
    UniqueFd fd(
        openat(folder_.get(), draft, O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0600));
    const bool published =
        fd && flock(fd.get(), LOCK_EX | LOCK_NB) == 0 &&
        write(fd.get(), bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()) &&
        renameat(folder_.get(), draft, folder_.get(), NameOf(number_).c_str()) == 0;
    if (!published) return ErrorFromErrno(errno);
    record_ = std::move(fd);
    return NO_ERROR;
}

DWORD WindowClaim::Open(const WindowRecord& record) {
    folder_ = OpenRuntimeDirectory(kFolder);
    if (!folder_) return ErrorFromErrno(errno);
    const UniqueFd lock = LockRuntimeDirectory(folder_.get());
    if (!lock) return ErrorFromErrno(errno);
    DWORD error = TakeNumber(folder_.get(), number_);
    if (error == NO_ERROR) error = Listen();
    return error == NO_ERROR ? Publish(record) : error;
}

std::optional<WindowRecord> ReadWindow(WindowNumber number) {
    const UniqueFd folder = number == 0 ? UniqueFd() : OpenRuntimeDirectory(kFolder);
    return folder ? ReadIn(folder.get(), number) : std::nullopt;
}

std::vector<LiveWindow> LiveWindows() {
    std::vector<LiveWindow> windows;
    UniqueFd folder = OpenRuntimeDirectory(kFolder);
    const int listing = folder ? fcntl(folder.get(), F_DUPFD_CLOEXEC, 0) : -1;
    const OpenFolder entries(listing < 0 ? nullptr : fdopendir(listing));
    if (entries == nullptr) {
        const UniqueFd unused(listing);
        return windows;
    }
    while (const dirent* entry = NextEntry(entries)) {
        const WindowNumber number = ParseName(entry->d_name);
        auto record = number == 0 ? std::nullopt : ReadIn(folder.get(), number);
        if (record) windows.push_back({number, std::move(*record)});
    }
    std::sort(windows.begin(), windows.end(),
              [](const LiveWindow& a, const LiveWindow& b) { return a.number > b.number; });
    return windows;
}

UniqueFd ConnectToWindow(WindowNumber number, DWORD& error) {
    error = ERROR_INVALID_WINDOW_HANDLE;
    const UniqueFd folder = number == 0 ? UniqueFd() : OpenRuntimeDirectory(kFolder);
    if (!folder) return UniqueFd();
    UniqueFd fd(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!fd) {
        error = ErrorFromErrno(errno);
        return fd;
    }
    const sockaddr_un address = AddressOf(folder.get(), number);
    const int result =
        connect(fd.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address);
    if (result == 0) {
        error = NO_ERROR;
        return fd;
    }
    if (errno == EAGAIN) error = ERROR_BUSY;
    return UniqueFd();
}

WindowNumber NumberOf(HWND window) {
    const auto value = reinterpret_cast<ULONG_PTR>(window);
    return value >= kFirst && value <= kLast && value % 2 == 0 ? static_cast<WindowNumber>(value)
                                                               : 0;
}

HWND WindowOf(WindowNumber number) {
    return reinterpret_cast<HWND>(static_cast<ULONG_PTR>(number));
}

}  // namespace host
