#include <cstring>
#include <optional>

#include "registry/reg_text.h"
#include "root/host_path.h"

namespace host {

namespace {

constexpr std::size_t kLineWidth = 78;
constexpr char kHexDigits[] = "0123456789abcdef";

std::string HexNumber(DWORD number) {
    std::string digits;
    for (int shift = 28; shift >= 0; shift -= 4) {
        if (digits.empty() && (number >> shift) == 0 && shift > 0) continue;
        digits += kHexDigits[number >> shift & 15];
    }
    return digits;
}

std::string Utf8(std::u16string_view name) {
    std::string utf8;
    if (!NameToUtf8(name, utf8))
        throw std::invalid_argument("a name that is not well-formed UTF-16");
    return utf8;
}

// The UTF-8 text of a value that quotes can hold without loss: one terminator at its end, no other
// control characters than tabs, well-formed.
std::optional<std::string> PlainText(DWORD type, std::span<const BYTE> data) {
    if (type != REG_SZ || data.size() < sizeof(WCHAR) || data.size() % sizeof(WCHAR) != 0) {
        return std::nullopt;
    }
    std::u16string text(data.size() / sizeof(WCHAR), u'\0');
    std::memcpy(text.data(), data.data(), data.size());
    if (text.back() != u'\0') return std::nullopt;
    text.pop_back();
    for (const WCHAR unit : text) {
        if ((unit < u' ' && unit != u'\t') || unit == 0x7F) return std::nullopt;
    }
    std::string utf8;
    return NameToUtf8(text, utf8) ? std::optional(std::move(utf8)) : std::nullopt;
}

}  // namespace

void RegTextWriter::Key(std::u16string_view path) {
    text_ += "\n[" + Utf8(path) + "]\n";
}

void RegTextWriter::Value(std::u16string_view name, DWORD type, std::span<const BYTE> data) {
    line_start_ = text_.size();
    if (name.empty()) {
        text_ += '@';
    } else {
        Quoted(Utf8(name));
    }
    text_ += '=';
    if (const auto text = PlainText(type, data)) {
        Quoted(*text);
    } else if (type == REG_DWORD && data.size() == sizeof(DWORD)) {
        DWORD number;
        std::memcpy(&number, data.data(), sizeof(number));
        text_ += "dword:";
        for (int shift = 28; shift >= 0; shift -= 4) text_ += kHexDigits[number >> shift & 15];
    } else {
        Hex(type, data);
    }
    text_ += '\n';
}

void RegTextWriter::Quoted(std::string_view utf8) {
    text_ += '"';
    for (const char byte : utf8) {
        if (byte == '"' || byte == '\\') text_ += '\\';
        text_ += byte;
    }
    text_ += '"';
}

void RegTextWriter::Hex(DWORD type, std::span<const BYTE> data) {
    text_ += type == REG_BINARY ? "hex:" : "hex(" + HexNumber(type) + "):";
    for (std::size_t i = 0; i < data.size(); ++i) {
        text_ += kHexDigits[data[i] >> 4];
        text_ += kHexDigits[data[i] & 15];
        if (i + 1 == data.size()) break;
        text_ += ',';
        if (text_.size() - line_start_ < kLineWidth - 3) continue;
        text_ += "\\\n";
        line_start_ = text_.size();
        text_ += "  ";
    }
}

}  // namespace host
