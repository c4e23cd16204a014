#include "files/shared_block.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <time.h>

#include <cerrno>
#include <cinttypes>
#include <cstdio>

#include "base/os_error.h"
#include "files/share_modes.h"
#include "root/host_path.h"
#include "root/host_root.h"

namespace host {
namespace {

std::string Hash(std::string_view text) {
    std::uint64_t hash = 0xCBF29CE484222325;
    for (const char byte : text) hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001B3;
    char digits[17];
    std::snprintf(digits, sizeof digits, "%016" PRIx64, hash);
    return digits;
}

// A file name that no other mapping name has; long ones are told apart by their hash.
std::string Escaped(std::u16string_view name) {
    constexpr std::size_t kLongest = 180;
    std::string text;
    for (const char16_t unit : name) {
        const bool plain = (unit >= u'0' && unit <= u'9') || (unit >= u'A' && unit <= u'Z') ||
                           (unit >= u'a' && unit <= u'z') || unit == u'_' || unit == u'-';
        char code[6] = {static_cast<char>(unit)};
        if (!plain) std::snprintf(code, sizeof code, "%%%04x", static_cast<unsigned>(unit));
        text += code;
    }
    return text.size() <= kLongest ? text : "+" + Hash(text) + Hash("+" + text);
}

// Outcome of one attempt; ERROR_BUSY asks for another.
DWORD TryOpen(const std::string& name, std::uint64_t size, UniqueFd& fd, bool& existed) {
    fd = UniqueFd(shm_open(name.c_str(), O_RDWR | O_CREAT, 0600));
    if (!fd) return ErrorFromErrno(errno);
    existed = LockRange(fd.get(), F_WRLCK, 0, 1) != 0;
    if (existed && LockRange(fd.get(), F_RDLCK, 0, 1) != 0) return ERROR_BUSY;
    struct stat info;
    if (fstat(fd.get(), &info) != 0) return ErrorFromErrno(errno);
    if (info.st_uid != geteuid()) return ERROR_ACCESS_DENIED;
    if (info.st_nlink == 0) return ERROR_BUSY;
    if (existed) return NO_ERROR;
    if (info.st_size != 0) {
        // Left behind by a process that was killed; views of it may live on elsewhere.
        shm_unlink(name.c_str());
        return ERROR_BUSY;
    }
    if (posix_fallocate(fd.get(), 0, static_cast<off_t>(size)) != 0) {
        shm_unlink(name.c_str());
        return ERROR_NOT_ENOUGH_MEMORY;
    }
    return LockRange(fd.get(), F_RDLCK, 0, 1) == 0 ? NO_ERROR : ERROR_NO_SYSTEM_RESOURCES;
}

}  // namespace

std::string SharedBlockName(std::u16string_view name) {
    return "/qv_rtl." + std::to_string(geteuid()) + '.' + Hash(HostRoot()) + '.' + Escaped(name);
}

DWORD OpenSharedBlock(const std::string& name, std::uint64_t size, UniqueFd& fd, bool& existed) {
    constexpr int kAttempts = 2000;  // a millisecond each
    constexpr timespec kPause = {0, 1'000'000};
    for (int i = 0; i < kAttempts; ++i) {
        const DWORD error = TryOpen(name, size, fd, existed);
        if (error != ERROR_BUSY) return error;
        fd = UniqueFd();
        nanosleep(&kPause, nullptr);
    }
    return ERROR_BUSY;
}

UniqueFd SharedBlockOfChild(int fd) {
    UniqueFd own = OpenedAgain(fd, O_RDWR);
    return own && LockRange(own.get(), F_RDLCK, 0, 1) == 0 ? std::move(own) : UniqueFd();
}

void ReleaseSharedBlock(const std::string& name, UniqueFd held) {
    // A view keeps the open file description, and the lock with it. So unlock first.
    LockRange(held.get(), F_UNLCK, 0, 1);
    const UniqueFd fd(shm_open(name.c_str(), O_RDWR, 0));
    struct stat info;
    // The holder of the write lock is the only user of the block, so the name still means it.
    if (fd && LockRange(fd.get(), F_WRLCK, 0, 1) == 0 && fstat(fd.get(), &info) == 0 &&
        info.st_nlink != 0 && info.st_uid == geteuid()) {
        shm_unlink(name.c_str());
    }
}

}  // namespace host
