#include "log_file/log_reader.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <vector>

#include "log_file/log_copy.h"
#include "log_file/log_record.h"
#include "log_file/log_ring.h"
#include "mox_classes/sysutils_numbers.h"

namespace Mox {

namespace {

struct TMessageDeleter {
    void operator()(TLogMsg* message) const { message->Free(); }
};

}  // namespace

// The copy, the place in it, and the two regions that are still to be walked: the tail from the
// oldest slot to the wrap offset, then the front up to the write position.
class TLogReader::TState {
  public:
    bool Start(std::vector<std::uint8_t> bytes) {
        bytes_ = std::move(bytes);
        if (bytes_.empty()) return true;
        TLogFileHeader header{};
        if (bytes_.size() < kHeaderSize) return Fail(TEXT("the file ends inside its header"));
        std::memcpy(&header, bytes_.data(), kHeaderSize);
        if (header.version != TLogFileHeader::kVersion) {
            return Fail(TEXT("the file is no log, or one of another version"));
        }
        if (!IsPlausible(header)) return Fail(TEXT("the header's numbers cannot be true"));
        if (header.count == 0) return true;
        const bool wrapped = header.wrap != 0;
        at_ = header.oldest;
        end_ = wrapped ? header.wrap : header.write_position;
        front_end_ = wrapped ? header.write_position : 0;
        announced_ = header.count;
        return true;
    }

    bool Fail(const UnicodeString& reason) {
        error = reason;
        return false;
    }

    const TLogMsg* Next() {
        while (FindSlot()) {
            const DWORD slot = at_;
            shown_ = slot;
            at_ = slot_end_;
            ++found_;
            message_.reset(TLogMsg::Alloc());
            if (message_ == nullptr) throw std::bad_alloc();
            const DWORD record = slot + kLinkSize;
            const WCHAR* fault =
                DecodeLogMsg(*message_, bytes_.data() + record, slot_end_ - record);
            if (fault == nullptr) return message_.get();
            Leave(slot, slot_end_, fault);
        }
        message_.reset();
        CompareCount();
        return nullptr;
    }

    UnicodeString error;
    std::vector<TLogSkip> skips;

  private:
    // Moves to the next credible slot; false at the end of the ring.
    bool FindSlot() {
        while (true) {
            if (at_ < end_) {
                slot_end_ = SlotEndAt(at_);
                if (slot_end_ != 0) return true;
                SkipDamage();
            } else if (front_end_ != 0) {
                at_ = kFirstSlot;
                end_ = front_end_;
                front_end_ = 0;
                shown_ = 0;
            } else {
                return false;
            }
        }
    }

    // The region may end behind the copy: a file that was cut short.
    TLogBytes Region(DWORD from, DWORD end) const {
        const std::size_t stop = std::min<std::size_t>(end, bytes_.size());
        if (from >= stop) return TLogBytes();
        return TLogBytes(bytes_).subspan(from, stop - from);
    }

    DWORD SlotEndAt(DWORD offset) const {
        const DWORD slot_end = CredibleSlotEnd(offset, Region(offset, end_), end_);
        return slot_end <= bytes_.size() ? slot_end : 0;
    }

    void SkipDamage() {
        TLogChain chain;
        if (end_ <= bytes_.size()) chain = FindChainToEnd(Region(at_, end_), at_);
        if (chain.count == 0 && shown_ != 0) return SkipOverlay();
        const DWORD next = chain.count > 0 ? chain.first : end_;
        Leave(at_, next,
              at_ >= bytes_.size() ? TEXT("the file ends before its ring does")
                                   : TEXT("no credible record begins here"));
        at_ = next;
    }

    // A write position that lied made a writer put its record into the newest slot, which has been
    // shown: that record begins in front of the place to which the slot leads.
    void SkipOverlay() {
        const DWORD from = shown_ + 1;
        shown_ = 0;
        TLogChain chain;
        if (end_ <= bytes_.size()) chain = FindChainToEnd(Region(from, end_), from);
        if (chain.count == 0) return SkipDamage();
        Leave(chain.first, chain.first, TEXT("a record begins inside the one before it"));
        at_ = chain.first;
    }

    void Leave(DWORD from, DWORD end, const WCHAR* reason) {
        skips.push_back({from, end - from, UnicodeString(reason)});
    }

    void CompareCount() {
        if (found_ != announced_) {
            skips.push_back(
                {0, 0,
                 Sysutils::UnicodePrintf(TEXT("the header counts %u records, the ring holds %u"),
                                         announced_, found_)});
        }
        announced_ = found_;
    }

    std::vector<std::uint8_t> bytes_;
    DWORD at_ = 0;
    DWORD end_ = 0;
    DWORD front_end_ = 0;
    DWORD slot_end_ = 0;
    DWORD shown_ = 0;  // the slot before at_ when it is in the same region, else 0
    DWORD announced_ = 0;
    DWORD found_ = 0;
    std::unique_ptr<TLogMsg, TMessageDeleter> message_;
};

TLogReader::TLogReader() : state_(std::make_unique<TState>()) {}
TLogReader::~TLogReader() = default;

bool TLogReader::Open(const UnicodeString& fileName) {
    state_ = std::make_unique<TState>();
    std::vector<std::uint8_t> bytes;
    const UnicodeString error = CopyLogFile(fileName, bytes);
    return error.Length() == 0 ? state_->Start(std::move(bytes)) : state_->Fail(error);
}

bool TLogReader::Assign(const void* bytes, std::size_t size) {
    state_ = std::make_unique<TState>();
    const auto* first = static_cast<const std::uint8_t*>(bytes);
    return state_->Start(std::vector<std::uint8_t>(first, first + size));
}

const UnicodeString& TLogReader::Error() const {
    return state_->error;
}

const TLogMsg* TLogReader::Next() {
    return state_->Next();
}

int TLogReader::SkipCount() const {
    return static_cast<int>(state_->skips.size());
}

const TLogSkip& TLogReader::Skip(int index) const {
    return state_->skips.at(static_cast<std::size_t>(index));
}

}  // namespace Mox
