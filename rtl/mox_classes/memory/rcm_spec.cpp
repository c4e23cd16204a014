#include "mox_classes/memory/rcm_spec.h"

#include <cstring>
#include <limits>
#include <new>

#include "mox_classes/memory/memory.h"

namespace System {

namespace {

// Adds, and refuses a sum that does not fit the 31 bits of the heap interface.
int CheckedSum(long long a, long long b) {
    if (a < 0 || a + b > std::numeric_limits<int>::max()) throw std::bad_alloc();
    return static_cast<int>(a + b);
}

}  // namespace

int TRCMSpec::CalcAllocSize(int count, int item_size) const {
    long long size = (static_cast<long long>(count) + extra_items_) * item_size;
    if (alignment_ >= 2) size += (alignment_ - (header_size_ + size) % alignment_) % alignment_;
    CheckedSum(size, header_size_);
    return static_cast<int>(size);
}

void* TRCMSpec::Alloc(void*& data, int size) const {
    void* block = GetMemory(CheckedSum(size, header_size_));
    if (block == nullptr) throw std::bad_alloc();
    std::memset(block, 0, static_cast<std::size_t>(header_size_));
    data = static_cast<char*>(block) + header_size_;
    Count(data).store(1, std::memory_order_relaxed);
    return block;
}

void* TRCMSpec::Realloc(void*& data, int size) const {
    void* block = ReallocMemory(BlockOf(data), CheckedSum(size, header_size_));
    if (block == nullptr) throw std::bad_alloc();
    data = static_cast<char*>(block) + header_size_;
    return block;
}

void TRCMSpec::Clear(void*& data) const {
    if (data == nullptr) return;
    void* old = data;
    data = nullptr;
    // When two holders release at the same time, both may read 2 here. The decrement below tells
    // which one is the last.
    if (Count(old).load(std::memory_order_acquire) <= 1 ||
        Count(old).fetch_sub(1, std::memory_order_acq_rel) == 1) {
        FreeMemory(BlockOf(old));
    }
}

void* TRCMSpec::Assign(void*& data, void* other) const {
    if (data != other) {
        if (other != nullptr) Count(other).fetch_add(1, std::memory_order_relaxed);
        Clear(data);
        data = other;
    }
    return other == nullptr ? nullptr : BlockOf(other);
}

void* TRCMSpec::SetSize(void*& data, int size) const {
    TRCMAllocType how;
    return SetSize(data, size, how);
}

void* TRCMSpec::SetSize(void*& data, int size, TRCMAllocType& how) const {
    if (size == 0) {
        Clear(data);
        how = kRcmReleased;
        return nullptr;
    }
    if (data != nullptr && Count(data).load(std::memory_order_acquire) <= 1) {
        void* block = Realloc(data, size);
        how = kRcmResized;
        return block;
    }
    void* fresh = nullptr;
    void* block = Alloc(fresh, size);
    Clear(data);
    data = fresh;
    how = kRcmFresh;
    return block;
}

}  // namespace System
