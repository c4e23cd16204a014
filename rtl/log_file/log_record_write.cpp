#include "log_file/log_format.h"
#include "log_file/log_record.h"

#include <cstring>

namespace Mox {

namespace {

class TByteWriter {
  public:
    explicit TByteWriter(void* target) : at_(static_cast<std::uint8_t*>(target)) {}

    void Put(const void* bytes, std::size_t size) {
        if (size > 0) std::memcpy(Room(size), bytes, size);
    }
    void PutTagged(std::uint8_t kind, std::uint32_t number) {
        const auto tag = static_cast<std::uint8_t>(kind | WidthOf(number));
        Put(&tag, 1);
        Put(&number, WidthOf(number));
    }
    // Space for `size` bytes that the caller fills.
    std::uint8_t* Room(std::size_t size) {
        at_ += size;
        return at_ - size;
    }
    // The narrowest width that holds the number.
    static unsigned WidthOf(std::int64_t number) {
        return number < 0x100 ? 1 : number < 0x10000 ? 2 : 4;
    }

  private:
    std::uint8_t* at_;
};

// How a string is stored and what the file counts for it. To count takes a conversion, so it is
// done once, before the size of the whole is known.
struct TStoredForm {
    TLogEncoding encoding;
    std::uint32_t count;  // 0: the empty string

    UINT CodePage() const { return encoding == TLogEncoding::Ansi ? CP_ACP : CP_UTF8; }
    bool IsConverted() const {
        return encoding == TLogEncoding::Ansi || encoding == TLogEncoding::Utf8;
    }
    std::int64_t Size() const {
        const std::int64_t bytes = IsConverted() ? count : std::int64_t{2} * count;
        return count == 0 ? 1 : 1 + TByteWriter::WidthOf(count) + bytes;
    }
};

TStoredForm FormOf(const UnicodeString& s, TLogEncoding encoding) {
    TStoredForm form{encoding, static_cast<std::uint32_t>(s.Length())};
    if (form.count == 0 || !form.IsConverted()) return form;
    const int bytes = WideCharToMultiByte(form.CodePage(), 0, s.t_str(), s.Length(), nullptr, 0,
                                          nullptr, nullptr);
    form.count = static_cast<std::uint32_t>(bytes < 0 ? 0 : bytes);
    return form;
}

TStoredForm FormOf(const UnicodeString& s, System::TCodePage code_page) {
    switch (code_page) {
        case System::kCodePageUtf16:
            return FormOf(s, TLogEncoding::Utf16);
        case System::kCodePageUtf16BigEndian:
            return FormOf(s, TLogEncoding::Utf16BigEndian);
        case System::kCodePageAscii:
            return FormOf(s, TLogEncoding::Ansi);
        default:
            return FormOf(s, TLogEncoding::Utf8);
    }
}

bool PutUnits(TByteWriter& out, const UnicodeString& s, bool swap) {
    std::uint8_t* at = out.Room(static_cast<std::size_t>(s.Length()) * 2);
    for (int i = 0; i < s.Length(); ++i, at += 2) {
        const auto unit = static_cast<std::uint16_t>(s.t_str()[i]);
        at[swap ? 1 : 0] = static_cast<std::uint8_t>(unit & 0xFF);
        at[swap ? 0 : 1] = static_cast<std::uint8_t>(unit >> 8);
    }
    return true;
}

// False when the string does not take what its form says.
bool PutString(TByteWriter& out, const UnicodeString& s, TStoredForm form) {
    if (form.count == 0) {
        out.Put(&kEmptyStringTag, 1);
        return true;
    }
    out.PutTagged(static_cast<std::uint8_t>(form.encoding), form.count);
    if (!form.IsConverted()) return PutUnits(out, s, form.encoding == TLogEncoding::Utf16BigEndian);
    const auto count = static_cast<int>(form.count);
    auto* at = reinterpret_cast<char*>(out.Room(form.count));
    const int written =
        WideCharToMultiByte(form.CodePage(), 0, s.t_str(), s.Length(), at, count, nullptr, nullptr);
    if (written == count) return true;
    // What the block held before must not get into the file.
    std::memset(at, '?', form.count);
    return false;
}

std::size_t BlockSize(const TLogMsg& msg) {
    const auto size = static_cast<std::int64_t>(msg.dataSize);
    return msg.data == nullptr ? 0 : static_cast<std::size_t>(size < 0 ? -size : size);
}

bool HasLabel(const TLogMsg& msg) {
    return msg.dataLabel.Length() != 0 || msg.dataSize != 0;
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

TStoredForm Utf8(std::uint32_t bytes) {
    return {TLogEncoding::Utf8, bytes};
}

}  // namespace

int WriteUnicodeString(void** cursor, UnicodeString s, System::TCodePage codePage) {
    const TStoredForm form = FormOf(s, codePage);
    const auto size = static_cast<int>(form.Size());
    if (cursor == nullptr) return size;
    TByteWriter out(*cursor);
    PutString(out, s, form);
    *cursor = static_cast<std::uint8_t*>(*cursor) + size;
    return size;
}

TMeasuredRecord::TMeasuredRecord(const TLogMsg& msg, TStrings strings) : msg_(msg) {
    const auto measure = [&](const UnicodeString& s) {
        return strings == TStrings::Measured ? FormOf(s, TLogEncoding::Utf8).count
                                             : static_cast<std::uint32_t>(s.Length());
    };
    source_ = measure(msg.source);
    text_ = measure(msg.text);
    label_ = measure(msg.dataLabel);
}

std::int64_t TMeasuredRecord::VariableSize() const {
    const std::int64_t strings = Utf8(source_).Size() + Utf8(text_).Size();
    if (!HasLabel(msg_)) return strings;
    return strings + Utf8(label_).Size() + static_cast<std::int64_t>(BlockSize(msg_));
}

std::int64_t TMeasuredRecord::Size() const {
    const std::int64_t variable = VariableSize();
    return 1 + TByteWriter::WidthOf(variable) + std::int64_t{kRecordFixedSize} + variable;
}

bool TMeasuredRecord::Write(void* target) const {
    TByteWriter out(target);
    const TLogRecordFixed fixed = FixedPart(msg_);
    out.PutTagged(kRecordTag, static_cast<std::uint32_t>(VariableSize()));
    out.Put(&fixed, sizeof(fixed));
    if (!PutString(out, msg_.source, Utf8(source_)) || !PutString(out, msg_.text, Utf8(text_))) {
        return false;
    }
    if (!HasLabel(msg_)) return true;
    if (!PutString(out, msg_.dataLabel, Utf8(label_))) return false;
    out.Put(msg_.data, BlockSize(msg_));
    return true;
}

int WriteLogMsg(void** cursor, TLogMsg* msg) {
    const TMeasuredRecord record(*msg);
    if (record.Size() > INT32_MAX) return 0;
    const auto size = static_cast<int>(record.Size());
    if (cursor == nullptr) return size;
    record.Write(*cursor);
    *cursor = static_cast<std::uint8_t*>(*cursor) + size;
    return size;
}

}  // namespace Mox
