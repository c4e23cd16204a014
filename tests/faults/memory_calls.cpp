// Allocations that can fail, and the count of the blocks in use: operator new and its like, and the
// process heap. The count takes each block once, whichever of the heap's names hand it on inside.
#include <windows.h>

#include <atomic>
#include <cstdlib>
#include <new>

#include "faults/fault_call.h"

using enum faults::Answer;
using namespace faults;

namespace {

constexpr Kind kKind = Kind::Memory;
constexpr int kNoMemory = ERROR_NOT_ENOUGH_MEMORY;

std::atomic<long> blocks{0};
thread_local int heap_depth = 0;

// The outermost call of the heap counts.
class HeapCall {
  public:
    HeapCall() : outermost_(heap_depth++ == 0) {}
    ~HeapCall() { --heap_depth; }
    HeapCall(const HeapCall&) = delete;
    HeapCall& operator=(const HeapCall&) = delete;
    void Took(const void* block) const { blocks += outermost_ && block != nullptr ? 1 : 0; }
    void Gave(const void* block) const { blocks -= outermost_ && block != nullptr ? 1 : 0; }

  private:
    bool outermost_;
};

void* Counted(void* block) {
    if (block != nullptr) ++blocks;
    return block;
}

// Null when it is this allocation's turn to fail, or memory is short.
void* Block(std::size_t size) {
    static constexpr int kCodes[] = {kNoMemory};
    static constinit Site site{"operator new", kKind, Zero, kCodes};
    return Verdict(site) == kGoOn ? Counted(std::malloc(size + (size == 0))) : nullptr;
}

void* AlignedBlock(std::size_t size, std::align_val_t align) {
    const auto unit = static_cast<std::size_t>(align);
    static constexpr int kCodes[] = {kNoMemory};
    static constinit Site site{"operator new, aligned", kKind, Zero, kCodes};
    return Verdict(site) == kGoOn ? Counted(std::aligned_alloc(unit, (size + unit) / unit * unit))
                                  : nullptr;
}

void* OrThrow(void* block) {
    if (block == nullptr) throw std::bad_alloc();
    return block;
}

void Free(void* block) {
    if (block != nullptr) --blocks;
    std::free(block);
}

}  // namespace

long faults::BlocksInUse() {
    return blocks;
}

void* operator new(std::size_t size) {
    return OrThrow(Block(size));
}
void* operator new[](std::size_t size) {
    return OrThrow(Block(size));
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return Block(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return Block(size);
}
void* operator new(std::size_t size, std::align_val_t align) {
    return OrThrow(AlignedBlock(size, align));
}
void* operator new[](std::size_t size, std::align_val_t align) {
    return OrThrow(AlignedBlock(size, align));
}
void operator delete(void* block) noexcept {
    Free(block);
}
void operator delete[](void* block) noexcept {
    Free(block);
}
void operator delete(void* block, std::size_t) noexcept {
    Free(block);
}
void operator delete[](void* block, std::size_t) noexcept {
    Free(block);
}
void operator delete(void* block, const std::nothrow_t&) noexcept {
    Free(block);
}
void operator delete[](void* block, const std::nothrow_t&) noexcept {
    Free(block);
}
void operator delete(void* block, std::align_val_t) noexcept {
    Free(block);
}
void operator delete[](void* block, std::align_val_t) noexcept {
    Free(block);
}
void operator delete(void* block, std::size_t, std::align_val_t) noexcept {
    Free(block);
}
void operator delete[](void* block, std::size_t, std::align_val_t) noexcept {
    Free(block);
}

QV_HEAD(3, HeapAlloc) {
    QV_SITE(HeapAlloc, Zero, false, kNoMemory);
    const HeapCall call;
    void* const block = Call(site, [&] { return next(QV_ARGS3); });
    call.Took(block);
    return block;
}

// The block stays one block, whether it moves or the call fails.
QV_HEAD(4, HeapReAlloc) {
    QV_SITE(HeapReAlloc, Zero, false, kNoMemory);
    const HeapCall call;
    return Call(site, [&] { return next(QV_ARGS4); });
}

QV_HEAD(2, GlobalAlloc) {
    QV_SITE(GlobalAlloc, Zero, false, kNoMemory);
    const HeapCall call;
    void* const block = Call(site, [&] { return next(QV_ARGS2); });
    call.Took(block);
    return block;
}

QV_HEAD(3, HeapFree) {
    static const auto next = Next<decltype(::HeapFree)>("HeapFree");
    const HeapCall call;
    call.Gave(a2);
    return next(QV_ARGS3);
}

QV_HEAD(1, GlobalFree) {
    static const auto next = Next<decltype(::GlobalFree)>("GlobalFree");
    const HeapCall call;
    call.Gave(a0);
    return next(a0);
}

QV_HEAD(1, LocalFree) {
    static const auto next = Next<decltype(::LocalFree)>("LocalFree");
    const HeapCall call;
    call.Gave(a0);
    return next(a0);
}
