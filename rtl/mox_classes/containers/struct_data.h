// Holders of what the print spooler returns: a buffer of records followed by the strings and blocks
// that they point into, or the Win32 error code in its place.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <utility>

#include "mox_classes/memory/rcm_spec.h"
#include "qv_api.h"

// One pointer to the data, shared by count; a header lies in front of it. An empty holder counts as
// success. A holder is used by one thread at a time; holders that share a block may live in
// different threads. A private copy is a copy of bytes: pointers inside it keep pointing into the
// block they were written for.
class QV_API TW32StructDataBase {
  public:
    struct DataRec {
        std::uint32_t record_size;  // bytes of one record; 0 in an error record
        std::uint32_t buffer_size;  // bytes of records and all behind them
        std::int32_t ref_count;
        std::int32_t count;  // records; -1 marks an error record, whose data is the 4-byte code
    };
    static_assert(sizeof(DataRec) == 16 && offsetof(DataRec, ref_count) == 8);

    TW32StructDataBase() = default;
    TW32StructDataBase(const TW32StructDataBase& other);
    TW32StructDataBase& operator=(const TW32StructDataBase& other);
    // Takes the other's share of the block, and leaves it empty.
    TW32StructDataBase(TW32StructDataBase&& other) noexcept
        : FData(std::exchange(other.FData, nullptr)) {}
    TW32StructDataBase& operator=(TW32StructDataBase&& other) noexcept {
        std::swap(FData, other.FData);
        if (this != &other) other.Clear();
        return *this;
    }
    ~TW32StructDataBase() { Clear(); }

    void Clear();
    int Count() const { return FData == nullptr ? 0 : GetRec()->count; }
    int Size() const { return FData == nullptr ? 0 : static_cast<int>(GetRec()->buffer_size); }
    bool IsEmpty() const { return FData == nullptr; }
    bool IsSuccess() const { return Count() != -1; }
    // 0 unless the holder is in failure state.
    DWORD GetErrorCode() const;
    // Replaces whatever was held.
    void SetErrorCode(DWORD code);
    // Makes this holder the only one of its block.
    void Unique();

  protected:
    // Resizes the data part, keeping the leading bytes; size 0 leaves the holder empty and gives
    // null. The record size is set with a new block. What a failure left behind is not kept.
    DataRec* SetBufferSize(int size, int count, int record_size);
    void Assign(void* data);
    DataRec* GetRec() const { return static_cast<DataRec*>(FData) - 1; }
    // Throws "Out of index range" unless 0 <= index < Count().
    void ThrowIfOutOfRange(int index) const;

    void* FData = nullptr;
};

// Records of type T. Access for writing makes the block private first. A call's result that nobody
// looks at is a failure that nobody hears of.
template <class T>
class [[nodiscard]] TW32StructData : public TW32StructDataBase {
  public:
    T& operator[](int index) {
        ThrowIfOutOfRange(index);
        Unique();
        return static_cast<T*>(FData)[index];
    }
    const T& operator[](int index) const {
        ThrowIfOutOfRange(index);
        return static_cast<const T*>(FData)[index];
    }
};
