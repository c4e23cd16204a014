#include "text/utf8.h"

#include <type_traits>

#include "text/text_shuffle.h"
#include "text/text_vector.h"

namespace host {

namespace {

constexpr char32_t kReplacement = 0xFFFD;
constexpr char32_t kIllFormed = 0xFFFFFFFF;

// The state of a conversion: the rest of the text and the rest of the buffer. Each step converts as
// much as it can, and moves both. At the end nothing is written behind the result.
template <class From, class To>
struct Course {
    const From* at;
    const From* end;
    To* out;
    To* out_end;

    std::size_t Left() const { return static_cast<std::size_t>(end - at); }
    std::size_t Room() const { return static_cast<std::size_t>(out_end - out); }
    void Move(std::size_t from, std::size_t to) {
        at += from;
        out += to;
    }
};
using Decoding = Course<char, WCHAR>;
using Encoding = Course<WCHAR, char>;

template <class Unit>
bool IsAscii(Unit unit) {
    return static_cast<std::make_unsigned_t<Unit>>(unit) < 0x80;
}

unsigned Byte(char byte) {
    return static_cast<unsigned char>(byte);
}

// Decodes the sequence at `position` and moves past it. For an ill-formed sequence it moves past
// the longest prefix that could start a valid one, at least one byte.
char32_t DecodeUtf8(std::string_view text, std::size_t& position) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char lead = byte(position++);
    if (lead < 0x80) return lead;
    if (lead < 0xC2 || lead > 0xF4) return kIllFormed;
    const int following = lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
    unsigned char low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    unsigned char high = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    char32_t code = lead & (0x3Fu >> following);
    for (int i = 0; i < following; ++i, low = 0x80, high = 0xBF) {
        if (position == text.size() || byte(position) < low || byte(position) > high) {
            return kIllFormed;
        }
        code = code << 6 | (byte(position++) & 0x3Fu);
    }
    return code;
}

char32_t DecodeUtf16(std::basic_string_view<WCHAR> text, std::size_t& position) {
    const WCHAR unit = text[position++];
    if (unit < 0xD800 || unit > 0xDFFF) return unit;
    if (unit > 0xDBFF || position == text.size()) return kIllFormed;
    const WCHAR trail = text[position];
    if (trail < 0xDC00 || trail > 0xDFFF) return kIllFormed;
    ++position;
    return 0x10000 + ((unit - 0xD800u) << 10) + (trail - 0xDC00u);
}

// The smallest number of units that `left` bytes can become: no character and no ill-formed part
// has more than three bytes per unit.
constexpr std::size_t FewestUnits(std::size_t left) {
    return left / 3;
}

void DecodeAscii(Decoding& course) {
    while (course.Room() >= kAsciiStep && FewestUnits(course.Left()) >= kAsciiStep) {
        const std::size_t run = WidenAscii(course.at, course.out);
        course.Move(run, run);
        if (run < kAsciiStep) return;
    }
    while (course.Room() >= kAsciiStep && course.Left() >= kAsciiStep &&
           AsciiPrefix(course.at) == kAsciiStep) {
        WidenAscii(course.at, course.out);
        course.Move(kAsciiStep, kAsciiStep);
    }
}

void DecodeUpToTwoBytes(Decoding& course) {
    if (CanShuffle()) {
        const Progress done = DecodeShuffled(course.at, course.Left(), course.out, course.Room());
        course.Move(done.read, done.written);
    }
    while (course.Left() > 0 && course.Room() > 0 && IsAscii(*course.at)) {
        *course.out = static_cast<WCHAR>(*course.at);
        course.Move(1, 1);
    }
    while (course.Left() >= 2 && course.Room() > 0) {
        const unsigned lead = Byte(course.at[0]);
        const unsigned trail = Byte(course.at[1]);
        if (lead < 0xC2 || lead > 0xDF || (trail & 0xC0) != 0x80) return;
        *course.out = static_cast<WCHAR>((lead & 0x1F) << 6 | (trail & 0x3F));
        course.Move(2, 1);
    }
}

void DecodeThreeByte(Decoding& course) {
    while (course.Left() >= kCjkBytes && course.Room() >= kCjkUnits &&
           DecodeCjk(course.at, course.out)) {
        course.Move(3 * kCjkUnits, kCjkUnits);
    }
}

// Runs of characters of one length, as far as they are well-formed and fit.
void ConvertRun(Decoding& course) {
    if (IsAscii(*course.at)) DecodeAscii(course);
    if (course.Left() == 0) return;
    if (Byte(*course.at) < 0xE0) {
        DecodeUpToTwoBytes(course);
    } else {
        DecodeThreeByte(course);
    }
}

void EncodeAscii(Encoding& course) {
    while (course.Left() >= kAsciiStep && course.Room() >= kAsciiStep) {
        const std::size_t run = NarrowAscii(course.at, course.out);
        course.Move(run, run);
        if (run < kAsciiStep) return;
    }
}

void EncodeUpToTwoBytes(Encoding& course) {
    if (CanShuffle()) {
        const Progress done = EncodeShuffled(course.at, course.Left(), course.out, course.Room());
        course.Move(done.read, done.written);
    }
    while (course.Left() > 0 && course.Room() > 0 && IsAscii(*course.at)) {
        *course.out = static_cast<char>(*course.at);
        course.Move(1, 1);
    }
    while (course.Left() > 0 && course.Room() >= 2) {
        const unsigned unit = *course.at;
        if (unit < 0x80 || unit >= 0x800) return;
        course.out[0] = static_cast<char>(0xC0 | unit >> 6);
        course.out[1] = static_cast<char>(0x80 | (unit & 0x3F));
        course.Move(1, 2);
    }
}

void EncodeThreeByte(Encoding& course) {
    // Each step writes more bytes than it needs. The four units behind, which are converted next,
    // overwrite them.
    while (course.Left() >= 2 * kCjkUnits && course.Room() >= kCjkBytes &&
           EncodeCjk(course.at, course.out)) {
        course.Move(kCjkUnits, 3 * kCjkUnits);
    }
}

void ConvertRun(Encoding& course) {
    if (IsAscii(*course.at)) EncodeAscii(course);
    if (course.Left() == 0) return;
    if (*course.at < 0x800) {
        EncodeUpToTwoBytes(course);
    } else {
        EncodeThreeByte(course);
    }
}

char32_t DecodeNext(Decoding& course) {
    std::size_t used = 0;
    const char32_t code = DecodeUtf8({course.at, course.Left()}, used);
    course.at += used;
    return code;
}

char32_t DecodeNext(Encoding& course) {
    std::size_t used = 0;
    const char32_t code = DecodeUtf16({course.at, course.Left()}, used);
    course.at += used;
    return code;
}

std::size_t SizeOf(char32_t code, const WCHAR* /*unit*/) {
    return code < 0x10000 ? 1 : 2;
}

std::size_t SizeOf(char32_t code, const char* /*unit*/) {
    return code < 0x80 ? 1 : code < 0x800 ? 2 : code < 0x10000 ? 3 : 4;
}

void Put(char32_t code, std::size_t size, WCHAR* place) {
    if (size == 1) {
        *place = static_cast<WCHAR>(code);
    } else {
        place[0] = static_cast<WCHAR>(0xD800 + ((code - 0x10000) >> 10));
        place[1] = static_cast<WCHAR>(0xDC00 + ((code - 0x10000) & 0x3FF));
    }
}

void Put(char32_t code, std::size_t size, char* place) {
    for (std::size_t i = size - 1; i > 0; --i, code >>= 6) {
        place[i] = static_cast<char>(0x80 | (code & 0x3F));
    }
    constexpr unsigned char kLead[] = {0, 0x00, 0xC0, 0xE0, 0xF0};
    place[0] = static_cast<char>(kLead[size] | code);
}

template <class From, class To>
Conversion Write(Course<From, To> course, bool strict) {
    To* const buffer = course.out;
    while (course.Left() > 0) {
        const From* const before = course.at;
        ConvertRun(course);
        if (course.at != before) continue;
        char32_t code = DecodeNext(course);
        if (code == kIllFormed && strict) return {0, ERROR_NO_UNICODE_TRANSLATION};
        if (code == kIllFormed) code = kReplacement;
        const std::size_t size = SizeOf(code, course.out);
        if (course.Room() < size) return {0, ERROR_INSUFFICIENT_BUFFER};
        Put(code, size, course.out);
        course.out += size;
    }
    return {static_cast<std::size_t>(course.out - buffer), NO_ERROR};
}

template <class From, class To>
Conversion Count(Course<From, To> course, bool strict) {
    std::size_t length = 0;
    while (course.Left() > 0) {
        const std::size_t ascii = course.Left() >= kAsciiStep ? AsciiPrefix(course.at) : 0;
        length += ascii;
        course.at += ascii;
        if (ascii == kAsciiStep) continue;
        char32_t code = DecodeNext(course);
        if (code == kIllFormed && strict) return {0, ERROR_NO_UNICODE_TRANSLATION};
        if (code == kIllFormed) code = kReplacement;
        length += SizeOf(code, course.out);
    }
    return {length, NO_ERROR};
}

template <class From, class To>
Conversion Convert(std::basic_string_view<From> text, To* buffer, std::size_t size, bool strict) {
    const Course<From, To> course{text.data(), text.data() + text.size(), buffer,
                                  buffer == nullptr ? nullptr : buffer + size};
    return buffer == nullptr ? Count(course, strict) : Write(course, strict);
}

}  // namespace

Conversion Utf8ToWide(std::string_view text, WCHAR* buffer, std::size_t size, bool strict) {
    return Convert(text, buffer, size, strict);
}

Conversion WideToUtf8(std::basic_string_view<WCHAR> text, char* buffer, std::size_t size,
                      bool strict) {
    return Convert(text, buffer, size, strict);
}

}  // namespace host
