// Streams over memory: a fixed block, and one that grows in steps of 8192 bytes.
#pragma once

#include "mox_classes/containers/streams.h"

namespace Classes {

// Over a block that a derived class sets. The position may lie outside the block; reads there give
// 0. A seek that leaves the 32-bit range changes nothing and gives -1.
class QV_API TCustomMemoryStream : public TStream {
  public:
    TCustomMemoryStream() = default;

    using TStream::Seek;
    [[nodiscard]] int Read(void* buffer, int count) override;
    int Seek(int offset, unsigned short origin) override;
    void SaveToStream(TStream* stream);
    void SaveToFile(UnicodeString name);
    // Valid until the size changes.
    const void* GetMemory() const { return FMemory; }

  protected:
    void SetPointer(void* memory, int size);

    void* FMemory = nullptr;
    int FSize = 0;
    int FPosition = 0;
};

// Owns its block. Sizes end at 2147483647: a write that would pass it gives 0. "Memory allocation
// error" is thrown when the heap refuses, and the stream stays as it was; a negative size throws
// "Out of range".
class QV_API TMemoryStream : public TCustomMemoryStream {
  public:
    TMemoryStream() = default;
    ~TMemoryStream() override;

    using TCustomMemoryStream::SetSize;
    void SetSize(int size) override;
    [[nodiscard]] int Write(const void* buffer, int count) override;
    void Clear();
    // Replaces the contents by the whole of `source`; the own position stays.
    void LoadFromStream(TStream* source);
    void LoadFromFile(UnicodeString name);

  protected:
    // Rounds `capacity` up to the step and gives the block that many bytes; returns it.
    virtual void* Realloc(int& capacity);
    // A capacity below the size is for callers that set the size next.
    void SetCapacity(int capacity);

    int FCapacity = 0;
};

}  // namespace Classes
