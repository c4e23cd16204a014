#include "base/handles.h"

#include <atomic>
#include <mutex>
#include <utility>

#include "base/fork_lock.h"

namespace host {
namespace {

// A handle: generation (15 bits), slot (14 bits), two zero bits.
constexpr std::uint32_t kSlots = 1u << 14;
constexpr std::uint32_t kGenerations = 1u << 15;
// The number of freed slots that wait before the oldest one is used again. So a stale handle is
// refused for a long time.
constexpr std::uint32_t kResting = 64;

// The state of a slot: the generation in the upper half, the bit "open", and the number of
// references. The open handle is one reference and each pin is one.
constexpr std::uint64_t kOpen = 1ull << 31;
constexpr std::uint64_t kReferences = kOpen - 1;

struct Slot {
    std::atomic<std::uint64_t> state;
    HandleObject* object;
    std::uint32_t next_free;
};

// Has no destructor, so that handles still work while the process unloads its libraries. Slot 0 is
// never used, because null is no handle.
struct Table {
    Slot slots[kSlots];
    ForkLock mutex;  // guards the members below and next_free
    std::uint32_t used = 1;
    std::uint32_t resting = 0;
    std::uint32_t oldest = 0;
    std::uint32_t newest = 0;
};
constinit Table table{};

std::uint32_t TakeSlot() {
    const std::scoped_lock lock(table.mutex);
    if (table.used < kSlots && table.resting < kResting) return table.used++;
    if (table.resting == 0) return 0;
    const std::uint32_t index = table.oldest;
    table.oldest = table.slots[index].next_free;
    --table.resting;
    return index;
}

void GiveBack(std::uint32_t index) {
    const std::scoped_lock lock(table.mutex);
    if (table.resting++ == 0) {
        table.oldest = index;
    } else {
        table.slots[table.newest].next_free = index;
    }
    table.newest = index;
}

// The slot and the generation of a handle; null for a number that is no handle.
Slot* SlotOf(HANDLE handle, std::uint64_t& generation) {
    const auto number = reinterpret_cast<std::uintptr_t>(handle);
    const std::uint64_t index = (number >> 2) % kSlots;
    generation = number >> 16;
    if ((number & 3) != 0 || index == 0 || generation >= kGenerations) return nullptr;
    return &table.slots[index];
}

bool IsOpen(std::uint64_t state, std::uint64_t generation) {
    return (state >> 32) == generation && (state & kOpen) != 0;
}

// Drops one reference of a slot. The last one destroys the object and ends the generation.
void Release(Slot& slot) {
    if (((slot.state.fetch_sub(1, std::memory_order_acq_rel) - 1) & (kReferences | kOpen)) != 0) {
        return;
    }
    std::unique_ptr<HandleObject>(std::exchange(slot.object, nullptr)).reset();
    const std::uint64_t next =
        ((slot.state.load(std::memory_order_relaxed) >> 32) + 1) % kGenerations;
    slot.state.store(next << 32, std::memory_order_release);
    GiveBack(static_cast<std::uint32_t>(&slot - table.slots));
}

}  // namespace

HANDLE OpenHandle(std::unique_ptr<HandleObject> object) {
    const std::uint32_t index = TakeSlot();
    if (index == 0) {
        SetLastError(ERROR_TOO_MANY_OPEN_FILES);
        return nullptr;
    }
    Slot& slot = table.slots[index];
    slot.object = object.release();
    const std::uint64_t generation = slot.state.load(std::memory_order_acquire) >> 32;
    slot.state.store(generation << 32 | kOpen | 1, std::memory_order_release);
    return reinterpret_cast<HANDLE>(static_cast<std::uintptr_t>(generation << 16 | index << 2));
}

bool CloseOpenHandle(HANDLE handle) {
    std::uint64_t generation = 0;
    Slot* const slot = SlotOf(handle, generation);
    std::uint64_t state = slot == nullptr ? 0 : slot->state.load(std::memory_order_acquire);
    do {
        if (slot == nullptr || !IsOpen(state, generation)) {
            SetLastError(ERROR_INVALID_HANDLE);
            return false;
        }
    } while (!slot->state.compare_exchange_weak(state, state & ~kOpen, std::memory_order_acq_rel));
    Release(*slot);
    return true;
}

void HandlesEnterChild() {
    for (std::uint32_t index = 1; index < table.used; ++index) {
        Slot& slot = table.slots[index];
        const std::uint64_t state = slot.state.load(std::memory_order_relaxed);
        if ((state & kOpen) == 0) continue;
        slot.state.store((state & ~kReferences) | 1, std::memory_order_relaxed);
        slot.object->EnterChild();
    }
}

HandleObject* PinHandle(HANDLE handle) {
    std::uint64_t generation = 0;
    Slot* const slot = SlotOf(handle, generation);
    if (slot == nullptr) return nullptr;
    std::uint64_t state = slot->state.load(std::memory_order_acquire);
    do {
        if (!IsOpen(state, generation)) return nullptr;
    } while (!slot->state.compare_exchange_weak(state, state + 1, std::memory_order_acq_rel));
    return slot->object;
}

void UnpinHandle(HANDLE handle) {
    std::uint64_t generation = 0;
    Release(*SlotOf(handle, generation));
}

}  // namespace host
