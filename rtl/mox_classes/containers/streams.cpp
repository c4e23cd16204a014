#include "mox_classes/containers/streams.h"

#include <algorithm>
#include <iterator>
#include <limits>

#include "mox_classes/containers/fixed_lines.h"
#include "mox_classes/memory/handles.h"
#include "mox_classes/memory/memory.h"
#include "mox_classes/text/log_here.h"
#include "mox_classes/text/sys_error.h"

namespace Classes {

namespace {

constexpr std::int64_t kTransferSize = 61440;
constexpr unsigned kLastShareMode = 4;

using Int32 = std::numeric_limits<std::int32_t>;

int Narrowed(std::int64_t value) {
    if (value < Int32::min() || value > Int32::max()) throw UnicodeString(TEXT("Out of range"));
    return static_cast<int>(value);
}

// What the platform needs to open an existing file.
struct TOpenMode {
    DWORD access;
    DWORD share;
};

bool ParseMode(unsigned short mode, TOpenMode& result) {
    constexpr DWORD kAccess[] = {GENERIC_READ, GENERIC_WRITE, GENERIC_READ | GENERIC_WRITE};
    constexpr DWORD kShare[] = {0, 0, FILE_SHARE_READ, FILE_SHARE_WRITE,
                                FILE_SHARE_READ | FILE_SHARE_WRITE};
    const unsigned access = mode & 3u;
    const unsigned share = (mode >> 4) & 0xFu;
    if (access >= std::size(kAccess) || share > kLastShareMode) return false;
    result = {kAccess[access], kShare[share]};
    return true;
}

HANDLE OpenFileFor(const UnicodeString& name, unsigned short mode) {
    if (mode == TFileStream::kCreate) {
        return CreateFileW(name.t_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                           FILE_ATTRIBUTE_NORMAL, nullptr);
    }
    TOpenMode open;
    if (!ParseMode(mode, open)) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return INVALID_HANDLE_VALUE;
    }
    return CreateFileW(name.t_str(), open.access, open.share, nullptr, OPEN_EXISTING,
                       FILE_ATTRIBUTE_NORMAL, nullptr);
}

void TraceCopy(int count) {
    UnicodeString text;
    text.printf(TEXT("[TStream::CopyFrom] WriteBuffer(%d)"), count);
    Mox::ShowStatus(text, kLineOfCopyTrace);
}

}  // namespace

std::int64_t TStream::GetSize() {
    const std::int64_t position = Seek(std::int64_t{0}, TSeekOrigin::Current);
    const std::int64_t size = Seek(std::int64_t{0}, TSeekOrigin::End);
    Seek(position, TSeekOrigin::Beginning);
    return size;
}

void TStream::SetSize(std::int64_t size) {
    SetSize(Narrowed(size));
}

void TStream::SetSize(int /*size*/) {}

std::int64_t TStream::Seek(std::int64_t offset, TSeekOrigin origin) {
    return Seek(Narrowed(offset), static_cast<unsigned short>(origin));
}

int TStream::Seek(int offset, unsigned short origin) {
    const std::int64_t position =
        Seek(static_cast<std::int64_t>(offset), static_cast<TSeekOrigin>(origin));
    return position > Int32::max() ? -1 : static_cast<int>(position);
}

void TStream::ReadBuffer(void* buffer, int count) {
    if (count != 0 && Read(buffer, count) != count) {
        throw UnicodeString(TEXT("Stream read failed"));
    }
}

void TStream::WriteBuffer(const void* buffer, int count) {
    if (count != 0 && Write(buffer, count) != count) {
        throw UnicodeString(TEXT("Stream write failed"));
    }
}

std::int64_t TStream::CopyFrom(TStream* source, std::int64_t count) {
    if (count == 0) {
        source->Seek(std::int64_t{0}, TSeekOrigin::Beginning);
        count = source->GetSize();
    }
    if (count < 0) throw UnicodeString(TEXT("Out of range"));
    if (count == 0) return 0;

    const int buffer_size = static_cast<int>(std::min(count, kTransferSize));
    const System::THeapBlock buffer(System::GetMemory(buffer_size));
    if (!buffer) throw UnicodeString(TEXT("Memory allocation error"));
    for (std::int64_t left = count; left != 0;) {
        const int n = static_cast<int>(std::min<std::int64_t>(left, buffer_size));
        source->ReadBuffer(buffer.Get(), n);
        TraceCopy(n);
        WriteBuffer(buffer.Get(), n);
        left -= n;
    }
    return count;
}

void THandleStream::SetSize(std::int64_t size) {
    if (Seek(size, TSeekOrigin::Beginning) == -1 || !SetEndOfFile(FHandle)) {
        throw UnicodeString(TEXT("SetEndOfFile failed"));
    }
}

void THandleStream::SetSize(int size) {
    SetSize(static_cast<std::int64_t>(size));
}

int THandleStream::Read(void* buffer, int count) {
    DWORD done = 0;
    if (count <= 0) return 0;
    return ReadFile(FHandle, buffer, static_cast<DWORD>(count), &done, nullptr)
               ? static_cast<int>(done)
               : 0;
}

int THandleStream::Write(const void* buffer, int count) {
    DWORD done = 0;
    if (count <= 0) return 0;
    return WriteFile(FHandle, buffer, static_cast<DWORD>(count), &done, nullptr)
               ? static_cast<int>(done)
               : 0;
}

std::int64_t THandleStream::Seek(std::int64_t offset, TSeekOrigin origin) {
    LONG high = static_cast<LONG>(offset >> 32);
    const DWORD low = SetFilePointer(FHandle, static_cast<LONG>(offset & 0xFFFFFFFF), &high,
                                     static_cast<DWORD>(origin));
    if (low == INVALID_SET_FILE_POINTER && GetLastError() != NO_ERROR) return -1;
    return static_cast<std::int64_t>(high) << 32 | low;
}

int THandleStream::Seek(int offset, unsigned short origin) {
    return TStream::Seek(offset, origin);
}

TFileStream::TFileStream(UnicodeString name, unsigned short mode)
    : THandleStream(OpenFileFor(name, mode)) {
    if (FHandle == INVALID_HANDLE_VALUE) throw Mox::GetSysError(GetLastError(), true);
}

TFileStream::TFileStream(UnicodeString name, unsigned short mode, unsigned int /*rights*/)
    : TFileStream(name, mode) {}

TFileStream::~TFileStream() {
    System::TFileHandle(FHandle).Reset();
}

}  // namespace Classes
