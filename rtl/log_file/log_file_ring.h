// Writing to the ring of one log file: locking, making room, appending.
//
// Nothing that the file says is used before it is checked. docs/formats/log_file.md describes what
// happens to a damaged file.
#pragma once

#include <windows.h>

#include <atomic>
#include <chrono>
#include <cstdint>

#include "log_file/log_format.h"
#include "log_file/log_record_bytes.h"
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

    bool WaitForLock();
    void Unlock();
    bool ReadHeader();
    bool EndsBy(std::uint64_t offset) const;
    bool CreateHeader();
    bool Place(const TLogRecordBytes& record);
    void MakeRoom(std::uint64_t need);
    void Wrap();
    void DropOldest();
    bool IsCountWrong() const;
    void Recover();
    TLogChain FindChain(DWORD from, DWORD end);

    DWORD Read(DWORD offset, void* bytes, DWORD size, bool& failed);
    DWORD ReadOrGiveUp(DWORD offset, void* bytes, DWORD size);
    DWORD Write(DWORD offset, const void* bytes, DWORD size);
    void ReportTransfer(const WCHAR* call, DWORD offset, DWORD size, int line);

    TLogFileHeader header_{};
    HANDLE file_ = INVALID_HANDLE_VALUE;
    DWORD limit_ = 0xFFFFFFFF;
    std::uint64_t counter_after_unlock_ = 0;
    std::uint64_t counter_at_lock_ = 0;
    log_file::TReportTexts texts_ = log_file::TReportTexts::Translated;
    std::atomic<bool> leaving_{false};
    TDuration left_to_wait_ = kLastWait;
};

}  // namespace Mox
