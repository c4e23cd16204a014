// Allocations that can fail, and the count of the blocks in use: operator new and the process heap.
// A heap call that calls another one counts its block once.
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
    void* Took(void* block) const {
        blocks += outermost_ && block != nullptr ? 1 : 0;
        return block;
    }
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

// The same for one object and for an array.
#define QV_OPERATORS(array)                                                           \
    void* operator new array(std::size_t size) {                                      \
        return OrThrow(Block(size));                                                  \
    }                                                                                 \
    void* operator new array(std::size_t size, const std::nothrow_t&) noexcept {      \
        return Block(size);                                                           \
    }                                                                                 \
    void* operator new array(std::size_t size, std::align_val_t align) {              \
        return OrThrow(AlignedBlock(size, align));                                    \
    }                                                                                 \
    void operator delete array(void* block) noexcept {                                \
        Free(block);                                                                  \
    }                                                                                 \
    void operator delete array(void* block, std::size_t) noexcept {                   \
        Free(block);                                                                  \
    }                                                                                 \
    void operator delete array(void* block, const std::nothrow_t&) noexcept {         \
        Free(block);                                                                  \
    }                                                                                 \
    void operator delete array(void* block, std::align_val_t) noexcept {              \
        Free(block);                                                                  \
    }                                                                                 \
    void operator delete array(void* block, std::size_t, std::align_val_t) noexcept { \
        Free(block);                                                                  \
    }
QV_OPERATORS()
QV_OPERATORS([])

// The process heap. A block that moves stays one block.
#define QV_TAKES(n, f)                                                  \
    QV_HEAD(n, f) {                                                     \
        QV_SITE(f, Zero, false, kNoMemory);                             \
        const HeapCall call;                                            \
        return call.Took(Call(site, [&] { return next(QV_ARGS##n); })); \
    }
#define QV_GIVES(n, f, block)                             \
    QV_HEAD(n, f) {                                       \
        static const auto next = Next<decltype(::f)>(#f); \
        const HeapCall call;                              \
        call.Gave(block);                                 \
        return next(QV_ARGS##n);                          \
    }
QV_TAKES(3, HeapAlloc)
QV_TAKES(2, GlobalAlloc)
QV_GIVES(3, HeapFree, a2)
QV_GIVES(1, GlobalFree, a0)
QV_GIVES(1, LocalFree, a0)
QV_HEAD(4, HeapReAlloc) {
    QV_SITE(HeapReAlloc, Zero, false, kNoMemory);
    const HeapCall call;
    return Call(site, [&] { return next(QV_ARGS4); });
}
