#include "log_file/log_reader.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>
#include <vector>

#include "log_file/log_copy.h"
#include "log_file/log_record.h"
#include "log_file/log_ring.h"
#include "log_file/ring_finder.h"
#include "mox_classes/text/sysutils_numbers.h"

namespace Mox {

// The copy, its slots, and the place among them.
class TLogReader::TState {
  public:
    bool Start(std::vector<std::uint8_t> bytes) {
        bytes_ = std::move(bytes);
        if (bytes_.empty()) return true;
        if (bytes_.size() < kHeaderSize) return Fail(TEXT("the file ends inside its header"));
        std::memcpy(&header, bytes_.data(), kHeaderSize);
        if (header.version != TLogFileHeader::kVersion) {
            return Fail(TEXT("the file is no log, or one of another version"));
        }
        if (!IsPlausible(header)) return Fail(TEXT("the header's numbers cannot be true"));
        has_header_ = true;
        Find();
        return true;
    }

    // The copy behind a header that cannot be believed; a copy of a file holds only that header.
    bool StartWithoutHeader() {
        if (error.Length() == 0 || bytes_.empty()) return false;
        if (file_name.Length() > 0) {
            const UnicodeString failure =
                CopyLogFile(file_name, TLogCopyExtent::WholeFile, bytes_, copy);
            if (failure.Length() > 0) return false;
        }
        std::memcpy(&header, bytes_.data(), std::min<std::size_t>(bytes_.size(), kHeaderSize));
        ring_ = FindRing(header, bytes_);
        header = TLogFileHeader{};
        if (ring_.slots.empty()) return false;
        header_fault_ = std::exchange(error, UnicodeString());
        Seek(0);
        return true;
    }

    std::uint32_t Missing() const {
        if (header.count == 0) return 0;
        const std::uint64_t end = std::max(header.write_position, header.wrap);
        return end > bytes_.size() ? static_cast<std::uint32_t>(end - bytes_.size()) : 0;
    }

    bool Fail(const UnicodeString& reason) {
        error = reason;
        header = TLogFileHeader{};
        return false;
    }

    const TLogMsg* Next() {
        while (next_ < ring_.slots.size()) {
            TakeGaps();
            const TLogSlot slot = ring_.slots[next_++];
            message_.reset(TLogMsg::Alloc());
            if (message_ == nullptr) throw std::bad_alloc();
            const DWORD record = slot.offset + kLinkSize;
            const WCHAR* fault = DecodeLogMsg(*message_, bytes_.data() + record, slot.end - record);
            if (fault == nullptr) return message_.get();
            skips.push_back({slot.offset, slot.end - slot.offset, UnicodeString(fault)});
        }
        TakeGaps();
        message_.reset();
        CompareCount();
        return nullptr;
    }

    TLogPlace Place() const {
        if (next_ == 0) return TLogPlace();
        const TLogSlot& slot = ring_.slots[next_ - 1];
        const std::uint64_t newer = ring_.slots.size() - next_;
        return {slot.offset, slot.end - slot.offset,
                header.counter > newer ? header.counter - newer : 0};
    }

    void Seek(std::uint64_t number) {
        const std::size_t count = ring_.slots.size();
        std::uint64_t left = 0;  // records from this number on
        if (number == 0) left = count;
        if (number > 0 && number <= header.counter) left = header.counter - number + 1;
        next_ = left < count ? count - static_cast<std::size_t>(left) : 0;
        gap_ = 0;
        skips.clear();
        if (header_fault_.Length() > 0) skips.push_back({0, kHeaderSize, header_fault_});
        count_differs_ = CountDiffers();
    }

    UnicodeString file_name;
    TLogFileHeader header{};
    TLogCopy copy = TLogCopy::Locked;
    UnicodeString error;
    std::vector<TLogSkip> skips;

  private:
    struct TMessageDeleter {
        void operator()(TLogMsg* message) const { message->Free(); }
    };

    void Find() {
        ring_ = FindRing(header, bytes_);
        if (!ring_.by_header) header_fault_ = TEXT("the header does not fit the records");
        Seek(0);
    }

    bool CountDiffers() const { return has_header_ && ring_.slots.size() != header.count; }

    void TakeGaps() {
        for (; gap_ < ring_.gaps.size() && ring_.gaps[gap_].slot <= next_; ++gap_) {
            const TRingGap& gap = ring_.gaps[gap_];
            skips.push_back({gap.offset, gap.end - gap.offset, UnicodeString(gap.reason)});
        }
    }

    void CompareCount() {
        if (!std::exchange(count_differs_, false)) return;
        skips.push_back(
            {0, 0,
             Sysutils::UnicodePrintf(TEXT("the header counts %u records, the ring holds %u"),
                                     header.count, static_cast<DWORD>(ring_.slots.size()))});
    }

    std::vector<std::uint8_t> bytes_;
    TFoundRing ring_;
    bool has_header_ = false;
    std::size_t next_ = 0;  // the slot that Next looks at
    std::size_t gap_ = 0;   // the gap that is taken next
    bool count_differs_ = false;
    UnicodeString header_fault_;
    std::unique_ptr<TLogMsg, TMessageDeleter> message_;
};

TLogReader::TLogReader() : state_(std::make_unique<TState>()) {}
TLogReader::~TLogReader() = default;

bool TLogReader::Open(const UnicodeString& fileName) {
    state_ = std::make_unique<TState>();
    std::vector<std::uint8_t> bytes;
    const UnicodeString error = CopyLogFile(fileName, TLogCopyExtent::Ring, bytes, state_->copy);
    if (error.Length() > 0) return state_->Fail(error);
    state_->file_name = fileName;
    return state_->Start(std::move(bytes));
}

bool TLogReader::Assign(const void* bytes, std::size_t size) {
    state_ = std::make_unique<TState>();
    const auto* first = static_cast<const std::uint8_t*>(bytes);
    return state_->Start(std::vector<std::uint8_t>(first, first + size));
}

bool TLogReader::StartWithoutHeader() {
    return state_->StartWithoutHeader();
}

const UnicodeString& TLogReader::Error() const {
    return state_->error;
}

const TLogMsg* TLogReader::Next() {
    return state_->Next();
}

TLogPlace TLogReader::Place() const {
    return state_->Place();
}

void TLogReader::Seek(std::uint64_t number) {
    state_->Seek(number);
}

const TLogFileHeader& TLogReader::Header() const {
    return state_->header;
}

TLogCopy TLogReader::Copy() const {
    return state_->copy;
}

std::uint32_t TLogReader::Missing() const {
    return state_->Missing();
}

int TLogReader::SkipCount() const {
    return static_cast<int>(state_->skips.size());
}

const TLogSkip& TLogReader::Skip(int index) const {
    return state_->skips.at(static_cast<std::size_t>(index));
}

}  // namespace Mox
