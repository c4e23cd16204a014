#include "windows/name_table.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <time.h>

#include <chrono>
#include <mutex>

#include "base/os_error.h"
#include "files/share_modes.h"
#include "root/runtime_directory.h"

namespace host {
namespace {

// Bytes of the file that are locked: by the session's processes, and by the one that uses it.
constexpr off_t kSession = 0;
constexpr off_t kUse = 1;
constexpr std::uint32_t kMostUses = 0xFFFFFFFF;  // a name with so many uses never ends

// Tries until it is true, for five seconds.
template <class Try>
bool Patiently(const Try& attempt) {
    constexpr timespec kPause = {0, 50'000};
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (!attempt()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        nanosleep(&kPause, nullptr);
    }
    return true;
}

// A process that gets the write lock of the session is the only one, and begins a new session. A
// process that is stopped at this moment keeps the others out.
bool JoinSession(int fd) {
    if (LockRange(fd, F_WRLCK, kSession, 1) == 0) NameFile::Begin(fd);
    return LockRange(fd, F_RDLCK, kSession, 1) == 0;
}

class UseLock {
  public:
    explicit UseLock(int fd)
        : fd_(fd), held_(Patiently([fd] { return LockRange(fd, F_WRLCK, kUse, 1) == 0; })) {}
    UseLock(const UseLock&) = delete;
    UseLock& operator=(const UseLock&) = delete;
    ~UseLock() {
        if (held_) LockRange(fd_, F_UNLCK, kUse, 1);
    }
    bool Held() const { return held_; }

  private:
    const int fd_;
    const bool held_;
};

bool IsUsable(int fd) {
    struct stat info;
    return fstat(fd, &info) == 0 && S_ISREG(info.st_mode) && info.st_nlink != 0;
}

std::uint32_t IndexOf(ATOM number) {
    return number >= kFirstNamed ? std::uint32_t{number} - kFirstNamed : NameFile::kNumbers;
}

}  // namespace

// Never destroyed: a thread that ends late still uses them.
NameTable& NameTable::Atoms() {
    static NameTable& atoms = *new NameTable("atoms.table");
    return atoms;
}

NameTable& NameTable::Messages() {
    static NameTable& messages = *new NameTable("messages.table");
    return messages;
}

// Opens the file when it is not open yet, when the host root has changed, and when the open file
// was removed: other processes use a new one then.
DWORD NameTable::Open() {
    const bool same_root = root_.StillHolds();
    if (same_root && fd_ && IsUsable(fd_.get())) return NO_ERROR;
    const UniqueFd folder = OpenRuntimeDirectory("names");
    if (!folder) return ErrorFromErrno(errno);
    fd_ = UniqueFd();
    UniqueFd file(
        openat(folder.get(), file_, O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0600));
    if (!file) return ErrorFromErrno(errno);
    if (!IsUsable(file.get()) || !Patiently([&] { return JoinSession(file.get()); })) {
        return ERROR_BUSY;
    }
    fd_ = std::move(file);
    return NO_ERROR;
}

template <class Operation>
DWORD NameTable::Run(const Operation& operation) {
    const std::scoped_lock lock(lock_);
    try {
        const DWORD error = Open();
        if (error != NO_ERROR) return error;
        const UseLock use(fd_.get());
        if (!use.Held()) return ERROR_BUSY;
        NameFile file(fd_.get());
        return operation(file);
    } catch (const NameFileFailure& failure) {
        return failure.code;
    }
}

DWORD NameTable::Join() {
    return Run([](NameFile&) { return DWORD{NO_ERROR}; });
}

void NameTable::EnterChild() {
    const int inherited = fd_.Inherited();
    if (inherited < 0) return;
    fd_ = OpenedAgain(inherited, O_RDWR);
    if (fd_ && LockRange(fd_.get(), F_RDLCK, kSession, 1) != 0) fd_ = UniqueFd();
}

DWORD NameTable::Add(WideView name, ATOM& number) {
    return Run([&](NameFile& file) {
        std::uint32_t index = file.Find(name);
        if (index == NameFile::kNumbers) {
            index = file.Insert(name);
            if (index == NameFile::kNumbers) return DWORD{ERROR_NOT_ENOUGH_MEMORY};
        } else {
            const std::uint32_t uses = file.UsesOf(index);
            if (uses != kMostUses) file.SetUses(index, uses + 1);
        }
        number = static_cast<ATOM>(kFirstNamed + index);
        return DWORD{NO_ERROR};
    });
}

DWORD NameTable::Release(ATOM number) {
    return Run([index = IndexOf(number)](NameFile& file) {
        const std::uint32_t uses = file.UsesOf(index);
        if (uses == 0) return DWORD{ERROR_INVALID_HANDLE};
        if (uses == 1) {
            file.Remove(index);
        } else if (uses != kMostUses) {
            file.SetUses(index, uses - 1);
        }
        return DWORD{NO_ERROR};
    });
}

DWORD NameTable::NameOf(ATOM number, WideString& name) {
    return Run([&, index = IndexOf(number)](NameFile& file) {
        if (file.UsesOf(index) != 0) name = file.NameAt(index);
        return DWORD{name.empty() ? DWORD{ERROR_INVALID_HANDLE} : DWORD{NO_ERROR}};
    });
}

}  // namespace host
