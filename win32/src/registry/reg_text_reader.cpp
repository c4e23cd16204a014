#include <algorithm>
#include <array>
#include <cstring>
#include <type_traits>

#include "registry/reg_text.h"
#include "root/host_path.h"
#include "text/utf8.h"

namespace host {

namespace {

constexpr std::string_view kHeader = "Windows Registry Editor Version 5.00";
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kUtf16Mark = "\xFF\xFE";

// The reader works on the file's own units, bytes of UTF-8 or units of UTF-16, and converts names
// and texts alone: most of a large file is hexadecimal digits. To widen a file of 27 MB first would
// take a quarter more time and 55 MB.
template <class Unit>
using View = std::basic_string_view<Unit>;

template <class Unit>
bool IsBlank(Unit unit) {
    return unit == ' ' || unit == '\t' || unit == '\r';
}

// The value of each ASCII character as a hexadecimal digit, -1 for the others.
constexpr auto kDigits = [] {
    std::array<signed char, 128> values{};
    values.fill(-1);
    for (const std::string_view digits : {"0123456789abcdef", "0123456789ABCDEF"}) {
        signed char value = 0;
        for (const char digit : digits) values[static_cast<unsigned char>(digit)] = value++;
    }
    return values;
}();

template <class Unit>
int HexDigit(Unit unit) {
    const auto index = static_cast<std::make_unsigned_t<Unit>>(unit);
    return index < kDigits.size() ? kDigits[index] : -1;
}

std::u16string ToText(View<WCHAR> units) {
    return std::u16string(units);
}

// Of bytes that CheckUtf8 let pass.
std::u16string ToText(std::string_view bytes) {
    std::u16string text;
    if (!NameFromUtf8(bytes, text)) text.clear();
    return text;
}

// Finds the line when a byte sequence is no UTF-8.
void CheckUtf8(std::string_view bytes) {
    if (Utf8ToWide(bytes, nullptr, 0, true).error == NO_ERROR) return;
    std::size_t line = 1;
    for (std::size_t start = 0; start < bytes.size(); ++line) {
        const std::size_t end = std::min(bytes.find('\n', start), bytes.size());
        if (Utf8ToWide(bytes.substr(start, end - start), nullptr, 0, true).error != NO_ERROR) break;
        start = end + 1;
    }
    throw RegTextError(line, "neither UTF-8 nor UTF-16 with a byte-order mark");
}

std::u16string FromUtf16Bytes(std::string_view bytes) {
    std::u16string text(bytes.size() / sizeof(WCHAR), u'\0');
    std::memcpy(text.data(), bytes.data(), text.size() * sizeof(WCHAR));
    if (bytes.size() % sizeof(WCHAR) == 0) return text;
    const auto breaks = std::count(text.begin(), text.end(), u'\n');
    throw RegTextError(static_cast<std::size_t>(breaks) + 1, "half a UTF-16 character");
}

template <class Unit>
class Reader {
  public:
    Reader(View<Unit> text, const RegEntryTaker& take) : text_(text), take_(take) {}

    void Run() {
        Header();
        while (FindStatement()) {
            entry_.line = line_;
            entry_.name.clear();
            entry_.type = REG_NONE;
            entry_.data.clear();
            if (Peek() == '[') {
                Key();
            } else if (Peek() == '"' || Peek() == '@') {
                Value();
            } else {
                Fail(line_, "neither a key in brackets, a value nor a comment");
            }
            take_(entry_);
        }
    }

  private:
    [[noreturn]] static void Fail(std::size_t line, const char* what) {
        throw RegTextError(line, what);
    }

    bool AtEnd() const { return at_ == text_.size(); }

    Unit Peek() const { return AtEnd() ? Unit{'\n'} : text_[at_]; }

    Unit Next() {
        const Unit unit = text_[at_++];
        if (unit == '\n') ++line_;
        if (unit == 0) Fail(line_, "a zero character");
        return unit;
    }

    bool Take(std::string_view word) {
        const View<Unit> next = text_.substr(at_, word.size());
        if (!std::equal(next.begin(), next.end(), word.begin(), word.end())) return false;
        at_ += word.size();
        return true;
    }

    void SkipBlanks() {
        while (!AtEnd() && IsBlank(text_[at_])) ++at_;
    }

    // Goes to the next line that is neither empty nor a comment.
    bool FindStatement() {
        for (;;) {
            SkipBlanks();
            if (AtEnd()) return false;
            if (Peek() == ';') {
                RestOfLine();
            } else if (Peek() != '\n') {
                return true;
            }
            if (!AtEnd()) Next();
        }
    }

    // Up to the line's end, blanks at its end left out.
    View<Unit> RestOfLine() {
        const std::size_t end = std::min(text_.find(Unit{'\n'}, at_), text_.size());
        View<Unit> rest = text_.substr(at_, end - at_);
        at_ = end;
        while (!rest.empty() && IsBlank(rest.back())) rest.remove_suffix(1);
        return rest;
    }

    void EndStatement() {
        SkipBlanks();
        if (Peek() == ';') RestOfLine();
        if (Peek() != '\n') Fail(line_, "unexpected text behind the value");
    }

    void Header() {
        if (FindStatement()) {
            const View<Unit> rest = RestOfLine();
            if (std::equal(rest.begin(), rest.end(), kHeader.begin(), kHeader.end())) return;
        }
        Fail(line_, "the file does not begin with \"Windows Registry Editor Version 5.00\"");
    }

    void Key() {
        View<Unit> path = RestOfLine().substr(1);
        if (!path.ends_with(Unit{']'})) Fail(line_, "a key without a closing bracket");
        path.remove_suffix(1);
        const bool remove = path.starts_with(Unit{'-'});
        if (remove) path.remove_prefix(1);
        if (path.empty()) Fail(line_, "a key without a name");
        if (path.find(Unit{0}) != path.npos) Fail(line_, "a zero character");
        in_key_ = !remove;
        entry_.kind = remove ? RegEntry::Kind::DeleteKey : RegEntry::Kind::Key;
        entry_.name = ToText(path);
    }

    void Value() {
        if (!in_key_) Fail(line_, "a value without a key");
        entry_.kind = RegEntry::Kind::Value;
        if (!Take("@")) entry_.name = Quoted();
        SkipBlanks();
        if (!Take("=")) Fail(line_, "no '=' behind the value's name");
        SkipBlanks();
        Data();
        EndStatement();
    }

    void Data() {
        if (Take("-")) {
            entry_.kind = RegEntry::Kind::DeleteValue;
        } else if (Peek() == '"') {
            entry_.type = REG_SZ;
            const std::u16string text = Quoted();
            const auto* bytes = reinterpret_cast<const BYTE*>(text.c_str());
            entry_.data.assign(bytes, bytes + (text.size() + 1) * sizeof(WCHAR));
        } else if (Take("dword:")) {
            entry_.type = REG_DWORD;
            const DWORD number = HexNumber();
            for (int shift = 0; shift < 32; shift += 8) {
                entry_.data.push_back(static_cast<BYTE>(number >> shift));
            }
        } else if (Take("hex:")) {
            entry_.type = REG_BINARY;
            Bytes();
        } else if (Take("hex(")) {
            entry_.type = HexNumber();
            if (!Take("):")) Fail(line_, "no \"):\" behind the type's number");
            Bytes();
        } else {
            Fail(line_, "no value of a known form (text in quotes, dword:, hex:, hex(n): or -)");
        }
    }

    // A quoted text may run over several lines; its line breaks belong to it.
    std::u16string Quoted() {
        const std::size_t start = line_;
        if (!Take("\"")) Fail(line_, "no quoted text");
        std::basic_string<Unit> text;
        while (!AtEnd()) {
            const Unit unit = Next();
            if (unit == '"') return ToText(View<Unit>(text));
            if (unit != '\\') {
                text += unit;
            } else if (Peek() == '\\' || Peek() == '"') {
                text += Next();
            } else {
                Fail(line_, "a backslash in quotes is doubled, or stands before a quote");
            }
        }
        Fail(start, "a quoted text without a closing quote");
    }

    DWORD HexNumber() {
        DWORD number = 0;
        int digits = 0;
        for (; HexDigit(Peek()) >= 0; ++at_) {
            if (++digits > 8) Fail(line_, "a number of more than 8 hexadecimal digits");
            number = number << 4 | static_cast<DWORD>(HexDigit(Peek()));
        }
        if (digits == 0) Fail(line_, "no hexadecimal number");
        return number;
    }

    // Blanks, and a line's end behind a backslash.
    void SkipContinuation() {
        SkipBlanks();
        while (Take("\\")) {
            SkipBlanks();
            if (Peek() != '\n') Fail(line_, "text behind the backslash that continues a line");
            if (!AtEnd()) Next();
            SkipBlanks();
        }
    }

    // The form that writers use, two digits and a comma, as far as it goes on without a break.
    void PlainBytes() {
        for (; text_.size() - at_ >= 3 && text_[at_ + 2] == ','; at_ += 3) {
            const int high = HexDigit(text_[at_]);
            const int low = HexDigit(text_[at_ + 1]);
            if ((high | low) < 0) return;
            entry_.data.push_back(static_cast<BYTE>(high << 4 | low));
        }
    }

    void Bytes() {
        SkipContinuation();
        if (HexDigit(Peek()) < 0) return;
        do {
            PlainBytes();
            SkipContinuation();
            int value = HexDigit(Peek());
            if (value < 0) Fail(line_, "no byte of two hexadecimal digits");
            ++at_;
            if (HexDigit(Peek()) >= 0) {
                value = value << 4 | HexDigit(Peek());
                ++at_;
            }
            entry_.data.push_back(static_cast<BYTE>(value));
            SkipContinuation();
        } while (Take(","));
    }

    const View<Unit> text_;
    const RegEntryTaker& take_;
    std::size_t at_ = 0, line_ = 1;
    bool in_key_ = false;
    RegEntry entry_{};  // the statement that is being read; keeps its memory for the next one
};

}  // namespace

void ReadRegText(std::string_view bytes, const RegEntryTaker& take) {
    if (bytes.starts_with(kUtf16Mark)) {
        Reader<WCHAR>(FromUtf16Bytes(bytes.substr(kUtf16Mark.size())), take).Run();
        return;
    }
    if (bytes.starts_with(kUtf8Mark)) bytes.remove_prefix(kUtf8Mark.size());
    CheckUtf8(bytes);
    Reader<char>(bytes, take).Run();
}

}  // namespace host
