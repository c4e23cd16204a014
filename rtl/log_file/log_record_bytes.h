// One message in the form in which the file keeps it.
#pragma once

#include <cstdint>

#include "log_file/log_format.h"
#include "mox_log/log_message.h"

namespace Mox {

// Owns the serialised record: in itself when it is small, else in one block of the library's heap.
class TLogRecordBytes {
  public:
    // cppcheck-suppress uninitMemberVar ; written before it is read, and large
    TLogRecordBytes() = default;
    TLogRecordBytes(const TLogRecordBytes&) = delete;
    TLogRecordBytes& operator=(const TLogRecordBytes&) = delete;
    ~TLogRecordBytes();

    // Serialises the message into at most `room` bytes. One that is larger loses the end of its
    // data block, then of its text, label and source; what was cut ends in " [cut]", the data block
    // says so in its label. False, and no bytes, when that is not enough or the heap is exhausted.
    bool Serialise(TLogMsg& message, std::int64_t room);

    std::uint32_t Size() const { return size_; }
    // The record with its link, kLinkSize + Size() bytes, which leads to `end`.
    const void* Slot(std::uint32_t end);

  private:
    void Release();
    bool SerialiseSmall(const TLogMsg& message, std::int64_t room);
    bool SerialiseMeasured(TLogMsg& message, std::int64_t room);

    std::uint8_t* slot_ = nullptr;  // small_ or a block
    std::uint32_t size_ = 0;        // of the record
    std::uint8_t small_[kLinkSize + 480];
};

}  // namespace Mox
