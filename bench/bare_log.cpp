#include "bare_log.h"

#include <fcntl.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>

namespace bench {

namespace {

constexpr std::uint32_t kHeader = Mox::kHeaderSize;

bool ReadAt(int fd, void* bytes, std::size_t size, std::uint32_t offset) {
    return pread(fd, bytes, size, offset) == static_cast<ssize_t>(size);
}

bool WriteAt(int fd, const void* bytes, std::size_t size, std::uint32_t offset) {
    return pwrite(fd, bytes, size, offset) == static_cast<ssize_t>(size);
}

}  // namespace

BareLog::BareLog(const std::string& file_name, std::uint32_t limit, std::uint32_t record_size,
                 Wait wait)
    : fd_(open(file_name.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600)),
      limit_(limit),
      wait_(wait),
      record_(record_size, 'x') {}

BareLog::~BareLog() {
    close(fd_);
}

bool BareLog::Lock(short type) {
    struct flock range {};
    range.l_type = type;
    range.l_whence = SEEK_SET;
    range.l_len = kHeader;
    const int command = wait_ == Wait::InCall ? F_OFD_SETLKW : F_OFD_SETLK;
    while (fcntl(fd_, command, &range) != 0) {
        if (errno != EAGAIN && errno != EACCES) return false;
        constexpr timespec kPause{0, 1000000};
        nanosleep(&kPause, nullptr);
    }
    return true;
}

bool BareLog::Append() {
    if (!Lock(F_WRLCK)) return false;
    bool done = ReadAt(fd_, &header_, kHeader, 0);
    if (!done) {
        header_ = Mox::TLogFileHeader{};
        header_.write_position = Mox::kFirstSlot;
    }
    const auto slot = static_cast<std::uint32_t>(Mox::kLinkSize + record_.size());
    if (header_.write_position + slot > limit_) {
        header_.wrap = header_.write_position;
        header_.write_position = Mox::kFirstSlot;
    }
    const std::uint32_t end = header_.write_position + slot;
    std::uint32_t oldest = 0;
    if (header_.wrap != 0) done = ReadAt(fd_, &oldest, Mox::kLinkSize, header_.write_position);
    done = WriteAt(fd_, &end, Mox::kLinkSize, header_.write_position) &&
           WriteAt(fd_, record_.data(), record_.size(), header_.write_position + Mox::kLinkSize);
    header_.write_position = end;
    header_.counter = header_.counter + 1;
    done = WriteAt(fd_, &header_, kHeader, 0) && done;
    return Lock(F_UNLCK) && done;
}

}  // namespace bench
