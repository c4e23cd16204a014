// The counted wide formatter with the conversions of the Windows C runtime: "%s" and "%ls" take
// wide text, "%hs" and "%S" narrow text, a long has 32 bits, a long double is a double.
#include <windows.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <string>

#include <locale.h>

#include "text/code_page.h"
#include "text/host_text.h"
#include "text/text_vector.h"

using namespace host;

namespace {

// Counts every unit, writes those that fit.
class Output {
  public:
    Output(WCHAR* buffer, std::size_t size) : buffer_(buffer), size_(size) {}

    void Put(WCHAR unit) {
        if (count_ < size_) buffer_[count_] = unit;
        ++count_;
    }
    template <class Unit>
    void Put(std::basic_string_view<Unit> text) {
        if (count_ < size_) {
            std::copy_n(text.data(), std::min(text.size(), size_ - count_), buffer_ + count_);
        }
        count_ += text.size();
    }
    void Fill(WCHAR unit, std::size_t times) {
        for (std::size_t i = count_; i < size_ && i - count_ < times; ++i) buffer_[i] = unit;
        count_ += times;
    }
    std::size_t Count() const { return count_; }

  private:
    WCHAR* buffer_;
    std::size_t size_;
    std::size_t count_ = 0;
};

enum class Size { Char, Short, Int, Long64, Wide };

// One conversion of a format text.
struct Conversion {
    bool left = false, sign = false, blank = false, alternate = false, zero = false;
    int width = 0;
    int precision = -1;
    Size size = Size::Int;
    WCHAR letter = 0;
};

// The digits of a number, without leading zeros; a 0 has one.
class Digits {
  public:
    std::string_view Write(unsigned long long value, unsigned base, WCHAR letter) {
        // The compiler turns a division by a constant into a multiplication.
        if (base == 10) return WriteDecimal(value);
        if (base == 8) return Write<8>(value, kUpper);
        return Write<16>(value, letter == u'x' ? kLower : kUpper);
    }

    // Two digits for each division, because each division waits for the one before.
    template <class Number>
    std::string_view WriteDecimal(Number value) {
        char* const end = text_ + sizeof text_;
        char* start = end;
        for (; value >= 10; value /= 100) {
            const auto pair = static_cast<unsigned>(value % 100);
            *--start = static_cast<char>('0' + pair % 10);
            *--start = static_cast<char>('0' + pair / 10);
        }
        if (value != 0 || start == end) *--start = static_cast<char>('0' + value);
        return {start, static_cast<std::size_t>(end - start)};
    }

  private:
    static constexpr const char* kUpper = "0123456789ABCDEF";
    static constexpr const char* kLower = "0123456789abcdef";

    template <unsigned base>
    std::string_view Write(unsigned long long value, const char* digits) {
        char* const end = text_ + sizeof text_;
        char* start = end;
        do {
            *--start = digits[value % base];
            value /= base;
        } while (value != 0);
        return {start, static_cast<std::size_t>(end - start)};
    }

    char text_[24];
};

struct Arguments {
    std::va_list list;
};

class Formatter {
  public:
    Formatter(Output& output, const WCHAR* format, Arguments& arguments)
        : output_(output), next_(format), arguments_(arguments) {}

    void Run() {
        while (*next_ != 0) {
            if (*next_ != u'%') {
                output_.Put(*next_++);
                continue;
            }
            ++next_;
            if (WritePlain()) continue;
            Conversion conversion = Parse();
            if (conversion.letter != 0) Write(conversion);
        }
    }

  private:
    // Plain "%s" and "%d", the most common conversions, in half the time of the general code.
    bool WritePlain() {
        if (*next_ == u's') {
            const auto* text = va_arg(arguments_.list, const WCHAR*);
            output_.Put(text == nullptr ? WideView(u"(null)")
                                        : WideView(text, UnitsBeforeZero(text)));
        } else if (*next_ == u'd') {
            const int value = va_arg(arguments_.list, int);
            if (value < 0) output_.Put(u'-');
            const auto bits = static_cast<unsigned>(value);
            Digits digits;
            output_.Put(digits.WriteDecimal(value < 0 ? 0 - bits : bits));
        } else {
            return false;
        }
        ++next_;
        return true;
    }

    Conversion Parse() {
        Conversion c;
        for (;; ++next_) {
            if (*next_ == u'-')
                c.left = true;
            else if (*next_ == u'+')
                c.sign = true;
            else if (*next_ == u' ')
                c.blank = true;
            else if (*next_ == u'#')
                c.alternate = true;
            else if (*next_ == u'0')
                c.zero = true;
            else
                break;
        }
        c.width = Number();
        if (c.width < 0) {
            c.left = true;
            c.width = c.width == INT_MIN ? INT_MAX : -c.width;
        }
        if (*next_ == u'.') {
            ++next_;
            c.precision = Number();
        }
        ParseSize(c);
        c.letter = *next_;
        if (c.letter != 0) ++next_;
        return c;
    }

    int Number() {
        if (*next_ == u'*') {
            ++next_;
            return va_arg(arguments_.list, int);
        }
        int value = 0;
        for (; *next_ >= u'0' && *next_ <= u'9'; ++next_) {
            value = value > INT_MAX / 10 - 1 ? INT_MAX / 10 : value * 10 + (*next_ - u'0');
        }
        return value;
    }

    bool Skip(const char16_t* text) {
        const WideView prefix(text);
        for (std::size_t i = 0; i < prefix.size(); ++i) {
            if (next_[i] != prefix[i]) return false;
        }
        next_ += prefix.size();
        return true;
    }

    void ParseSize(Conversion& c) {
        if (WideView(u"IlhwLjzt").find(*next_) == WideView::npos) return;
        struct Row {
            const char16_t* prefix;
            Size size;
        };
        static constexpr Row kRows[] = {
            {u"I64", Size::Long64}, {u"I32", Size::Int},  {u"I", Size::Long64},
            {u"ll", Size::Long64},  {u"l", Size::Wide},   {u"hh", Size::Char},
            {u"h", Size::Short},    {u"w", Size::Wide},   {u"L", Size::Int},
            {u"j", Size::Long64},   {u"z", Size::Long64}, {u"t", Size::Long64},
        };
        for (const Row& row : kRows) {
            if (!Skip(row.prefix)) continue;
            c.size = row.size;
            return;
        }
    }

    void Write(Conversion& c) {
        switch (c.letter) {
            case u'd':
            case u'i':
                return WriteSigned(c);
            case u'u':
                return WriteNumber(c, Unsigned(c), 10, "");
            case u'o':
                return WriteNumber(c, Unsigned(c), 8, "");
            case u'x':
                return WriteHex(c, "0x");
            case u'X':
                return WriteHex(c, "0X");
            case u'p':
                return WritePointer(c);
            case u'c':
            case u'C':
                return WriteCharacter(c);
            case u's':
            case u'S':
                return WriteText(c);
            case u'e':
            case u'E':
            case u'f':
            case u'F':
            case u'g':
            case u'G':
            case u'a':
            case u'A':
                return WriteDouble(c);
            default:
                output_.Put(c.letter);
        }
    }

    unsigned long long Unsigned(const Conversion& c) {
        if (c.size == Size::Long64) return va_arg(arguments_.list, unsigned long long);
        const unsigned value = va_arg(arguments_.list, unsigned);
        if (c.size == Size::Short) return static_cast<unsigned short>(value);
        return c.size == Size::Char ? static_cast<unsigned char>(value) : value;
    }

    void WriteSigned(const Conversion& c) {
        long long value = 0;
        if (c.size == Size::Long64) {
            value = va_arg(arguments_.list, long long);
        } else {
            const int given = va_arg(arguments_.list, int);
            value = c.size == Size::Short  ? static_cast<short>(given)
                    : c.size == Size::Char ? static_cast<signed char>(given)
                                           : given;
        }
        const auto bits = static_cast<unsigned long long>(value);
        WriteNumber(c, value < 0 ? 0 - bits : bits, 10,
                    value < 0 ? "-"
                    : c.sign  ? "+"
                    : c.blank ? " "
                              : "");
    }

    void WriteHex(const Conversion& c, const char* prefix) {
        const unsigned long long value = Unsigned(c);
        WriteNumber(c, value, 16, c.alternate && value != 0 ? prefix : "");
    }

    void WritePointer(Conversion& c) {
        c.letter = u'X';
        c.precision = 16;
        WriteNumber(c, reinterpret_cast<std::uintptr_t>(va_arg(arguments_.list, void*)), 16, "");
    }

    void WriteNumber(const Conversion& c, unsigned long long value, unsigned base,
                     std::string_view prefix) {
        Digits buffer;
        // A 0 has no digits here: the precision below decides whether one is written.
        const std::string_view digits =
            value == 0 ? std::string_view() : buffer.Write(value, base, c.letter);
        const std::size_t length = digits.size();
        std::size_t least = c.precision < 0 ? 1 : static_cast<std::size_t>(c.precision);
        if (base == 8 && c.alternate && least <= length) least = length + 1;
        const std::size_t zeros = least > length ? least - length : 0;
        const bool zero_pad = c.zero && !c.left && c.precision < 0;
        WriteField(c, zero_pad, prefix, zeros, digits);
    }

    // Blanks, prefix, zeros, text and blanks, as the width and the flags ask for.
    template <class Unit>
    void WriteField(const Conversion& c, bool zero_pad, std::string_view prefix, std::size_t zeros,
                    std::basic_string_view<Unit> text) {
        const std::size_t length = prefix.size() + zeros + text.size();
        const auto width = static_cast<std::size_t>(c.width);
        const std::size_t padding = width > length ? width - length : 0;
        if (!c.left && !zero_pad) output_.Fill(u' ', padding);
        output_.Put(prefix);
        if (!c.left && zero_pad) output_.Fill(u'0', padding);
        output_.Fill(u'0', zeros);
        output_.Put(text);
        if (c.left) output_.Fill(u' ', padding);
    }

    static bool Narrow(const Conversion& c) {
        const bool capital = c.letter == u'S' || c.letter == u'C';
        return c.size == Size::Short || (capital && c.size != Size::Wide);
    }

    void WriteCharacter(const Conversion& c) {
        const int value = va_arg(arguments_.list, int);
        auto unit = static_cast<WCHAR>(value);
        if (Narrow(c)) {
            const char byte = static_cast<char>(value);
            if (MultiByteToWideChar(CP_ACP, 0, &byte, 1, &unit, 1) == 0) unit = u'?';
        }
        WriteField(c, c.zero, "", 0, WideView(&unit, 1));
    }

    void WriteText(const Conversion& c) {
        const void* given = va_arg(arguments_.list, const void*);
        const auto limit =
            c.precision < 0 ? std::string::npos : static_cast<std::size_t>(c.precision);
        if (given == nullptr) {
            WriteField(c, c.zero, "", 0, WideView(u"(null)").substr(0, limit));
        } else if (Narrow(c)) {
            const std::string_view text = Bounded(static_cast<const char*>(given), limit);
            WriteField(c, c.zero, "", 0, WideView(FromAnsi(text)));
        } else {
            WriteField(c, c.zero, "", 0, Bounded(static_cast<const WCHAR*>(given), limit));
        }
    }

    // The text up to its zero; no unit past the limit is read.
    template <class Unit>
    static std::basic_string_view<Unit> Bounded(const Unit* text, std::size_t limit) {
        std::size_t length = 0;
        while (length < limit && text[length] != 0) ++length;
        return {text, length};
    }

    static WideString FromAnsi(std::string_view text) {
        if (text.empty() || text.size() > INT_MAX) return {};
        const int bytes = static_cast<int>(text.size());
        const int size = MultiByteToWideChar(CP_ACP, 0, text.data(), bytes, nullptr, 0);
        WideString result(static_cast<std::size_t>(size), 0);
        MultiByteToWideChar(CP_ACP, 0, text.data(), bytes, result.data(), size);
        return result;
    }

    // The C library formats the number, in its "C" locale; the field is ours.
    void WriteDouble(const Conversion& c) {
        const double value = va_arg(arguments_.list, double);
        const char format[] = {'%',
                               c.sign    ? '+'
                               : c.blank ? ' '
                                         : '-',
                               c.alternate ? '#' : '-',
                               '.',
                               '*',
                               static_cast<char>(c.letter),
                               0};
        const bool hex = c.letter == u'a' || c.letter == u'A';
        const int precision = c.precision >= 0 ? c.precision : hex ? 13 : 6;
        static const locale_t plain = newlocale(LC_ALL_MASK, "C", nullptr);
        const locale_t previous = uselocale(plain);
        char small[400];
        std::string large;
        std::string_view text;
        const int length = std::snprintf(small, sizeof small, format, precision, value);
        if (length >= 0 && static_cast<std::size_t>(length) < sizeof small) {
            text = {small, static_cast<std::size_t>(length)};
        } else if (length >= 0) {
            large.resize(static_cast<std::size_t>(length));
            std::snprintf(large.data(), large.size() + 1, format, precision, value);
            text = large;
        }
        uselocale(previous);
        const bool finite = value - value == 0;
        std::size_t prefix = !text.empty() && (text[0] == '-' || text[0] == '+' || text[0] == ' ');
        if (hex && finite) prefix += 2;
        WriteField(c, c.zero && finite, text.substr(0, prefix), 0, text.substr(prefix));
    }

    Output& output_;
    const WCHAR* next_;
    Arguments& arguments_;
};

}  // namespace

int _vsnwprintf(WCHAR* buffer, std::size_t count, const WCHAR* format, std::va_list arguments) {
    if (format == nullptr || (buffer == nullptr && count != 0)) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return -1;
    }
    Output output(buffer, count);
    Arguments copy;
    va_copy(copy.list, arguments);
    bool complete = true;
    try {
        Formatter(output, format, copy).Run();
    } catch (const std::bad_alloc&) {
        complete = false;
    }
    va_end(copy.list);
    const std::size_t length = output.Count();
    if (length < count) buffer[length] = 0;
    if (!complete || length > INT_MAX || (buffer != nullptr && length > count)) return -1;
    return static_cast<int>(length);
}
