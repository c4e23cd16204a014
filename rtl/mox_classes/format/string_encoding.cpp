#include "mox_classes/format/string_encoding.h"

#include <cstring>
#include <limits>

#include "mox_classes/text/utf8_text.h"

namespace {

enum TTagByte { kMask = 0, kUtf8 = 5, kUtf16 = 6, kReserved = 7, kTagBytes = 8 };
constexpr int kMaxLengthSize = 4;
constexpr ULONG kMaxLength = std::numeric_limits<int>::max();

struct TTagTable {
    unsigned char bytes[kTagBytes];

    unsigned char operator[](int index) const { return bytes[index]; }
    // The size of the length field in bytes; 0 when the table has no such code.
    int LengthSizeOf(unsigned char tag) const {
        for (int size = 1; size <= kMaxLengthSize; ++size) {
            if (bytes[size] == (tag & bytes[kMask])) return size;
        }
        return 0;
    }
};

constinit TTagTable tags = {{0x0F, 1, 2, 3, 4, 0x10, 0x30, 0x50}};

bool Differ(const unsigned char* bytes, int count) {
    for (int i = 0; i < count; ++i) {
        for (int j = 0; j < i; ++j) {
            if (bytes[i] == bytes[j]) return false;
        }
    }
    return true;
}

bool IsTagTable(const unsigned char* bytes) {
    for (int i = 0; i < kTagBytes; ++i) {
        if (bytes[i] == 0) return false;
        if (i >= 1 && i <= kMaxLengthSize && (bytes[i] & ~bytes[kMask]) != 0) return false;
        if (i >= kUtf8 && (bytes[i] & bytes[kMask]) != 0) return false;
    }
    return Differ(bytes + 1, kMaxLengthSize) && Differ(bytes + kUtf8, kTagBytes - kUtf8);
}

bool Fail(DWORD error) {
    SetLastError(error);
    return false;
}

}  // namespace

int SetDefaultStringTags(const unsigned char new_tags[8]) {
    if (new_tags == nullptr || !IsTagTable(new_tags)) return 0;
    std::memcpy(tags.bytes, new_tags, sizeof tags.bytes);
    return 1;
}

namespace System {

namespace {

// What stands in front of a payload, and the size of the payload in bytes.
struct TRecord {
    unsigned char tag = 0;
    int length_size = 0;
    ULONG length = 0;  // bytes of UTF-8, units of UTF-16
    bool is_utf16 = false;

    std::uint64_t HeadBytes() const { return 1 + static_cast<std::uint64_t>(length_size); }
    std::uint64_t PayloadBytes() const {
        return static_cast<std::uint64_t>(length) * (is_utf16 ? 2 : 1);
    }
    std::uint64_t Bytes() const { return HeadBytes() + PayloadBytes(); }
};

TRecord RecordOf(const UnicodeString& s, TCodePage& code_page) {
    TRecord record;
    if (s.Length() == 0) return record;
    record.length = static_cast<ULONG>(GetMinUnicodeLength(s, code_page));
    record.is_utf16 = code_page == kCodePageUtf16;
    record.length_size = GetBytesNeeded(record.length);
    record.tag = tags[record.length_size] | tags[record.is_utf16 ? kUtf16 : kUtf8];
    return record;
}

void WriteHead(unsigned char* out, const TRecord& record) {
    *out++ = record.tag;
    for (int i = 0; i < record.length_size; ++i) {
        *out++ = static_cast<unsigned char>(record.length >> (8 * i));
    }
}

void WritePayload(unsigned char* out, const TRecord& record, const UnicodeString& s) {
    if (record.is_utf16) {
        std::memcpy(out, s.t_str(), record.PayloadBytes());
    } else if (record.length > 0) {
        WideCharToMultiByte(CP_UTF8, 0, s.t_str(), s.Length(), reinterpret_cast<char*>(out),
                            static_cast<int>(record.length), nullptr, nullptr);
    }
}

// Reads tag and length from `size` bytes. The payload is not read, but it must fit into the bytes
// behind them. Returns 0 or the Win32 error.
DWORD ReadHead(const unsigned char* bytes, std::uint64_t size, TRecord& record) {
    if (bytes == nullptr || size == 0) return ERROR_INSUFFICIENT_BUFFER;
    record.tag = bytes[0];
    if (record.tag == 0) return 0;
    record.length_size = tags.LengthSizeOf(record.tag);
    if (record.length_size == 0 || size < record.HeadBytes()) return ERROR_INSUFFICIENT_BUFFER;
    for (int i = 0; i < record.length_size; ++i) {
        record.length |= static_cast<ULONG>(bytes[1 + i]) << (8 * i);
    }
    const int encoding = record.tag & ~tags[kMask];
    record.is_utf16 = encoding == tags[kUtf16];
    if (!record.is_utf16 && encoding != tags[kUtf8]) return ERROR_INVALID_DATA;
    if (record.length > kMaxLength) return ERROR_INVALID_DATA;
    return size < record.Bytes() ? ERROR_INSUFFICIENT_BUFFER : 0;
}

// Reads the text of a payload that lies inside its buffer. Returns 0 or the Win32 error.
DWORD ReadPayload(const unsigned char* bytes, const TRecord& record, UnicodeString& s) {
    if (record.tag == 0) return 0;
    if (record.is_utf16) {
        if (record.length == 0) return 0;
        s.SetLength(record.length);
        std::memcpy(s.data(), bytes, record.PayloadBytes());
        return 0;
    }
    s = StringFromUtf8(reinterpret_cast<const char*>(bytes), static_cast<int>(record.length));
    if (s.IsEmpty()) return ERROR_INVALID_DATA;
    return 0;
}

}  // namespace

int GetBytesNeeded(ULONG n) {
    if (n < 0x100) return 1;
    if (n < 0x10000) return 2;
    return n < 0x1000000 ? 3 : 4;
}

int GetMinUnicodeLength(const UnicodeString& s, TCodePage& code_page) {
    if (s.Length() == 0) return 0;
    if (code_page == kCodePageUtf16) return s.Length();
    const int bytes =
        WideCharToMultiByte(CP_UTF8, 0, s.t_str(), s.Length(), nullptr, 0, nullptr, nullptr);
    if (code_page == kCodePageUtf8) return bytes;
    // The platform cannot measure the UTF-8 form of some texts. Those are stored as UTF-16.
    const bool utf8_is_shorter = bytes > 0 && bytes < 2LL * s.Length();
    code_page = utf8_is_shorter ? kCodePageUtf8 : kCodePageUtf16;
    return utf8_is_shorter ? bytes : s.Length();
}

bool StrToBin(void* buffer, ULONG size, ULONG& needed, TCodePage& code_page,
              const UnicodeString& s) {
    const TRecord record = RecordOf(s, code_page);
    if (record.tag != 0 && record.length == 0) return Fail(ERROR_INVALID_DATA);
    needed = static_cast<ULONG>(record.Bytes());
    if (buffer == nullptr || size < record.Bytes()) return Fail(ERROR_INSUFFICIENT_BUFFER);
    auto* const out = static_cast<unsigned char*>(buffer);
    WriteHead(out, record);
    WritePayload(out + record.HeadBytes(), record, s);
    return true;
}

bool BinToStr(const void* buffer, ULONG size, ULONG& used, UnicodeString& s) {
    s = UnicodeString();
    const auto* const bytes = static_cast<const unsigned char*>(buffer);
    TRecord record;
    DWORD error = ReadHead(bytes, size, record);
    if (error == 0) error = ReadPayload(bytes + record.HeadBytes(), record, s);
    if (error != 0) return Fail(error);
    used = static_cast<ULONG>(record.Bytes());
    SetLastError(0);
    return true;
}

bool StringToBuffer(unsigned char*& head, unsigned char*& tail, const UnicodeString& s) {
    TCodePage automatic = kCodePageAnsi;
    const TRecord record = RecordOf(s, automatic);
    if (head == nullptr || head > tail) return false;
    if (static_cast<std::uint64_t>(tail - head) < record.Bytes()) return false;
    WriteHead(head, record);
    WritePayload(tail - record.PayloadBytes(), record, s);
    head += record.HeadBytes();
    tail -= record.PayloadBytes();
    return true;
}

bool BufferToString(unsigned char*& head, unsigned char*& tail, UnicodeString& s) {
    s = UnicodeString();
    const std::uint64_t size = head < tail ? static_cast<std::uint64_t>(tail - head) : 0;
    TRecord record;
    DWORD error = ReadHead(head, size, record);
    if (error == 0) error = ReadPayload(tail - record.PayloadBytes(), record, s);
    if (error != 0) return Fail(error);
    head += record.HeadBytes();
    tail -= record.PayloadBytes();
    SetLastError(0);
    return true;
}

}  // namespace System
