#include "log_file/log_format.h"
#include "log_file/log_record.h"

#include <cstring>

namespace Mox {

namespace {

constexpr auto kRecordCodePage = System::kCodePageAnsi;  // stored as UTF-8

// Writes to a cursor, or only counts when there is none.
class TByteWriter {
  public:
    explicit TByteWriter(void** cursor) : cursor_(cursor) {}

    void Put(const void* bytes, std::size_t size) {
        if (void* at = Room(size); at != nullptr && size > 0) std::memcpy(at, bytes, size);
    }
    // A tag with the narrowest width that holds the number, then the number.
    void PutTagged(std::uint8_t kind, std::uint32_t number) {
        const unsigned width = number < 0x100 ? 1 : number < 0x10000 ? 2 : 4;
        const auto tag = static_cast<std::uint8_t>(kind | width);
        Put(&tag, 1);
        Put(&number, width);
    }
    // Space for `size` bytes that the caller fills; null when only counting.
    void* Room(std::size_t size) {
        size_ += static_cast<std::int64_t>(size);
        if (cursor_ == nullptr) return nullptr;
        void* at = *cursor_;
        *cursor_ = static_cast<char*>(at) + size;
        return at;
    }
    std::int64_t Size() const { return size_; }

  private:
    void** cursor_;
    std::int64_t size_ = 0;
};

void PutConverted(TByteWriter& out, const UnicodeString& s, TLogEncoding encoding) {
    const UINT code_page = encoding == TLogEncoding::Ansi ? CP_ACP : CP_UTF8;
    const int bytes = s.Length() == 0 ? 0
                                      : WideCharToMultiByte(code_page, 0, s.t_str(), s.Length(),
                                                            nullptr, 0, nullptr, nullptr);
    if (bytes <= 0) {
        out.Put(&kEmptyStringTag, 1);
        return;
    }
    out.PutTagged(static_cast<std::uint8_t>(encoding), static_cast<std::uint32_t>(bytes));
    if (auto* at = static_cast<char*>(out.Room(static_cast<std::size_t>(bytes)))) {
        WideCharToMultiByte(code_page, 0, s.t_str(), s.Length(), at, bytes, nullptr, nullptr);
    }
}

void PutUnits(TByteWriter& out, const UnicodeString& s, TLogEncoding encoding) {
    const int count = s.Length();
    if (count == 0) {
        out.Put(&kEmptyStringTag, 1);
        return;
    }
    out.PutTagged(static_cast<std::uint8_t>(encoding), static_cast<std::uint32_t>(count));
    auto* at = static_cast<std::uint8_t*>(out.Room(static_cast<std::size_t>(count) * 2));
    if (at == nullptr) return;
    const bool swap = encoding == TLogEncoding::Utf16BigEndian;
    for (int i = 0; i < count; ++i, at += 2) {
        const auto unit = static_cast<std::uint16_t>(s.t_str()[i]);
        at[swap ? 1 : 0] = static_cast<std::uint8_t>(unit & 0xFF);
        at[swap ? 0 : 1] = static_cast<std::uint8_t>(unit >> 8);
    }
}

void PutString(TByteWriter& out, const UnicodeString& s, System::TCodePage code_page) {
    switch (code_page) {
        case System::kCodePageUtf16:
            return PutUnits(out, s, TLogEncoding::Utf16);
        case System::kCodePageUtf16BigEndian:
            return PutUnits(out, s, TLogEncoding::Utf16BigEndian);
        case System::kCodePageAscii:
            return PutConverted(out, s, TLogEncoding::Ansi);
        default:
            return PutConverted(out, s, TLogEncoding::Utf8);
    }
}

std::size_t BlockSize(const TLogMsg& msg) {
    const auto size = static_cast<std::int64_t>(msg.dataSize);
    return static_cast<std::size_t>(size < 0 ? -size : size);
}

void PutVariablePart(TByteWriter& out, const TLogMsg& msg) {
    PutString(out, msg.source, kRecordCodePage);
    PutString(out, msg.text, kRecordCodePage);
    if (msg.dataLabel.Length() == 0 && msg.dataSize == 0) return;
    PutString(out, msg.dataLabel, kRecordCodePage);
    if (msg.data != nullptr) out.Put(msg.data, BlockSize(msg));
}

std::int64_t VariableSize(const TLogMsg& msg) {
    TByteWriter measure(nullptr);
    PutVariablePart(measure, msg);
    return measure.Size();
}

TLogRecordFixed FixedPart(const TLogMsg& msg) {
    TLogRecordFixed fixed{};
    std::memcpy(&fixed.time, &msg.time, sizeof(fixed.time));
    fixed.level = msg.level;
    fixed.process_id = msg.processId;
    fixed.thread_id = msg.threadId;
    fixed.session_id = msg.sessionId;
    fixed.line = msg.line;
    return fixed;
}

std::int64_t RecordSize(std::int64_t variable_size) {
    const int width = variable_size < 0x100 ? 1 : variable_size < 0x10000 ? 2 : 4;
    return 1 + width + std::int64_t{kRecordFixedSize} + variable_size;
}

}  // namespace

int WriteUnicodeString(void** cursor, UnicodeString s, System::TCodePage codePage) {
    TByteWriter out(cursor);
    PutString(out, s, codePage);
    return static_cast<int>(out.Size());
}

std::int64_t LogMsgSize(const TLogMsg& msg) {
    return RecordSize(VariableSize(msg));
}

int WriteLogMsg(void** cursor, TLogMsg* msg) {
    const std::int64_t variable_size = VariableSize(*msg);
    const std::int64_t size = RecordSize(variable_size);
    if (size > INT32_MAX) return 0;
    if (cursor == nullptr) return static_cast<int>(size);
    TByteWriter out(cursor);
    const TLogRecordFixed fixed = FixedPart(*msg);
    out.PutTagged(kRecordTag, static_cast<std::uint32_t>(variable_size));
    out.Put(&fixed, sizeof(fixed));
    PutVariablePart(out, *msg);
    return static_cast<int>(out.Size());
}

}  // namespace Mox
