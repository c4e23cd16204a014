#include "log_file/log_file_ring.h"

#include <minwinbase.h>

#include <algorithm>
#include <vector>

#include "mox_classes/memory/handles.h"

namespace Mox {

namespace {

using log_file::ReportError;

DWORD Shown(HANDLE file) {
    return static_cast<DWORD>(reinterpret_cast<ULONG_PTR>(file));
}

// The pauses between tries to get the lock. Busy writers hold it nearly all the time, so that who
// looks once a millisecond can find it taken for long: the longer the wait, the more tries in a row
// look for the moment between two holders.
class TPatience {
  public:
    void Pause() {
        constexpr int kMostTriesInARow = 50;
        if (tries_in_a_row_-- > 0) {
            Sleep(0);
        } else {
            Sleep(1);
            tries_in_a_row_ = std::min(++sleeps_, kMostTriesInARow);
        }
    }

  private:
    int tries_in_a_row_ = 1;
    int sleeps_ = 0;
};

HANDLE OpenLog(const UnicodeString& name) {
    return CreateFileW(name.t_str(), GENERIC_READ | GENERIC_WRITE,
                       FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_ALWAYS,
                       FILE_ATTRIBUTE_NORMAL, nullptr);
}

std::uint64_t Number(const FILETIME& time) {
    return std::uint64_t{time.dwHighDateTime} << 32U | time.dwLowDateTime;
}

// What such a name means changes with the process's folder.
bool IsRelative(const UnicodeString& name) {
    const bool drive = name.Length() > 2 && name[2] == ':';
    return !drive && name.Length() > 0 && name[1] != '\\' && name[1] != '/';
}

}  // namespace

// Behind a system call the processor mispredicts every return to a frame of before: some 50 ns
// each, six times per record. So what stands between an append and its system calls is inlined.
#define QV_APPEND_STEP [[gnu::always_inline]] inline

// Holds the lock of the header, and with it a header image that can be trusted.
class TLogFileRing::THeaderLock {
  public:
    QV_APPEND_STEP explicit THeaderLock(TLogFileRing& ring)
        : ring_(ring), held_(ring.WaitForLock()) {}
    THeaderLock(const THeaderLock&) = delete;
    THeaderLock& operator=(const THeaderLock&) = delete;
    QV_APPEND_STEP ~THeaderLock() {
        if (held_) ring_.Unlock();
    }
    bool Held() const { return held_; }

  private:
    TLogFileRing& ring_;
    bool held_;
};

bool TLogFileRing::Open(const UnicodeString& fileName, DWORD sizeLimit) {
    Close();
    const HANDLE file = OpenLog(fileName);
    const DWORD code = GetLastError();
    Use(file);
    limit_ = sizeLimit;
    name_ = fileName;
    FILETIME now{};
    GetSystemTimeAsFileTime(&now);
    named_at_ = Number(now);
    outcome_ = IsOpen() ? NO_ERROR : code;
    if (IsOpen()) return true;
    ReportError(__builtin_LINE(), log_file::TReportTexts::Translated, log_file::kOpenFailed, code,
                fileName);
    return false;
}

void TLogFileRing::Use(HANDLE file) {
    Close();
    file_ = file;
    checked_ = false;
    refused_.reset();
}

void TLogFileRing::Close() {
    if (IsOpen()) CloseHandle(file_);
    file_ = INVALID_HANDLE_VALUE;
}

bool TLogFileRing::Append(TLogMsg& message, TLogRecordBytes& record, log_file::TReportTexts texts) {
    texts_ = texts;
    outcome_ = NO_ERROR;
    FollowName(message);
    const THeaderLock lock(*this);
    if (!lock.Held() || !ReadHeader()) return GiveUp(ERROR_READ_FAULT);
    try {
        if (NeedsCheck() && !Check()) return GiveUp(ERROR_INVALID_DATA);
        return PlaceAll(message, record) || GiveUp(ERROR_WRITE_FAULT);
    } catch (const TUnreadable&) {
        return GiveUp(ERROR_READ_FAULT);
    }
}

// The first trouble of an append is the one to tell. Returns false.
bool TLogFileRing::GiveUp(DWORD code) {
    if (outcome_ == NO_ERROR) outcome_ = code;
    return false;
}

// Once a second by the clock of the messages, which may be set back.
QV_APPEND_STEP void TLogFileRing::FollowName(const TLogMsg& message) {
    constexpr std::uint64_t kSecond = 10'000'000;
    const std::uint64_t now = Number(message.time);
    if (now - named_at_ < kSecond || !IsOpen()) return;
    named_at_ = now;
    if (!IsElsewhere()) return;
    const HANDLE fresh = OpenLog(name_);
    if (fresh != INVALID_HANDLE_VALUE) return Use(fresh);
    const DWORD code = GetLastError();
    GiveUp(code);  // the record goes into a file that nobody finds
    ReportError(__builtin_LINE(), texts_, log_file::kOpenFailed, code, name_);
}

// Whether the name leads to another file than the open one, or to none. Where that cannot be known
// the open file stays in use.
bool TLogFileRing::IsElsewhere() const {
    if (IsRelative(name_)) return false;
    constexpr DWORD kAny = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const System::TFileHandle named(CreateFileW(name_.t_str(), 0, kAny, nullptr, OPEN_EXISTING,
                                                FILE_ATTRIBUTE_NORMAL, nullptr));
    const DWORD code = GetLastError();
    if (!named) return code == ERROR_FILE_NOT_FOUND || code == ERROR_PATH_NOT_FOUND;
    BY_HANDLE_FILE_INFORMATION a{};
    BY_HANDLE_FILE_INFORMATION b{};
    return GetFileInformationByHandle(named.Get(), &a) && GetFileInformationByHandle(file_, &b) &&
           (a.dwVolumeSerialNumber != b.dwVolumeSerialNumber ||
            a.nFileIndexHigh != b.nFileIndexHigh || a.nFileIndexLow != b.nFileIndexLow);
}

// The record, and what there is to say about the ring itself.
QV_APPEND_STEP bool TLogFileRing::PlaceAll(TLogMsg& message, TLogRecordBytes& record) {
    const std::int64_t room = std::int64_t{header_.limit} - kFirstSlot - kLinkSize;
    if (record.Size() > room && !record.Serialise(message, room)) return false;
    if (notice_.Length() > 0) PlaceNotice(std::uint64_t{kLinkSize} + record.Size());
    Place(record);
    return true;
}

QV_APPEND_STEP bool TLogFileRing::WaitForLock() {
    if (!IsOpen()) return GiveUp(ERROR_INVALID_HANDLE);
    TPatience patience;
    while (!LockFile(file_, 0, 0, kHeaderSize, 0)) {
        const DWORD code = GetLastError();
        if (code != ERROR_LOCK_VIOLATION ||
            (leaving_.load() && left_to_wait_ <= TDuration::zero())) {
            ReportError(__builtin_LINE(), texts_, log_file::kLockFailed, code, TEXT("LockFile"),
                        Shown(file_), 0, kHeaderSize);
            return GiveUp(code);
        }
        // By the clock: on a busy machine even letting others run takes its time.
        const auto began = std::chrono::steady_clock::now();
        patience.Pause();
        if (leaving_.load()) left_to_wait_ -= std::chrono::steady_clock::now() - began;
    }
    // Nothing has been read yet that would have to be written back.
    counter_at_lock_ = header_.counter;
    return true;
}

QV_APPEND_STEP void TLogFileRing::Unlock() {
    if (header_.counter != counter_at_lock_ && Write(0, &header_, kHeaderSize) != kHeaderSize) {
        ReportError(__builtin_LINE(), texts_, log_file::kTransferFailed, GetLastError(),
                    TEXT("Write"), Shown(file_), kHeaderSize);
    }
    counter_after_unlock_ = header_.counter;
    if (!UnlockFile(file_, 0, 0, kHeaderSize, 0)) {
        ReportError(__builtin_LINE(), texts_, log_file::kLockFailed, GetLastError(),
                    TEXT("UnlockFile"), Shown(file_), 0, kHeaderSize);
    }
}

// False when the file cannot be read: what is not known is not overwritten.
QV_APPEND_STEP bool TLogFileRing::ReadHeader() {
    TLogFileHeader image{};
    bool failed = false;
    const DWORD size = Read(0, &image, kHeaderSize, failed);
    if (failed || (size < kHeaderSize && !EndsBy(size))) return false;
    if (size == 0) return CreateHeader();
    header_ = image;
    counter_at_lock_ = header_.counter;
    return true;
}

// A short read of a file that is longer says nothing about what stands there.
bool TLogFileRing::EndsBy(std::uint64_t offset) const {
    DWORD high = 0;
    const DWORD size = GetFileSize(file_, &high);
    return high == 0 && size <= offset;
}

bool TLogFileRing::CreateHeader() {
    header_ = TLogFileHeader{};
    EmptyRing(header_, limit_);
    counter_at_lock_ = header_.counter;
    const DWORD no_slot = 0;
    const DWORD written =
        Write(0, &header_, kHeaderSize) + Write(kFirstSlot, &no_slot, sizeof(no_slot));
    return written == kHeaderSize + sizeof(no_slot);
}

// Old records are given up in the header before their bytes are used: whoever is killed in between
// leaves a ring without damage.
void TLogFileRing::Place(TLogRecordBytes& record) {
    const std::uint64_t need = std::uint64_t{kLinkSize} + record.Size();
    const std::uint32_t count = header_.count;
    // A look at the file may mend nothing that is in the way, above all in one that is too large to
    // be looked at whole. Then the ring begins anew, or the append would never end.
    constexpr int kMostLooks = 2;
    int looks = 0;
    for (bool made = false; !made;) {
        try {
            MakeRoom(need);
            made = true;
        } catch (const TMended&) {
            if (++looks == kMostLooks) EmptyRing(header_, header_.limit);
        }
    }
    if (header_.count != count) Write(0, &header_, kHeaderSize);
    const auto end = static_cast<DWORD>(header_.write_position + need);
    Write(header_.write_position, record.Slot(end), static_cast<DWORD>(need));
    header_.counter = header_.counter + 1;
    header_.count = header_.count + 1;
    header_.write_position = end;
}

// Afterwards `need` bytes at the write position are free and within the limit.
QV_APPEND_STEP void TLogFileRing::MakeRoom(std::uint64_t need) {
    TLogFileHeader& h = header_;
    if (h.count == 0) EmptyRing(h, h.limit);
    if (h.wrap != 0 && h.oldest == h.wrap) {
        h.oldest = kFirstSlot;
        h.wrap = 0;
    }
    if (h.write_position + need > h.limit) Wrap();
    while (h.count > 0 && h.write_position <= h.oldest && h.oldest - h.write_position < need) {
        DropOldest();
    }
}

// The tail that is left from the last wrap is emptied first. A ring that is exactly full has its
// write position at the oldest slot, which belongs to that tail.
void TLogFileRing::Wrap() {
    TLogFileHeader& h = header_;
    while (h.count > 0 && h.oldest >= h.write_position) DropOldest();
    if (h.count == 0) {
        EmptyRing(h, h.limit);
    } else {
        h.wrap = h.write_position;
        h.write_position = kFirstSlot;
    }
}

// Only for an oldest slot behind the write position: its chain ends at the wrap offset.
void TLogFileRing::DropOldest() {
    TLogFileHeader& h = header_;
    std::uint8_t head[kSlotHeadSize];
    const DWORD size = ReadOrGiveUp(h.oldest, head, sizeof(head));
    const DWORD end = CredibleSlotEnd(h.oldest, {head, size}, h.wrap);
    if (end == 0) LookAgain();
    h.count = h.count - 1;
    if (end != h.wrap) {
        h.oldest = end;
    } else {
        h.oldest = kFirstSlot;
        h.wrap = 0;
        checked_ = false;  // once per lap: a wrong count ends here
    }
    const bool is_empty = h.wrap == 0 && h.write_position == kFirstSlot;
    if (is_empty) {
        EmptyRing(h, h.limit);
    } else if (IsCountWrong()) {
        LookAgain();
    }
}

// The slots or the count cannot be believed. Room is made anew in what the look at the file leaves.
void TLogFileRing::LookAgain() {
    if (!Check()) throw TUnreadable();
    throw TMended();
}

// A count that was too high all along shows when the slots that are left have no room for it.
bool TLogFileRing::IsCountWrong() const {
    return header_.count == 0 || !IsPlausible(header_);
}

// Without a record giving way.
bool TLogFileRing::HasRoom(std::uint64_t need) const {
    const bool free_to_limit = header_.wrap == 0 && header_.write_position > header_.oldest;
    const DWORD end = free_to_limit ? header_.limit : header_.oldest;
    return header_.count > 0 && end >= header_.write_position &&
           end - header_.write_position >= need;
}

// Records that cannot be read now are not overwritten for that.
DWORD TLogFileRing::ReadOrGiveUp(DWORD offset, void* bytes, DWORD size) {
    bool failed = false;
    const DWORD done = Read(offset, bytes, size, failed);
    if (failed || (done < size && !EndsBy(std::uint64_t{offset} + done))) throw TUnreadable();
    return done;
}

QV_APPEND_STEP DWORD TLogFileRing::Read(DWORD offset, void* bytes, DWORD size, bool& failed) {
    OVERLAPPED at{};
    at.Offset = offset;
    DWORD done = 0;
    failed = !ReadFile(file_, bytes, size, &done, &at) && GetLastError() != ERROR_HANDLE_EOF;
    if (failed) ReportTransfer(TEXT("::ReadFile"), offset, size, __builtin_LINE());
    return failed ? 0 : done;
}

QV_APPEND_STEP DWORD TLogFileRing::Write(DWORD offset, const void* bytes, DWORD size) {
    OVERLAPPED at{};
    at.Offset = offset;
    DWORD done = 0;
    if (WriteFile(file_, bytes, size, &done, &at)) {
        if (done != size) GiveUp(ERROR_DISK_FULL);
        return done;
    }
    ReportTransfer(TEXT("::WriteFile"), offset, size, __builtin_LINE());
    return 0;
}

DWORD TLogFileRing::WriteReported(DWORD offset, const void* bytes, DWORD size) {
    return Write(offset, bytes, size);
}

// A device without positions refuses the transfer's offset: its report names the step that failed.
void TLogFileRing::ReportTransfer(const WCHAR* call, DWORD offset, DWORD size, int line) {
    const DWORD code = GetLastError();
    GiveUp(code);
    if (code == ERROR_INVALID_FUNCTION) {
        ReportError(line, texts_, log_file::kSeekFailed, code, TEXT("::SetFilePointer"),
                    Shown(file_), offset);
    } else {
        ReportError(line, texts_, log_file::kTransferFailed, code, call, Shown(file_), size);
    }
}

}  // namespace Mox
