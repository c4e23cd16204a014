#include "mox_classes/containers/memory_stream.h"

#include <climits>
#include <cstring>
#include <functional>

#include "mox_classes/containers/fixed_lines.h"
#include "mox_classes/memory/memory.h"
#include "mox_classes/text/log_here.h"

namespace Classes {

namespace {

constexpr int kStep = 8192;

void TraceCapacity(int capacity, int line) {
    UnicodeString text;
    text.printf(TEXT("NewCapacity=%d"), capacity);
    Mox::ShowStatus(text, line);
}

// Rounds up to a full step. The largest size that an int holds is not rounded.
int RoundedUp(int capacity) {
    return capacity > INT_MAX - (kStep - 1) ? INT_MAX : (capacity + kStep - 1) & ~(kStep - 1);
}

}  // namespace

void TCustomMemoryStream::SetPointer(void* memory, int size) {
    FMemory = memory;
    FSize = size;
}

int TCustomMemoryStream::Read(void* buffer, int count) {
    if (FPosition < 0 || count < 0 || FPosition >= FSize) return 0;
    const int left = FSize - FPosition;
    const int n = count < left ? count : left;
    System::Move(static_cast<const char*>(FMemory) + FPosition, buffer, n);
    FPosition += n;
    return n;
}

int TCustomMemoryStream::Seek(int offset, unsigned short origin) {
    std::int64_t position = FPosition;
    switch (static_cast<TSeekOrigin>(origin)) {
        case TSeekOrigin::Beginning:
            position = offset;
            break;
        case TSeekOrigin::Current:
            position += offset;
            break;
        case TSeekOrigin::End:
            position = std::int64_t{FSize} + offset;
            break;
    }
    if (position < INT_MIN || position > INT_MAX) return -1;
    FPosition = static_cast<int>(position);
    return FPosition;
}

void TCustomMemoryStream::SaveToStream(TStream* stream) {
    stream->WriteBuffer(FMemory, FSize);
}

void TCustomMemoryStream::SaveToFile(UnicodeString name) {
    TFileStream file(name, TFileStream::kCreate);
    SaveToStream(&file);
}

TMemoryStream::~TMemoryStream() {
    System::FreeMemory(FMemory);
}

void TMemoryStream::SetSize(int size) {
    SetCapacity(size);
    FSize = size;
    if (FPosition > size) FPosition = size;
}

int TMemoryStream::Write(const void* buffer, int count) {
    const std::int64_t end = std::int64_t{FPosition} + count;
    if (FPosition < 0 || count < 0 || end < 1 || end > INT_MAX) return 0;

    // The caller may write a part of this stream's own block again. The block can move when it
    // grows, so the source is found anew.
    const char* source = static_cast<const char*>(buffer);
    const char* own = static_cast<const char*>(FMemory);
    const std::less<> before;
    const bool is_own = own != nullptr && !before(source, own) && before(source, own + FSize);
    const std::ptrdiff_t own_offset = is_own ? source - own : 0;

    if (end > FSize) {
        if (end > FCapacity) SetCapacity(static_cast<int>(end));
        char* memory = static_cast<char*>(FMemory);
        if (FPosition > FSize) {
            std::memset(memory + FSize, 0, static_cast<std::size_t>(FPosition - FSize));
        }
        FSize = static_cast<int>(end);
        if (is_own) source = memory + own_offset;
    }
    System::Move(source, static_cast<char*>(FMemory) + FPosition, count);
    FPosition = static_cast<int>(end);
    return count;
}

void TMemoryStream::Clear() {
    SetCapacity(0);
    FSize = 0;
    FPosition = 0;
}

void TMemoryStream::LoadFromStream(TStream* source) {
    source->SetPosition(0);
    const std::int64_t count = source->GetSize();
    TStream::SetSize(count);
    source->ReadBuffer(FMemory, static_cast<int>(count));
}

void TMemoryStream::LoadFromFile(UnicodeString name) {
    TFileStream file(name, TFileStream::kRead | TFileStream::kShareRead);
    LoadFromStream(&file);
}

void TMemoryStream::SetCapacity(int capacity) {
    FMemory = Realloc(capacity);
    FCapacity = capacity;
}

void* TMemoryStream::Realloc(int& capacity) {
    if (capacity < 0) throw UnicodeString(TEXT("Out of range"));
    TraceCapacity(capacity, kLineOfRequestTrace);
    if (capacity > 0 && capacity != FSize) capacity = RoundedUp(capacity);
    TraceCapacity(capacity, kLineOfRoundedTrace);
    if (capacity == FCapacity) return FMemory;
    if (capacity == 0) {
        System::FreeMemory(FMemory);
        return nullptr;
    }
    void* memory =
        FCapacity == 0 ? System::GetMemory(capacity) : System::ReallocMemory(FMemory, capacity);
    if (memory == nullptr) throw UnicodeString(TEXT("Memory allocation error"));
    return memory;
}

}  // namespace Classes
