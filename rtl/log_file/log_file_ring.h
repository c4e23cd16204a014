// Writing to the ring of one log file: locking, making room, appending.
//
// Nothing that the file says is used before it is checked. docs/formats/log_file.md describes what
// happens to a damaged file. A file that was deleted or replaced is left for the one that has its
// name, or for a new one, within a second.
#pragma once

#include <windows.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "log_file/log_format.h"
#include "log_file/log_record_bytes.h"
#include "log_file/log_repair.h"
#include "log_file/log_report.h"
#include "log_file/log_ring.h"
#include "mox_classes/text/unicode_string.h"

namespace Mox {

// The open file and the image of its header, which is true only while the header is locked. One
// thread at a time; other processes, and other objects on the same file, are kept out by the lock.
class TLogFileRing {
  public:
    TLogFileRing() = default;
    TLogFileRing(const TLogFileRing&) = delete;
    TLogFileRing& operator=(const TLogFileRing&) = delete;
    ~TLogFileRing() { Close(); }

    bool Open(const UnicodeString& fileName, DWORD sizeLimit);
    void Close();
    bool IsOpen() const { return file_ != INVALID_HANDLE_VALUE; }

    // Appends `message`, serialised in `record`, which is cut when it is larger than the ring.
    // Waits for the header's lock as long as another process holds it. False when nothing was
    // appended.
    bool Append(TLogMsg& message, TLogRecordBytes& record, log_file::TReportTexts texts);

    // What the last Open or Append ended with, a Win32 error code: NO_ERROR when the file is open,
    // or when the record is in it.
    DWORD Outcome() const { return outcome_; }
    // For who wants to know about an append that may never get here.
    void ForgetOutcome() { outcome_ = ERROR_WRITE_FAULT; }

    // Who takes the ring out of use must not depend on a process that keeps the lock: after
    // LeaveSoon, which any thread may call, all appends together wait half a second, and then fail
    // when they find the lock taken. Stay ends that.
    void LeaveSoon() { leaving_.store(true); }
    void Stay() {
        leaving_.store(false);
        left_to_wait_ = kLastWait;
    }

  private:
    using TDuration = std::chrono::steady_clock::duration;
    static constexpr TDuration kLastWait = std::chrono::milliseconds(500);

    class THeaderLock;
    // An append is given up; the header stays as it is in the file.
    struct TUnreadable {};
    // The ring was mended while room was made, and the header with it.
    struct TMended {};

    bool GiveUp(DWORD code);
    void FollowName(const TLogMsg& message);
    bool IsElsewhere() const;
    void Use(HANDLE file);
    bool WaitForLock();
    void Unlock();
    bool ReadHeader();
    bool EndsBy(std::uint64_t offset) const;
    bool CreateHeader();
    bool PlaceAll(TLogMsg& message, TLogRecordBytes& record);
    void Place(TLogRecordBytes& record);
    void MakeRoom(std::uint64_t need);
    void Wrap();
    void DropOldest();
    [[noreturn]] void LookAgain();
    bool IsCountWrong() const;
    bool HasRoom(std::uint64_t need) const;

    // log_file_mend.cpp
    bool NeedsCheck() const;
    bool Check();
    bool IsSound();
    bool IsChain(DWORD from, DWORD end, std::span<std::uint8_t> piece, DWORD& count);
    bool Refuse();
    void Mend(const TLogRepair& plan, TLogBytes file);
    void CopyBeside(TLogBytes file);
    void PlaceNotice(std::uint64_t need);
    std::vector<std::uint8_t> ReadWhole();
    DWORD WriteReported(DWORD offset, const void* bytes, DWORD size);
    void WriteOrGiveUp(DWORD offset, const void* bytes, DWORD size);

    DWORD Read(DWORD offset, void* bytes, DWORD size, bool& failed);
    DWORD ReadOrGiveUp(DWORD offset, void* bytes, DWORD size);
    DWORD Write(DWORD offset, const void* bytes, DWORD size);
    void ReportTransfer(const WCHAR* call, DWORD offset, DWORD size, int line);

    TLogFileHeader header_{};
    HANDLE file_ = INVALID_HANDLE_VALUE;
    DWORD limit_ = 0xFFFFFFFF;
    std::uint64_t counter_after_unlock_ = 0;
    std::uint64_t counter_at_lock_ = 0;
    UnicodeString name_;
    std::uint64_t named_at_ = 0;  // when `name_` led to the open file: a message's time
    bool checked_ = false;        // against everything that the file holds
    std::optional<TLogFileHeader> refused_{};  // the beginning of a file that is no log
    UnicodeString notice_;                     // of a repair; is to be logged
    bool notice_due_ = false;                  // also when that costs old records
    DWORD outcome_ = NO_ERROR;
    log_file::TReportTexts texts_ = log_file::TReportTexts::Translated;
    std::atomic<bool> leaving_{false};
    TDuration left_to_wait_ = kLastWait;
};

}  // namespace Mox
