#include <algorithm>
#include <cstring>

#include "host_path.h"
#include "reg_text.h"

namespace host {

namespace {

constexpr std::u16string_view kHeader = u"Windows Registry Editor Version 5.00";
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kUtf16Mark = "\xFF\xFE";

bool IsBlank(WCHAR unit) {
    return unit == u' ' || unit == u'\t' || unit == u'\r';
}

int HexDigit(WCHAR unit) {
    if (unit >= u'0' && unit <= u'9') return unit - u'0';
    if (unit >= u'a' && unit <= u'f') return unit - u'a' + 10;
    if (unit >= u'A' && unit <= u'F') return unit - u'A' + 10;
    return -1;
}

// The file's text in one encoding. Finds the line when a byte sequence is no text.
std::u16string Decode(std::string_view bytes) {
    if (bytes.starts_with(kUtf16Mark)) {
        bytes.remove_prefix(kUtf16Mark.size());
        std::u16string text(bytes.size() / sizeof(WCHAR), u'\0');
        std::memcpy(text.data(), bytes.data(), text.size() * sizeof(WCHAR));
        if (bytes.size() % sizeof(WCHAR) == 0) return text;
        const auto breaks = std::count(text.begin(), text.end(), u'\n');
        throw RegTextError(static_cast<std::size_t>(breaks) + 1, "half a UTF-16 character");
    }
    if (bytes.starts_with(kUtf8Mark)) bytes.remove_prefix(kUtf8Mark.size());
    std::u16string text;
    if (NameFromUtf8(bytes, text)) return text;
    std::size_t line = 1;
    for (std::size_t start = 0; start < bytes.size(); ++line) {
        const std::size_t end = std::min(bytes.find('\n', start), bytes.size());
        if (!NameFromUtf8(bytes.substr(start, end - start), text)) break;
        start = end + 1;
    }
    throw RegTextError(line, "neither UTF-8 nor UTF-16 with a byte-order mark");
}

class Reader {
  public:
    explicit Reader(std::u16string text) : text_(std::move(text)) {}
    std::vector<RegEntry> Run();

  private:
    [[noreturn]] static void Fail(std::size_t line, const char* what) {
        throw RegTextError(line, what);
    }
    bool AtEnd() const { return at_ == text_.size(); }
    WCHAR Peek() const { return AtEnd() ? u'\n' : text_[at_]; }
    WCHAR Next();
    bool Take(std::u16string_view word);
    void SkipBlanks();
    bool FindStatement();
    std::u16string_view RestOfLine();
    void EndStatement();

    void Header();
    void Key();
    void Value();
    void Data(RegEntry& entry);
    std::u16string Quoted();
    DWORD HexNumber();
    void Bytes(std::vector<BYTE>& data);
    void SkipContinuation();

    const std::u16string text_;
    std::size_t at_ = 0, line_ = 1;
    bool in_key_ = false;
    std::vector<RegEntry> entries_;
};

WCHAR Reader::Next() {
    const WCHAR unit = text_[at_++];
    if (unit == u'\n') ++line_;
    if (unit == u'\0') Fail(line_, "a zero character");
    return unit;
}

bool Reader::Take(std::u16string_view word) {
    if (!std::u16string_view(text_).substr(at_).starts_with(word)) return false;
    at_ += word.size();
    return true;
}

void Reader::SkipBlanks() {
    while (!AtEnd() && IsBlank(text_[at_])) ++at_;
}

// Goes to the next line that is neither empty nor a comment.
bool Reader::FindStatement() {
    for (;;) {
        SkipBlanks();
        if (AtEnd()) return false;
        if (Peek() == u';') {
            RestOfLine();
        } else if (Peek() != u'\n') {
            return true;
        }
        if (!AtEnd()) Next();
    }
}

// Up to the line's end, blanks at its end left out.
std::u16string_view Reader::RestOfLine() {
    const std::size_t end = std::min(text_.find(u'\n', at_), text_.size());
    auto rest = std::u16string_view(text_).substr(at_, end - at_);
    at_ = end;
    while (!rest.empty() && IsBlank(rest.back())) rest.remove_suffix(1);
    return rest;
}

void Reader::EndStatement() {
    SkipBlanks();
    if (Peek() == u';') RestOfLine();
    if (Peek() != u'\n') Fail(line_, "unexpected text behind the value");
}

void Reader::Header() {
    if (!FindStatement() || RestOfLine() != kHeader) {
        Fail(line_, "the file does not begin with \"Windows Registry Editor Version 5.00\"");
    }
}

void Reader::Key() {
    auto path = RestOfLine().substr(1);
    if (!path.ends_with(u']')) Fail(line_, "a key without a closing bracket");
    path.remove_suffix(1);
    const bool remove = path.starts_with(u'-');
    if (remove) path.remove_prefix(1);
    if (path.empty()) Fail(line_, "a key without a name");
    if (path.find(u'\0') != path.npos) Fail(line_, "a zero character");
    in_key_ = !remove;
    entries_.push_back({remove ? RegEntry::Kind::DeleteKey : RegEntry::Kind::Key,
                        line_,
                        std::u16string(path),
                        REG_NONE,
                        {}});
}

void Reader::Value() {
    if (!in_key_) Fail(line_, "a value without a key");
    RegEntry entry{RegEntry::Kind::Value, line_, {}, REG_NONE, {}};
    if (!Take(u"@")) entry.name = Quoted();
    SkipBlanks();
    if (!Take(u"=")) Fail(line_, "no '=' behind the value's name");
    SkipBlanks();
    Data(entry);
    EndStatement();
    entries_.push_back(std::move(entry));
}

void Reader::Data(RegEntry& entry) {
    if (Take(u"-")) {
        entry.kind = RegEntry::Kind::DeleteValue;
    } else if (Peek() == u'"') {
        entry.type = REG_SZ;
        const std::u16string text = Quoted();
        const auto* bytes = reinterpret_cast<const BYTE*>(text.c_str());
        entry.data.assign(bytes, bytes + (text.size() + 1) * sizeof(WCHAR));
    } else if (Take(u"dword:")) {
        entry.type = REG_DWORD;
        const DWORD number = HexNumber();
        for (int shift = 0; shift < 32; shift += 8) {
            entry.data.push_back(static_cast<BYTE>(number >> shift));
        }
    } else if (Take(u"hex:")) {
        entry.type = REG_BINARY;
        Bytes(entry.data);
    } else if (Take(u"hex(")) {
        entry.type = HexNumber();
        if (!Take(u"):")) Fail(line_, "no \"):\" behind the type's number");
        Bytes(entry.data);
    } else {
        Fail(line_, "no value of a known form (text in quotes, dword:, hex:, hex(n): or -)");
    }
}

// A quoted text may run over several lines; its line breaks belong to it.
std::u16string Reader::Quoted() {
    const std::size_t start = line_;
    if (!Take(u"\"")) Fail(line_, "no quoted text");
    std::u16string text;
    while (!AtEnd()) {
        const WCHAR unit = Next();
        if (unit == u'"') return text;
        if (unit != u'\\') {
            text += unit;
        } else if (Peek() == u'\\' || Peek() == u'"') {
            text += Next();
        } else {
            Fail(line_, "a backslash in quotes is doubled, or stands before a quote");
        }
    }
    Fail(start, "a quoted text without a closing quote");
}

DWORD Reader::HexNumber() {
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
void Reader::SkipContinuation() {
    SkipBlanks();
    while (Take(u"\\")) {
        SkipBlanks();
        if (Peek() != u'\n') Fail(line_, "text behind the backslash that continues a line");
        if (!AtEnd()) Next();
        SkipBlanks();
    }
}

void Reader::Bytes(std::vector<BYTE>& data) {
    SkipContinuation();
    if (HexDigit(Peek()) < 0) return;
    do {
        SkipContinuation();
        int value = HexDigit(Peek());
        if (value < 0) Fail(line_, "no byte of two hexadecimal digits");
        ++at_;
        if (HexDigit(Peek()) >= 0) {
            value = value << 4 | HexDigit(Peek());
            ++at_;
        }
        data.push_back(static_cast<BYTE>(value));
        SkipContinuation();
    } while (Take(u","));
}

std::vector<RegEntry> Reader::Run() {
    Header();
    while (FindStatement()) {
        if (Peek() == u'[') {
            Key();
        } else if (Peek() == u'"' || Peek() == u'@') {
            Value();
        } else {
            Fail(line_, "neither a key in brackets, a value nor a comment");
        }
    }
    return std::move(entries_);
}

}  // namespace

std::vector<RegEntry> ReadRegText(std::string_view bytes) {
    return Reader(Decode(bytes)).Run();
}

}  // namespace host
