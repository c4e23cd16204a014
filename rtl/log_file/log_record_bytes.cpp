#include "log_file/log_record_bytes.h"

#include <algorithm>
#include <cstring>

#include "log_file/log_record.h"
#include "mox_classes/memory/memory.h"

namespace Mox {

namespace {

constexpr const WCHAR* kCutMark = TEXT(" [cut]");
constexpr std::int64_t kCutMarkSize = 6;
// The label may get a wider count by its mark, and a tag when it was empty.
constexpr std::int64_t kLabelGrowth = kCutMarkSize + 4;

std::int64_t StoredSize(const UnicodeString& text) {
    return WriteUnicodeString(nullptr, text, System::kCodePageAnsi);
}

// The longest beginning of `text` that, with the mark behind it, is stored in `room` bytes.
UnicodeString CutText(const UnicodeString& text, std::int64_t room) {
    const auto cut = [&](int units) { return text.SubString(1, units) + kCutMark; };
    if (StoredSize(kCutMark) > room) return UnicodeString();
    int fits = 0;
    // A code unit takes a byte or more.
    int fits_not = static_cast<int>(std::min<std::int64_t>(text.Length(), room)) + 1;
    while (fits_not - fits > 1) {
        const int middle = fits + (fits_not - fits) / 2;
        (StoredSize(cut(middle)) <= room ? fits : fits_not) = middle;
    }
    if (fits > 0 && text.IsLeadSurrogate(fits)) --fits;
    return cut(fits);
}

void CutData(TLogMsg& message, std::int64_t excess) {
    const std::int64_t size =
        message.dataSize < 0 ? -std::int64_t{message.dataSize} : message.dataSize;
    const std::int64_t kept = std::max<std::int64_t>(0, size - excess - kLabelGrowth);
    message.dataSize = -static_cast<int>(kept);
    if (kept == 0) message.data = nullptr;
    message.dataLabel += kCutMark;
}

// `message` is a copy: its data block belongs to another one.
bool CutToFit(TLogMsg& message, std::int64_t room) {
    std::int64_t excess = TMeasuredRecord(message).Size() - room;
    if (excess > 0 && message.data != nullptr && message.dataSize != 0) {
        CutData(message, excess);
        excess = TMeasuredRecord(message).Size() - room;
    }
    for (UnicodeString* field : {&message.text, &message.dataLabel, &message.source}) {
        if (excess <= 0) break;
        *field = CutText(*field, StoredSize(*field) - excess);
        excess = TMeasuredRecord(message).Size() - room;
    }
    return excess <= 0;
}

}  // namespace

TLogRecordBytes::~TLogRecordBytes() {
    Release();
}

void TLogRecordBytes::Release() {
    if (slot_ != nullptr && slot_ != small_) System::FreeMemory(slot_);
    slot_ = nullptr;
    size_ = 0;
}

const void* TLogRecordBytes::Slot(std::uint32_t end) {
    std::memcpy(slot_, &end, kLinkSize);
    return slot_;
}

bool TLogRecordBytes::Serialise(TLogMsg& message, std::int64_t room) {
    Release();
    room = std::min<std::int64_t>(room, INT32_MAX - kLinkSize);
    return SerialiseSmall(message, room) || SerialiseMeasured(message, room);
}

// Most messages are short and ASCII.
bool TLogRecordBytes::SerialiseSmall(const TLogMsg& message, std::int64_t room) {
    const TMeasuredRecord record(message, TMeasuredRecord::TStrings::TakenForAscii);
    if (record.Size() > std::min<std::int64_t>(room, sizeof(small_) - kLinkSize)) return false;
    if (!record.Write(small_ + kLinkSize)) return false;
    slot_ = small_;
    size_ = static_cast<std::uint32_t>(record.Size());
    return true;
}

bool TLogRecordBytes::SerialiseMeasured(TLogMsg& message, std::int64_t room) {
    const TMeasuredRecord record(message);
    if (record.Size() > room) {
        TLogMsg cut = message;
        return CutToFit(cut, room) && Serialise(cut, room);
    }
    slot_ =
        static_cast<std::uint8_t*>(System::GetMemory(static_cast<int>(kLinkSize + record.Size())));
    if (slot_ == nullptr) return false;
    record.Write(slot_ + kLinkSize);
    size_ = static_cast<std::uint32_t>(record.Size());
    return true;
}

}  // namespace Mox
