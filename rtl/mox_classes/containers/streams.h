// Byte streams: the abstract stream, and streams over file handles and named files. Streams over
// memory are in memory_stream.h. Positions, sizes and counts are bytes.
//
// The order of the virtual functions is a contract with the modules that derive from these classes.
#pragma once

#include <windows.h>

#include <cstdint>

#include "mox_classes/memory/object.h"
#include "mox_classes/text/unicode_string.h"
#include "qv_api.h"

namespace Classes {

using System::TObject;
using System::UnicodeString;

enum class TSeekOrigin : unsigned short { Beginning = 0, Current = 1, End = 2 };

// Read, Write and Seek report: the bytes moved (0 on failure), the new position (-1 on failure).
// The other operations throw their message as a UnicodeString. The 64-bit and 32-bit forms of Seek
// call each other here: a stream overrides one of them. Streams are not copied. One thread at a
// time.
class QV_API TStream : public TObject {
  public:
    TStream() = default;
    TStream(const TStream&) = delete;
    TStream& operator=(const TStream&) = delete;

    virtual std::int64_t GetSize();
    // Throws "Out of range" for what the 32-bit form cannot take.
    virtual void SetSize(std::int64_t size);
    virtual void SetSize(int size);
    [[nodiscard]] virtual int Read(void* buffer, int count) = 0;
    [[nodiscard]] virtual int Write(const void* buffer, int count) = 0;
    // Throws "Out of range" for an offset that the 32-bit form cannot take.
    virtual std::int64_t Seek(std::int64_t offset, TSeekOrigin origin);
    // -1 as well for a position that has no 32-bit form.
    virtual int Seek(int offset, unsigned short origin);

    std::int64_t GetPosition() { return Seek(std::int64_t{0}, TSeekOrigin::Current); }
    void SetPosition(std::int64_t position) { Seek(position, TSeekOrigin::Beginning); }
    void SetSize64(std::int64_t size) { SetSize(size); }
    // All of it, or "Stream read failed" / "Stream write failed".
    void ReadBuffer(void* buffer, int count);
    void WriteBuffer(const void* buffer, int count);
    // Copies `count` bytes from the source's position; 0 means the whole source from its start.
    // Returns the bytes copied. A negative count or size throws "Out of range".
    std::int64_t CopyFrom(TStream* source, std::int64_t count);
};

// Over an open file; the handle stays the caller's.
class QV_API THandleStream : public TStream {
  public:
    explicit THandleStream(void* handle) : FHandle(handle) {}

    // Moves to the size and ends the file there; throws "SetEndOfFile failed".
    void SetSize(std::int64_t size) override;
    void SetSize(int size) override;
    [[nodiscard]] int Read(void* buffer, int count) override;
    [[nodiscard]] int Write(const void* buffer, int count) override;
    std::int64_t Seek(std::int64_t offset, TSeekOrigin origin) override;
    int Seek(int offset, unsigned short origin) override;
    void* GetHandle() const { return FHandle; }

  protected:
    void* FHandle;
};

// Over a named file, which is closed with the stream. Mode 0xFFFF creates or truncates; otherwise
// the low two bits are 0 read, 1 write, 2 both, and bits 4 to 7 say what others may do meanwhile:
// 0 and 1 nothing, 2 read, 3 write, 4 both. Throws "[code]message" of the platform, for an invalid
// mode that of code 87.
class QV_API TFileStream : public THandleStream {
  public:
    static constexpr unsigned short kCreate = 0xFFFF;
    static constexpr unsigned short kRead = 0x00;
    static constexpr unsigned short kShareRead = 0x20;

    TFileStream(UnicodeString name, unsigned short mode);
    // `rights` has no effect.
    TFileStream(UnicodeString name, unsigned short mode, unsigned int rights);
    ~TFileStream() override;

  private:
    UnicodeString FFileName;  // part of the layout; stays empty
};

}  // namespace Classes
