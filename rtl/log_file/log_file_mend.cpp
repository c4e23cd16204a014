// The rare part of writing to a log file: looking at all of it, and mending what is damaged.
#include <windows.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <span>

#include "log_file/log_file_ring.h"
#include "mox_classes/memory/handles.h"
#include "mox_classes/text/sys_error.h"
#include "mox_classes/text/sysutils_numbers.h"

namespace Mox {

namespace {

// Of a file that is larger, only so much is looked at.
constexpr DWORD kMostLookedAt = 64U << 20;
// A sound ring is read in pieces that a processor's near cache holds.
constexpr DWORD kPieceSize = 64U << 10;

bool IsSame(const TLogFileHeader& a, const TLogFileHeader& b) {
    return std::memcmp(&a, &b, sizeof(a)) == 0;
}

}  // namespace

bool TLogFileRing::NeedsCheck() const {
    return !checked_ || !IsPlausible(header_) || (header_.count == 0 && header_.counter != 0);
}

// False for a file that is no log. Otherwise the header is one to go on with.
bool TLogFileRing::Check() {
    if (refused_ && IsSame(*refused_, header_)) return false;
    refused_.reset();
    checked_ = true;
    // A ring that its maker made too small for any record is none to mend.
    if (header_.limit == limit_ && limit_ < kSmallestLimit) return false;
    if (IsSound()) return true;
    std::vector<std::uint8_t> file = ReadWhole();
    const bool is_whole = EndsBy(file.size());
    if (!is_whole && IsPlausible(header_)) return true;
    const TLogRepair plan = PlanRepair(header_, file, limit_);
    if (plan.state == TLogState::NotOurs) return Refuse();
    if (plan.state != TLogState::Sound) Mend(plan, file);
    return true;
}

// Whether PlanRepair would find nothing to mend, of a ring that is not empty. Every process starts
// with this: it reads the slots once and keeps nothing.
bool TLogFileRing::IsSound() {
    const TLogFileHeader& h = header_;
    const DWORD used = std::max<DWORD>(h.wrap, h.write_position);
    if (!IsPlausible(h) || h.count == 0 || used > kMostLookedAt || EndsBy(used - 1)) return false;
    const DWORD size = std::min(kPieceSize, used);
    const auto room = std::make_unique_for_overwrite<std::uint8_t[]>(size);
    const std::span<std::uint8_t> piece(room.get(), size);
    DWORD count = 0;
    const bool chained = h.wrap == 0 ? IsChain(h.oldest, h.write_position, piece, count)
                                     : IsChain(h.oldest, h.wrap, piece, count) &&
                                           IsChain(kFirstSlot, h.write_position, piece, count);
    return chained && count == h.count && IsLimitBelieved(h, used, limit_);
}

// Whether credible slots follow each other from `from` to `end`; adds their number. `piece` is room
// to read into.
bool TLogFileRing::IsChain(DWORD from, DWORD end, std::span<std::uint8_t> piece, DWORD& count) {
    const std::uint8_t* const bytes = piece.data();
    DWORD piece_from = from;
    DWORD piece_end = from;
    DWORD found = 0;
    while (from < end) {
        if (end - from < kSmallestSlot) return false;
        if (from + kSlotHeadSize > piece_end) {
            const auto size = std::min(static_cast<DWORD>(piece.size()), end - from);
            piece_from = from;
            piece_end = from + ReadOrGiveUp(from, piece.data(), size);
            if (piece_end - piece_from < kSlotHeadSize) return false;
        }
        from = CredibleSlotEnd(from, {bytes + (from - piece_from), kSlotHeadSize}, end);
        if (from == 0) return false;
        ++found;
    }
    count += found;
    return true;
}

bool TLogFileRing::Refuse() {
    refused_ = header_;
    counter_at_lock_ = header_.counter;
    log_file::ShowReport(name_ + TEXT(" is not empty and no log: nothing is written to it"),
                         __builtin_LINE());
    return false;
}

void TLogFileRing::Mend(const TLogRepair& plan, TLogBytes file) {
    if (plan.state == TLogState::NothingLeft) {
        CopyBeside(file);
    } else if (plan.header.count > 0) {
        notice_ = Sysutils::UnicodePrintf(
            TEXT("The log was damaged: %u records were kept, %u bytes in %u places were lost"),
            plan.kept, static_cast<DWORD>(plan.lost), static_cast<DWORD>(plan.patches.size()));
    }
    for (const TLogPatch& patch : plan.patches) {
        WriteOrGiveUp(patch.offset, patch.bytes.data(), static_cast<DWORD>(patch.bytes.size()));
    }
    header_ = plan.header;
    counter_at_lock_ = header_.counter;
    WriteOrGiveUp(0, &header_, kHeaderSize);
}

// Nothing of the file can be read, but somebody may want to look.
void TLogFileRing::CopyBeside(TLogBytes file) {
    const UnicodeString name = name_ + TEXT(".damaged");
    const System::TFileHandle copy(CreateFileW(name.t_str(), GENERIC_WRITE, 0, nullptr,
                                               CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    const bool replaced = GetLastError() == ERROR_ALREADY_EXISTS;
    notice_ = TEXT("The log held no record that can be read, and begins anew");
    if (!copy) {
        notice_ += TEXT("; it could not be copied");
        return;
    }
    DWORD done = 0;
    const auto size = static_cast<DWORD>(file.size());
    const bool whole = WriteFile(copy.Get(), file.data(), size, &done, nullptr) && done == size;
    notice_ += UnicodeString(whole ? TEXT("; its copy is ") : TEXT("; a part of it is in ")) + name;
    if (replaced) notice_ += TEXT(", in place of an older one");
}

// In front of the record, which needs `need` bytes. Records give way for it only with the second
// append after a repair: the first one costs no more than it would have cost a sound ring.
void TLogFileRing::PlaceNotice(std::uint64_t need) {
    const TOwnedLogMsg owner(TLogMsg::Alloc());
    TLogMsg* const message = owner.message;
    if (message == nullptr) return;
    message->level = '>';
    message->source = log_file::kModule;
    message->text = notice_;
    message->processId = GetCurrentProcessId();
    message->threadId = GetCurrentThreadId();
    message->sessionId = 0xFFFFFFFF;
    TLogRecordBytes record;
    const std::int64_t room = std::int64_t{header_.limit} - kFirstSlot - kLinkSize;
    const bool fits = record.Serialise(*message, std::max<std::int64_t>(0, room / 2));
    if (!fits || notice_due_ || HasRoom(need + kLinkSize + record.Size())) {
        if (fits) Place(record);
        notice_ = UnicodeString();
        notice_due_ = false;
    } else {
        notice_due_ = true;
    }
}

std::vector<std::uint8_t> TLogFileRing::ReadWhole() {
    DWORD high = 0;
    const DWORD low = GetFileSize(file_, &high);
    std::vector<std::uint8_t> file(high != 0 ? kMostLookedAt : std::min(low, kMostLookedAt));
    if (!file.empty()) {
        file.resize(ReadOrGiveUp(0, file.data(), static_cast<DWORD>(file.size())));
    }
    return file;
}

void TLogFileRing::WriteOrGiveUp(DWORD offset, const void* bytes, DWORD size) {
    if (WriteReported(offset, bytes, size) != size) throw TUnreadable();
}

}  // namespace Mox
