// Formatting into strings.
//
// The text is made in a buffer on the stack first. One pass is enough for most texts, and an
// argument may be a part of the string that receives the result.
#include <windows.h>

#include <cstdarg>
#include <cwchar>

#include "mox_classes/text/unicode_string.h"
#include "mox_classes/units/unit_copy.h"

namespace System {

namespace {

constexpr int kStackUnits = 512;

// Returns a negative number when the text does not fit. A text of exactly `room` units is not
// terminated.
int FormatInto(WCHAR* buffer, int room, const WCHAR* format, va_list arguments) {
    va_list again;
    va_copy(again, arguments);
    const int count = _vsnwprintf(buffer, static_cast<std::size_t>(room), format, again);
    va_end(again);
    return count > room && buffer != nullptr ? -1 : count;
}

// Used for a text that does not fit the stack buffer. It asks the formatter for the size; when the
// formatter cannot tell, it tries larger and larger buffers.
UnicodeString FormatLong(const WCHAR* format, va_list arguments) {
    UnicodeString text;
    const int size = FormatInto(nullptr, 0, format, arguments);
    long long trial = size >= 0 ? size : 16;
    for (;;) {
        if (size < 0) trial *= 2;
        text.SetLength(trial);
        const int count = FormatInto(text.data(), static_cast<int>(trial) + 1, format, arguments);
        if (count >= 0 && count <= trial) {
            text.SetLength(count);
            return text;
        }
        if (size >= 0) return UnicodeString();
    }
}

}  // namespace

int UnicodeString::vprintf(const WCHAR* format, va_list arguments) {
    if (format == nullptr) format = kEmpty;
    WCHAR buffer[kStackUnits];
    const int count = FormatInto(buffer, kStackUnits, format, arguments);
    if (count < 0) {
        UnicodeString text = FormatLong(format, arguments);
        swap(text);
        return Length();
    }
    Resize(count);
    CopyUnits(data_, buffer, count);
    return count;
}

int UnicodeString::cat_vprintf(const WCHAR* format, va_list arguments) {
    if (format == nullptr) return 0;
    WCHAR buffer[kStackUnits];
    const int count = FormatInto(buffer, kStackUnits, format, arguments);
    if (count < 0) {
        const UnicodeString text = FormatLong(format, arguments);
        *this += text;
        return text.Length();
    }
    if (count > 0) {
        const int old_length = Length();
        if (count > 2147483647 - old_length) throw UnicodeString("Integer overflow!");
        Resize(old_length + count);
        CopyUnits(data_ + old_length, buffer, count);
    }
    return count;
}

int UnicodeString::printf_passed(const WCHAR* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int count = vprintf(format, arguments);
    va_end(arguments);
    return count;
}

int UnicodeString::cat_printf_passed(const WCHAR* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int count = cat_vprintf(format, arguments);
    va_end(arguments);
    return count;
}

}  // namespace System
