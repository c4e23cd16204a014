#include "utf8.h"

#include <algorithm>
#include <cstring>

namespace host {

namespace {

constexpr char32_t kReplacement = 0xFFFD;
constexpr char32_t kIllFormed = 0xFFFFFFFF;

// A buffer that is filled from the front, or only counted when it is null.
template <class Unit>
class Output {
  public:
    Output(Unit* buffer, std::size_t size) : buffer_(buffer), size_(size) {}

    // Room for `count` more units, or null (with the units counted) when there is no buffer.
    bool Take(std::size_t count, Unit*& place) {
        if (buffer_ != nullptr && size_ - used_ < count) return false;
        place = buffer_ == nullptr ? nullptr : buffer_ + used_;
        used_ += count;
        return true;
    }
    std::size_t Used() const { return used_; }

  private:
    Unit* buffer_;
    std::size_t size_;
    std::size_t used_ = 0;
};

// Length of the run of ASCII units at the start of the text, eight bytes at a time.
template <class Unit>
std::size_t AsciiRun(const Unit* text, std::size_t count) {
    constexpr std::uint64_t kHighBits =
        sizeof(Unit) == 1 ? 0x8080808080808080u : 0xFF80FF80FF80FF80u;
    constexpr std::size_t kStep = 8 / sizeof(Unit);
    std::size_t run = 0;
    for (; count - run >= kStep; run += kStep) {
        std::uint64_t block;
        std::memcpy(&block, text + run, sizeof block);
        if ((block & kHighBits) != 0) break;
    }
    while (run < count && static_cast<std::make_unsigned_t<Unit>>(text[run]) < 0x80) ++run;
    return run;
}

// Copies the ASCII run at `position` and moves past it; false when there is no room.
template <class From, class To>
bool CopyAscii(std::basic_string_view<From> text, std::size_t& position, Output<To>& output) {
    const From* source = text.data() + position;
    const std::size_t run = AsciiRun(source, text.size() - position);
    To* place;
    if (!output.Take(run, place)) return false;
    if (place != nullptr) {
        for (std::size_t i = 0; i < run; ++i) place[i] = static_cast<To>(source[i]);
    }
    position += run;
    return true;
}

// Decodes the sequence at `position` and moves past it; of an ill-formed one past its longest
// prefix that could have started a valid sequence, at least one byte.
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

bool Put(char32_t code, Output<WCHAR>& output) {
    WCHAR* place;
    if (!output.Take(code < 0x10000 ? 1 : 2, place)) return false;
    if (place == nullptr) return true;
    if (code < 0x10000) {
        *place = static_cast<WCHAR>(code);
    } else {
        place[0] = static_cast<WCHAR>(0xD800 + ((code - 0x10000) >> 10));
        place[1] = static_cast<WCHAR>(0xDC00 + ((code - 0x10000) & 0x3FF));
    }
    return true;
}

bool Put(char32_t code, Output<char>& output) {
    const std::size_t count = code < 0x80 ? 1 : code < 0x800 ? 2 : code < 0x10000 ? 3 : 4;
    char* place;
    if (!output.Take(count, place)) return false;
    if (place == nullptr) return true;
    for (std::size_t i = count - 1; i > 0; --i, code >>= 6) {
        place[i] = static_cast<char>(0x80 | (code & 0x3F));
    }
    constexpr unsigned char kLead[] = {0, 0x00, 0xC0, 0xE0, 0xF0};
    place[0] = static_cast<char>(kLead[count] | code);
    return true;
}

template <class From, class To, class Decode>
Conversion Convert(std::basic_string_view<From> text, To* buffer, std::size_t size, bool strict,
                   Decode decode) {
    Output<To> output(buffer, size);
    std::size_t position = 0;
    while (position < text.size()) {
        if (!CopyAscii(text, position, output)) return {0, ERROR_INSUFFICIENT_BUFFER};
        if (position == text.size()) break;
        char32_t code = decode(text, position);
        if (code == kIllFormed) {
            if (strict) return {0, ERROR_NO_UNICODE_TRANSLATION};
            code = kReplacement;
        }
        if (!Put(code, output)) return {0, ERROR_INSUFFICIENT_BUFFER};
    }
    return {output.Used(), NO_ERROR};
}

}  // namespace

Conversion Utf8ToWide(std::string_view text, WCHAR* buffer, std::size_t size, bool strict) {
    return Convert(text, buffer, size, strict, DecodeUtf8);
}

Conversion WideToUtf8(std::basic_string_view<WCHAR> text, char* buffer, std::size_t size,
                      bool strict) {
    return Convert(text, buffer, size, strict, DecodeUtf16);
}

}  // namespace host
