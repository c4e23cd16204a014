#include "log_file/log_copy.h"

#include <windows.h>

#include <algorithm>
#include <cstring>

#include "log_file/log_ring.h"
#include "mox_classes/text/sys_error.h"

namespace Mox {

namespace {

// A writer holds the lock for far less than this; who holds it longer hangs.
constexpr int kLockAttempts = 500;
constexpr int kUnlockedAttempts = 16;
// A file without a header that bounds it is looked at no further than this.
constexpr std::uint64_t kLongestFile = 256U << 20;

// The file, open for reading. A writer's access is asked for first: the lock may need it.
class TReadFile {
  public:
    explicit TReadFile(const UnicodeString& name)
        : file_(OpenFile(name, GENERIC_READ | GENERIC_WRITE)) {
        if (!IsOpen()) file_ = OpenFile(name, GENERIC_READ);
    }
    TReadFile(const TReadFile&) = delete;
    TReadFile& operator=(const TReadFile&) = delete;
    ~TReadFile() {
        if (locked_) UnlockFile(file_, 0, 0, kHeaderSize, 0);
        if (IsOpen()) CloseHandle(file_);
    }

    bool IsOpen() const { return file_ != INVALID_HANDLE_VALUE; }

    bool Lock() {
        for (int attempt = 0; attempt < kLockAttempts && !locked_; ++attempt) {
            locked_ = LockFile(file_, 0, 0, kHeaderSize, 0) != FALSE;
            if (locked_ || GetLastError() != ERROR_LOCK_VIOLATION) break;
            Sleep(1);
        }
        return locked_;
    }

    // Whole or not at all; `bytes` shrinks to what the file holds.
    bool ReadFrom(DWORD offset, std::vector<std::uint8_t>& bytes) {
        LONG high = 0;
        const auto low = static_cast<LONG>(offset);
        if (SetFilePointer(file_, low, &high, FILE_BEGIN) == INVALID_SET_FILE_POINTER &&
            GetLastError() != ERROR_SUCCESS) {
            return false;
        }
        DWORD done = 0;
        if (!ReadFile(file_, bytes.data(), static_cast<DWORD>(bytes.size()), &done, nullptr)) {
            return false;
        }
        bytes.resize(done);
        return true;
    }

    std::uint64_t Size() const {
        DWORD high = 0;
        const DWORD low = GetFileSize(file_, &high);
        return std::uint64_t{high} << 32 | low;
    }

  private:
    static HANDLE OpenFile(const UnicodeString& name, DWORD access) {
        return CreateFileW(name.t_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                           OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    }

    HANDLE file_;
    bool locked_ = false;
};

bool ReadHeader(TReadFile& file, TLogFileHeader& header, std::vector<std::uint8_t>& bytes) {
    bytes.assign(kHeaderSize, 0);
    if (!file.ReadFrom(0, bytes)) return false;
    header = TLogFileHeader{};
    std::memcpy(&header, bytes.data(), bytes.size());
    return true;
}

std::uint64_t SizeToCopy(const TReadFile& file, TLogCopyExtent extent,
                         const TLogFileHeader& header) {
    const std::uint64_t most =
        extent == TLogCopyExtent::Ring ? std::uint64_t{header.limit} : kLongestFile;
    return std::min(file.Size(), most);
}

// One pass: header, then everything up to the limit.
bool ReadAll(TReadFile& file, TLogCopyExtent extent, TLogFileHeader& header,
             std::vector<std::uint8_t>& bytes) {
    if (!ReadHeader(file, header, bytes)) return false;
    if (extent == TLogCopyExtent::Ring && (bytes.size() < kHeaderSize || !IsPlausible(header))) {
        return true;
    }
    bytes.assign(static_cast<std::size_t>(SizeToCopy(file, extent, header)), 0);
    return file.ReadFrom(0, bytes);
}

bool ReadUnlocked(TReadFile& file, TLogCopyExtent extent, std::vector<std::uint8_t>& bytes,
                  TLogCopy& copy) {
    copy = TLogCopy::Changed;
    for (int attempt = 0; attempt < kUnlockedAttempts && copy == TLogCopy::Changed; ++attempt) {
        TLogFileHeader before{};
        TLogFileHeader after{};
        std::vector<std::uint8_t> header_bytes;
        if (!ReadAll(file, extent, before, bytes) || !ReadHeader(file, after, header_bytes)) {
            return false;
        }
        if (before.counter == after.counter) copy = TLogCopy::Unchanged;
    }
    return true;
}

}  // namespace

UnicodeString CopyLogFile(const UnicodeString& fileName, TLogCopyExtent extent,
                          std::vector<std::uint8_t>& bytes, TLogCopy& copy) {
    TReadFile file(fileName);
    TLogFileHeader header{};
    copy = TLogCopy::Locked;
    if (file.IsOpen() && (file.Lock() ? ReadAll(file, extent, header, bytes)
                                      : ReadUnlocked(file, extent, bytes, copy))) {
        return UnicodeString();
    }
    copy = TLogCopy::Failed;
    return GetSysError(GetLastError(), true);
}

}  // namespace Mox
