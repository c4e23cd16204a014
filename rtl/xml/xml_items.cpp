#include "xml/xml_items.h"

#include <algorithm>
#include <limits>
#include <new>
#include <numeric>
#include <vector>

#include "mox_classes/memory/memory.h"
#include "mox_classes/memory/process_heap.h"
#include "mox_classes/text/sysutils.h"
#include "xml/xml_prefetch.h"

namespace {

// In lists up to this length a plain scan is faster than an index.
constexpr int kSmallList = 16;
// In longer lists the exact table is built once; after further additions the name index answers.
constexpr int kRebuilt = 256;
// The number of slots of the exact table that a lookup tries before it asks the name index.
constexpr int kProbes = 32;

// Finds free slots of a table that is being filled. For each slot it keeps the way to the next free
// one.
class TFreeSlots {
  public:
    explicit TFreeSlots(int count) : next_(static_cast<std::size_t>(count)) {
        std::iota(next_.begin(), next_.end(), 0u);
    }

    // Takes the first free slot at or behind `start`, around the end if needed. One must be free.
    std::size_t Take(std::size_t start) {
        std::size_t slot = start;
        while (next_[slot] != slot) {
            next_[slot] = next_[next_[slot]];
            slot = next_[slot];
        }
        next_[slot] = static_cast<std::uint32_t>(slot + 1 == next_.size() ? 0 : slot + 1);
        return slot;
    }

  private:
    std::vector<std::uint32_t> next_;
};

// As System::ReallocMemory, for blocks that may be larger than its 31 bits.
void* ResizedBlock(void* block, SIZE_T size) {
    const HANDLE heap = System::TProcessHeap::Handle();
    void* resized = block == nullptr ? HeapAlloc(heap, 0, size) : HeapReAlloc(heap, 0, block, size);
    if (resized == nullptr) throw std::bad_alloc();
    return resized;
}

}  // namespace

TXmlItems::~TXmlItems() {
    const TXmlPrefetch prefetch(FList, GetCount());
    for (int i = 0; i < GetCount(); ++i) {
        prefetch.At(i);
        if (kind_ == TKind::Nodes) {
            DeleteXmlNode(FList[i]);
        } else {
            delete FList[i];
        }
    }
    System::FreeMemory(FList);
}

// Grows by half: most lists are short, and the heap does not move a block that stays in its size
// class.
void TXmlItems::Grow() {
    constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();
    constexpr std::int32_t kFirst = 4;
    if (capacity_ == kMost) throw UnicodeString("Out of length");
    const std::int64_t wanted =
        std::int64_t{capacity_} + capacity_ / 2 + (capacity_ < 8 ? kFirst : 0);
    const auto capacity = static_cast<std::int32_t>(std::min<std::int64_t>(wanted, kMost));
    // NOLINTNEXTLINE(bugprone-sizeof-expression): the list holds pointers.
    const SIZE_T size = static_cast<SIZE_T>(capacity) * sizeof(TXmlPair*);
    FList = static_cast<TXmlPair**>(ResizedBlock(FList, size));
    capacity_ = capacity;
}

int TXmlItems::IndexOf(const UnicodeString& name, TCodePage code_page) {
    if (FCount == 0) return -1;
    if (FCount < 0) {
        if (GetCount() > kRebuilt && FSlots != nullptr) return FirstOf(name);
        Build(code_page);
    }
    const std::uint32_t hash = Sysutils::StringHash(name);
    const std::uint32_t count = static_cast<std::uint32_t>(FCount);
    const int probes = std::min(FCount, kProbes);
    std::uint32_t slot = hash % count;
    for (int i = 0; i < probes; ++i) {
        const THashSlot& candidate = FSlots[slot];
        if (candidate.Hash == hash && XmlNamesEqual(FList[candidate.Index]->FName, name)) {
            return candidate.Index;
        }
        if (++slot == count) slot = 0;
    }
    return probes == FCount ? -1 : FirstOf(name);
}

int TXmlItems::EnumIndexOf(int* indices, int max, const UnicodeString& name, TCodePage code_page) {
    int found = 0;
    for (int i = IndexOf(name, code_page); i >= 0; i = NextOf(name, i)) {
        if (found < max) indices[found] = i;
        ++found;
    }
    return found;
}

TXmlPair* TXmlItems::Find(const UnicodeString& name, TCodePage code_page) {
    return Items(IndexOf(name, code_page));
}

int TXmlItems::FirstOf(const UnicodeString& name) {
    if (GetCount() <= kSmallList) return Scan(name, 0);
    return Names().First(FList, name);
}

void TXmlItems::BuildIndices() {
    if (FCount < 0) Build(TCodePage{});
    if (GetCount() > kSmallList) Names();
}

int TXmlItems::NextOf(const UnicodeString& name, int index) {
    if (GetCount() <= kSmallList) return Scan(name, index + 1);
    return Names().Next(FList, name, index);
}

int TXmlItems::Scan(const UnicodeString& name, int from) const {
    for (int i = from; i < GetCount(); ++i) {
        if (XmlNamesEqual(FList[i]->FName, name)) return i;
    }
    return -1;
}

const TXmlNameIndex& TXmlItems::Names() {
    if (names_ == nullptr) names_ = std::make_unique<TXmlNameIndex>();
    names_->Extend(FList, GetCount());
    return *names_;
}

void TXmlItems::Build(TCodePage) {
    const int count = GetCount();
    FSlots = std::make_unique<THashSlot[]>(static_cast<std::size_t>(count));
    // When many names share a hash, a scan for the free slot would take quadratic time.
    TFreeSlots free_slots(count > kSmallList ? count : 0);
    for (int i = 0; i < count; ++i) {
        const std::uint32_t hash = Sysutils::StringHash(FList[i]->FName);
        const std::uint32_t home = hash % static_cast<std::uint32_t>(count);
        const std::size_t slot =
            count > kSmallList ? free_slots.Take(home)
                               : static_cast<std::size_t>(FindEmptySlot(static_cast<int>(home)));
        FSlots[slot] = THashSlot(hash, i);
    }
    FCount = count;
}

int TXmlItems::FindEmptySlot(int start) const {
    const int count = GetCount();
    for (int i = start; i < count; ++i) {
        if (FSlots[i].Index < 0) return i;
    }
    for (int i = 0; i < start; ++i) {
        if (FSlots[i].Index < 0) return i;
    }
    return -1;
}
