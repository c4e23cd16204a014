// Strict UTF-8 and UTF-16 conversion of file names.
#include "host_path.h"

namespace host {
namespace {

bool IsHigh(char32_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}
bool IsLow(char32_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

void Append(std::string& utf8, char32_t c) {
    const auto put = [&utf8](char32_t byte) { utf8 += static_cast<char>(byte); };
    if (c < 0x80) {
        put(c);
        return;
    }
    const int tail_bytes = c < 0x800 ? 1 : c < 0x10000 ? 2 : 3;
    constexpr char32_t kLead[] = {0, 0xC0, 0xE0, 0xF0};
    put(kLead[tail_bytes] | (c >> (6 * tail_bytes)));
    for (int i = tail_bytes - 1; i >= 0; --i) put(0x80 | ((c >> (6 * i)) & 0x3F));
}

// Decodes the character at the front and takes it off; false when it is malformed.
bool Take(std::string_view& utf8, char32_t& c) {
    const auto lead = static_cast<unsigned char>(utf8.front());
    const std::size_t size = lead < 0x80   ? 1
                             : lead < 0xC2 ? 0
                             : lead < 0xE0 ? 2
                             : lead < 0xF0 ? 3
                                           : 4;
    if (size == 0 || lead > 0xF4 || utf8.size() < size) return false;
    c = size == 1 ? lead : lead & (0x7Fu >> size);
    for (std::size_t i = 1; i < size; ++i) {
        const auto byte = static_cast<unsigned char>(utf8[i]);
        if ((byte & 0xC0) != 0x80) return false;
        c = (c << 6) | (byte & 0x3Fu);
    }
    utf8.remove_prefix(size);
    constexpr char32_t kLowest[] = {0, 0, 0x80, 0x800, 0x10000};
    return c >= kLowest[size] && c <= 0x10FFFF && !IsHigh(c) && !IsLow(c);
}

}  // namespace

bool NameToUtf8(std::u16string_view name, std::string& utf8) {
    utf8.clear();
    for (std::size_t i = 0; i < name.size(); ++i) {
        char32_t c = name[i];
        if (IsLow(c)) return false;
        if (IsHigh(c)) {
            if (++i == name.size() || !IsLow(name[i])) return false;
            c = 0x10000 + ((c - 0xD800) << 10) + (name[i] - 0xDC00u);
        }
        Append(utf8, c);
    }
    return true;
}

bool NameFromUtf8(std::string_view utf8, std::u16string& name) {
    name.clear();
    while (!utf8.empty()) {
        char32_t c = 0;
        if (!Take(utf8, c)) return false;
        if (c >= 0x10000) {
            name += static_cast<char16_t>(0xD7C0 + (c >> 10));
            name += static_cast<char16_t>(0xDC00 + (c & 0x3FF));
        } else {
            name += static_cast<char16_t>(c);
        }
    }
    return true;
}

}  // namespace host
