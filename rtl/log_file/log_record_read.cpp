#include "log_file/log_record.h"

#include <cstring>
#include <vector>

#include "log_file/byte_cursor.h"
#include "log_file/log_format.h"
#include "log_file/log_report.h"
#include "log_file/log_ring.h"
#include "mox_classes/text/utf8_text.h"

namespace Mox {

namespace {

enum class TStringFault { None, Tag, CodePage, Length };

struct TStringRead {
    TStringFault fault = TStringFault::None;
    std::uint8_t tag = 0;
    UnicodeString text;
};

std::size_t UnitSize(TLogEncoding encoding) {
    switch (encoding) {
        case TLogEncoding::Utf8:
            return 1;
        case TLogEncoding::Utf16:
        case TLogEncoding::Utf16BigEndian:
            return 2;
        case TLogEncoding::Utf32:
        case TLogEncoding::Utf32BigEndian:
            return 4;
        default:
            return 0;
    }
}

UnicodeString FromUtf16(const std::uint8_t* bytes, int count, bool big_endian) {
    UnicodeString text;
    text.SetLength(count);
    WCHAR* out = text.data();
    for (int i = 0; i < count; ++i, bytes += 2) {
        const unsigned unit = big_endian ? bytes[0] << 8U | bytes[1] : bytes[1] << 8U | bytes[0];
        out[i] = static_cast<WCHAR>(unit);
    }
    return text;
}

UnicodeString FromUtf32(const std::uint8_t* bytes, int count, bool big_endian) {
    std::vector<unsigned int> points(static_cast<std::size_t>(count));
    for (unsigned int& point : points) {
        const unsigned b0 = bytes[0], b1 = bytes[1], b2 = bytes[2], b3 = bytes[3];
        point = big_endian ? b0 << 24U | b1 << 16U | b2 << 8U | b3
                           : b3 << 24U | b2 << 16U | b1 << 8U | b0;
        bytes += 4;
    }
    return UnicodeString(points.data(), count);
}

UnicodeString Characters(TLogEncoding encoding, const std::uint8_t* bytes, int count) {
    switch (encoding) {
        case TLogEncoding::Utf8:
            return System::StringFromUtf8(reinterpret_cast<const char*>(bytes), count);
        case TLogEncoding::Utf16:
            return FromUtf16(bytes, count, false);
        case TLogEncoding::Utf16BigEndian:
            return FromUtf16(bytes, count, true);
        case TLogEncoding::Utf32:
            return FromUtf32(bytes, count, false);
        default:
            return FromUtf32(bytes, count, true);
    }
}

TStringFault ReadString(TByteCursor& in, std::uint8_t tag, UnicodeString& text) {
    const unsigned width = tag & kTagWidth;
    if (width != 1 && width != 2 && width != 4) return TStringFault::Tag;
    const auto encoding = static_cast<TLogEncoding>(tag & kTagKind);
    std::uint32_t count = 0;
    if (!in.Take(&count, width)) return TStringFault::Length;
    const std::size_t unit_size = UnitSize(encoding);
    if (unit_size == 0) return TStringFault::CodePage;
    if (count > INT32_MAX || count > in.Left() / unit_size) return TStringFault::Length;
    if (count > 0) text = Characters(encoding, in.At(), static_cast<int>(count));
    in.Skip(count * unit_size);
    return TStringFault::None;
}

// A string at the cursor; one that is malformed takes one byte.
TStringRead NextString(TByteCursor& in) {
    TStringRead result;
    if (!in.Take(&result.tag, 1)) {
        result.fault = TStringFault::Length;
        return result;
    }
    if (result.tag == kEmptyStringTag) return result;
    TByteCursor behind_tag = in;
    result.fault = ReadString(behind_tag, result.tag, result.text);
    if (result.fault == TStringFault::None) in = behind_tag;
    return result;
}

void ReportTag(const WCHAR* function, std::uint8_t tag) {
    log_file::Report(__builtin_LINE(), log_file::TReportTexts::Translated, log_file::kInvalidTag,
                     function, tag);
}

void ReportString(const TStringRead& read) {
    constexpr const WCHAR* kFunction = TEXT("ReadUnicodeString()");
    if (read.fault == TStringFault::CodePage) {
        log_file::Report(__builtin_LINE(), log_file::TReportTexts::Translated,
                         log_file::kInvalidCodePage, kFunction, read.tag & kTagKind);
    } else if (read.fault != TStringFault::None) {
        ReportTag(kFunction, read.tag);
    }
}

using TStringObserver = void (*)(const TStringRead& read);

// Reads the part behind tag and length; the first fault of its strings.
TStringFault ReadBody(TLogMsg& msg, TByteCursor in, TStringObserver observe) {
    TStringFault first = TStringFault::None;
    const auto read = [&](UnicodeString& field) {
        const TStringRead string = NextString(in);
        field = string.text;
        if (first == TStringFault::None) first = string.fault;
        if (observe != nullptr) observe(string);
    };
    msg.data = nullptr;
    msg.dataSize = 0;
    msg.dataLabel = UnicodeString();
    TLogRecordFixed fixed{};
    if (!in.Take(&fixed, sizeof(fixed))) return TStringFault::Length;
    std::memcpy(&msg.time, &fixed.time, sizeof(msg.time));
    msg.level = fixed.level;
    msg.processId = fixed.process_id;
    msg.threadId = fixed.thread_id;
    msg.sessionId = fixed.session_id;
    msg.line = fixed.line;
    read(msg.source);
    read(msg.text);
    if (in.Left() == 0) return first;
    read(msg.dataLabel);
    if (in.Left() > 0 && in.Left() <= INT32_MAX) {
        msg.data = const_cast<std::uint8_t*>(in.At());
        msg.dataSize = -static_cast<int>(in.Left());
        msg.ImportBinData();
    }
    return first;
}

// The caller of a bare cursor vouches for the memory behind it.
constexpr std::size_t kNoBound = PTRDIFF_MAX;

void Advance(void** cursor, std::size_t bytes) {
    *cursor = static_cast<std::uint8_t*>(*cursor) + bytes;
}

}  // namespace

UnicodeString ReadUnicodeString(void** cursor) {
    TByteCursor in(*cursor, kNoBound);
    const TStringRead read = NextString(in);
    ReportString(read);
    Advance(cursor, kNoBound - in.Left());
    return read.text;
}

int ReadLogMsg(TLogMsg* msg, void** cursor) {
    const auto* bytes = static_cast<const std::uint8_t*>(*cursor);
    const std::size_t head_size = std::size_t{1} + (bytes[0] & kTagWidth);
    // What is no tag of a record is not read past; LogRecordSize looks at the tag first.
    const std::uint64_t size = LogRecordSize({bytes, head_size});
    if (size == 0 || size > INT32_MAX) {
        ReportTag(TEXT("ReadLogMsg()"), bytes[0]);
        Advance(cursor, 1);
        return 1;
    }
    Advance(cursor, head_size);
    ReadLogMsg(msg, cursor, static_cast<int>(size - head_size));
    return static_cast<int>(size);
}

int ReadLogMsg(TLogMsg* msg, void** cursor, int size) {
    const auto bytes = static_cast<std::size_t>(size < 0 ? 0 : size);
    ReadBody(*msg, TByteCursor(*cursor, bytes), ReportString);
    Advance(cursor, bytes);
    return size;
}

const WCHAR* DecodeLogMsg(TLogMsg& msg, const void* record, std::size_t size) {
    const auto* bytes = static_cast<const std::uint8_t*>(record);
    const std::uint64_t own_size = LogRecordSize({bytes, size});
    if (own_size == 0) return TEXT("no record begins here");
    if (own_size != size) return TEXT("the record's length does not fit its slot");
    const std::size_t head_size = std::size_t{1} + (bytes[0] & kTagWidth);
    switch (ReadBody(msg, TByteCursor(bytes + head_size, size - head_size), nullptr)) {
        case TStringFault::None:
            return nullptr;
        case TStringFault::Tag:
            return TEXT("a string's tag is invalid");
        case TStringFault::CodePage:
            return TEXT("a string's encoding is not known");
        default:
            return TEXT("a string passes the end of the record");
    }
}

}  // namespace Mox
