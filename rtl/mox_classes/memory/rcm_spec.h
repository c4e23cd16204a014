// Description of a kind of reference-counted block: a header of fixed size with a 32-bit count
// somewhere inside, and the data behind it. A holder keeps only the pointer to the data; null means
// that there is no block.
#pragma once

#include <atomic>
#include <cstdint>

#include "qv_api.h"

namespace System {

// Which way SetSize went.
enum TRCMAllocType : int {
    kRcmFresh = 0,     // a new block whose header is all zeros but for the count
    kRcmResized = 1,   // the same block, resized
    kRcmReleased = 2,  // no block any more
};

// Holders of one block may live in different threads: counts change only atomically. One holder is
// used by one thread at a time. A size that the heap cannot give, or that does not fit the 31 bits
// of this interface, throws std::bad_alloc and leaves the holder as it was. Every pointer to void
// that is returned is the block's start, where the header lies.
class QV_API TRCMSpec {
  public:
    // `alignment` below 2 means none; `extra_items` are added to every count by CalcAllocSize.
    constexpr TRCMSpec(int header_size, int count_position, int extra_items, int alignment)
        : header_size_(header_size),
          count_position_(count_position),
          extra_items_(extra_items),
          alignment_(alignment) {}

    // Bytes of the data part for `count` items of `item_size` bytes.
    int CalcAllocSize(int count, int item_size) const;

    // Gives up the holder's share; the last holder frees the block. `data` becomes null.
    void Clear(void*& data) const;
    // Lets `data` share the block of `other`, after releasing its own.
    void* Assign(void*& data, void* other) const;
    // Gives the holder a block of its own of `size` bytes; 0 releases it. A sole holder's block is
    // resized. A shared one stays with its other holders and its bytes are not copied; a holder
    // that wants them keeps a share while it copies, since the others may let go at any time.
    void* SetSize(void*& data, int size) const;
    void* SetSize(void*& data, int size, TRCMAllocType& how) const;

    // Holders of the block behind `data`, which is not null.
    std::atomic_ref<std::int32_t> Count(void* data) const {
        return std::atomic_ref<std::int32_t>(*reinterpret_cast<std::int32_t*>(
            static_cast<char*>(data) - header_size_ + count_position_));
    }

  protected:
    void* Alloc(void*& data, int size) const;
    void* Realloc(void*& data, int size) const;

  private:
    void* BlockOf(void* data) const { return static_cast<char*>(data) - header_size_; }

    int header_size_;
    int count_position_;
    int extra_items_;
    int alignment_;
};

}  // namespace System
