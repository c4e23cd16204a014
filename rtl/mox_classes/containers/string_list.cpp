#include "mox_classes/containers/string_list.h"

#include <bit>
#include <climits>
#include <new>
#include <utility>

#include "mox_classes/containers/fixed_lines.h"
#include "mox_classes/memory/memory.h"
#include "mox_classes/text/log_here.h"

namespace Classes {

namespace {

constexpr int kSmallStep = 8;
constexpr int kLargeStep = 16;
constexpr int kSmallCapacity = 32;
constexpr int kItemBytes = 2 * static_cast<int>(sizeof(void*));
constexpr int kMostItems = INT_MAX / kItemBytes;

// The number of items that the heap is asked for. Above 1,024 items a block grows by half of its
// size: with steps of 16 items, ten million additions would move it so often that they take
// minutes. The system provides memory only for the part that is used.
int HeldItems(int capacity) {
    constexpr int kExact = 1024;
    if (capacity <= kExact) return capacity;
    const int step = static_cast<int>(std::bit_floor(static_cast<unsigned>(capacity)) / 2);
    if (capacity > kMostItems - step) return kMostItems;
    return (capacity + step - 1) / step * step;
}

[[noreturn]] void ThrowInvalidIndex(int index, int line) {
    UnicodeString message;
    message.printf(TEXT("Invalid range of index %d"), index);
    throw Mox::LogHere('X', message, line);
}

}  // namespace

TStringList::TStringList(const TStringList& other) : TStrings(other) {
    try {
        SetCapacity(other.FCapacity);
        for (int i = 0; i < other.FCount; ++i) {
            new (&FItems[i]) TItem(other.FItems[i]);
            ++FCount;
        }
    } catch (...) {
        ReleaseItems(0);
        System::FreeMemory(FItems);
        throw;
    }
}

TStringList& TStringList::operator=(const TStringList& other) {
    if (this == &other) return *this;
    TStringList copy(other);
    TStrings::operator=(other);
    Swap(copy);
    return *this;
}

TStringList::~TStringList() {
    ReleaseItems(0);
    System::FreeMemory(FItems);
}

void TStringList::ReleaseItems(int first) {
    while (FCount > first) FItems[--FCount].~TItem();
}

void TStringList::Clear() {
    SetCapacity(0);
}

void TStringList::SetCapacity(int capacity) {
    if (capacity == FCapacity) return;
    if (capacity < 0) throw UnicodeString(TEXT("Out of range"));
    if (capacity > kMostItems) throw std::bad_alloc();
    ReleaseItems(capacity < FCount ? capacity : FCount);
    if (capacity == 0) {
        System::FreeMemory(FItems);
        FItems = nullptr;
    } else if (FItems == nullptr || HeldItems(capacity) != HeldItems(FCapacity)) {
        // The heap may move the block, because an item is only a pointer to a string and a pointer
        // to an object.
        static_assert(sizeof(TItem) == kItemBytes);
        const int bytes = HeldItems(capacity) * kItemBytes;
        void* block = System::ReallocMemory(static_cast<void*>(FItems), bytes);
        if (block == nullptr) throw std::bad_alloc();
        FItems = static_cast<TItem*>(block);
    }
    FCapacity = capacity;
}

void TStringList::Grow() {
    SetCapacity(FCapacity + (FCapacity < kSmallCapacity ? kSmallStep : kLargeStep));
    // A derived list may refuse to grow.
    if (FCapacity <= FCount) throw std::bad_alloc();
}

void TStringList::Insert(int index, UnicodeString s) {
    InsertObject(index, std::move(s), nullptr);
}

void TStringList::InsertObject(int index, UnicodeString s, TObject* object) {
    if (index < 0 || index > FCount) ThrowInvalidIndex(index, kLineOfRangeError);
    InsertItem(index, std::move(s), object);
}

void TStringList::InsertItem(int index, UnicodeString s, TObject* object) {
    if (FCount == FCapacity) Grow();
    System::Move(FItems + index, FItems + index + 1,
                 (FCount - index) * static_cast<int>(sizeof(TItem)));
    new (&FItems[index]) TItem{std::move(s), object};
    ++FCount;
}

void TStringList::Append(UnicodeString s) {
    if (FCount == FCapacity) Grow();
    new (&FItems[FCount]) TItem{std::move(s), nullptr};
    ++FCount;
}

void TStringList::Delete(int index) {
    ItemAt(index).~TItem();
    --FCount;
    System::Move(FItems + index + 1, FItems + index,
                 (FCount - index) * static_cast<int>(sizeof(TItem)));
}

TStringList::TItem& TStringList::ItemAt(int index, int line) {
    if (index < 0 || index >= FCount) ThrowInvalidIndex(index, line);
    return FItems[index];
}

UnicodeString TStringList::Get(int index) {
    return ItemAt(index).Text;
}

void TStringList::Put(int index, UnicodeString s) {
    ItemAt(index).Text = std::move(s);
}

TObject* TStringList::Get_Object(int index) {
    return ItemAt(index).Object;
}

void TStringList::PutObject(int index, TObject* object) {
    ItemAt(index).Object = object;
}

}  // namespace Classes
