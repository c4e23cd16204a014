#include "xml/xml_source_location.h"

#include <algorithm>
#include <string>

#include "mox_classes/text/utf8_text.h"
#include "xml/char_finder.h"
#include "xml/xml_doc.h"

using System::TCodePage;

namespace {

// How much of a long line is shown, in characters: in front of the location, and in all.
constexpr int kShownBefore = 60;
constexpr int kShown = 100;
constexpr std::string_view kCut = "...";
constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

bool IsTrail(char octet) {
    return (static_cast<unsigned char>(octet) & 0xC0) == 0x80;
}

// The number of bytes of the first character of `text`, which is not empty. A byte that begins no
// character counts as one.
std::size_t CharLength(std::string_view text) {
    const auto lead = static_cast<unsigned char>(text.front());
    const std::size_t length = lead < 0xC2 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    if (lead > 0xF4 || length > text.size()) return 1;
    const std::string_view trail = text.substr(1, length - 1);
    return std::all_of(trail.begin(), trail.end(), IsTrail) ? length : 1;
}

// Whether a terminal can show the character as it is. False for control characters, for characters
// without a width of their own, for those that change the direction of writing, and for bytes that
// are no character.
bool IsPlain(std::string_view character) {
    if (character.size() == 1) {
        const char octet = character.front();
        return octet == '\t' || (octet >= 0x20 && octet < 0x7F);
    }
    const UnicodeString unit =
        System::StringFromUtf8(character.data(), static_cast<int>(character.size()));
    const unsigned value = unit.t_str()[0];
    return value >= 0xA0 && value != 0x061C && value != 0x200E && value != 0x200F &&
           !(value >= 0x2028 && value <= 0x202E) && !(value >= 0x2066 && value <= 0x2069) &&
           value != 0xFEFF;
}

void AppendShown(std::string& line, std::string_view character) {
    line += IsPlain(character) ? character : kReplacement;
}

// The start of the character `count` characters in front of `at`, but not in front of `least`.
std::size_t StepBack(std::string_view text, std::size_t at, std::size_t least, int count) {
    for (; count > 0 && at > least; --count) {
        std::size_t start = at - 1;
        while (start > least && IsTrail(text[start]) && at - start < 4) --start;
        // Bytes that are no character count as one each.
        at = start + CharLength(text.substr(start)) == at ? start : at - 1;
    }
    return at;
}

int MarkLength(const void* bytes, int size) {
    TAsciiCharFinder finder(bytes, size);
    finder.CheckCodePage(TCodePage{});
    return finder.Position();
}

}  // namespace

UnicodeString TXmlSourceLocation::Name() const {
    return TEXT("line ") + UnicodeString(line) + TEXT(", column ") + UnicodeString(column);
}

TXmlSourceText::TXmlSourceText(const void* bytes, int size, TCodePage code_page)
    : bytes_(static_cast<const unsigned char*>(bytes)),
      mark_(MarkLength(bytes, size)),
      code_page_(code_page) {
    if (IsWideCodePage(code_page)) {
        decoded_.emplace(bytes_ + mark_, size - mark_, code_page);
        text_ = {decoded_->Data(), static_cast<std::size_t>(decoded_->Size())};
    } else {
        text_ = {reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(size)};
        at_ = line_start_ = static_cast<std::size_t>(mark_);
    }
}

TXmlSourceLocation TXmlSourceText::Find(int position) {
    if (!decoded_) return FindInText(position);
    return FindInText(
        TXmlDecodedText(bytes_ + mark_, std::max(position - mark_, 0), code_page_).Size());
}

TXmlSourceLocation TXmlSourceText::FindInText(int position) {
    const std::size_t wanted = std::min(static_cast<std::size_t>(position), text_.size());
    if (wanted < at_) {
        at_ = line_start_ = decoded_ ? 0 : static_cast<std::size_t>(mark_);
        line_ = column_ = 1;
    }
    while (at_ < wanted) {
        const char octet = text_[at_];
        const bool pair = octet == '\r' && text_.substr(at_ + 1, 1) == "\n";
        if (pair && at_ + 1 == wanted) break;
        const std::size_t next = at_ + (pair ? 2 : CharLength(text_.substr(at_)));
        if (next > wanted) break;
        at_ = next;
        ++column_;
        if (octet != '\n' && octet != '\r') continue;
        line_start_ = at_;
        column_ = 1;
        ++line_;
    }
    return {line_, column_, Show(at_)};
}

std::size_t TXmlSourceText::LineEnd() const {
    return std::min(text_.find_first_of("\r\n", at_), text_.size());
}

UnicodeString TXmlSourceText::Show(std::size_t at) const {
    const std::size_t end = LineEnd();
    if (line_start_ == end) return UnicodeString();
    const std::size_t start = StepBack(text_, at, line_start_, kShownBefore);
    std::string line(start > line_start_ ? kCut : "");
    std::string caret(line.size(), ' ');
    int count = 0;
    std::size_t from = start;
    for (; from < end && count < kShown; ++count) {
        const std::string_view character = text_.substr(from, CharLength(text_.substr(from)));
        if (from < at) caret += character == "\t" ? '\t' : ' ';
        AppendShown(line, character);
        from += character.size();
    }
    line.append(from < end ? kCut : "");
    line += "\n" + caret + "^";
    return System::StringFromUtf8(line.data(), static_cast<int>(line.size()));
}

UnicodeString DescribeXmlFault(const TXmlDoc& document, const void* bytes, int size,
                               TXmlSourceLocation* place) {
    const int result = document.ParseResult();
    if (result > 0) return UnicodeString();
    TXmlSourceText places(bytes, size, document.CodePage);
    int at = result < 0 ? -result : size;
    UnicodeString opened;
    if (document.FaultOpened() >= 0) {
        opened = TEXT(" (opened at ") + places.Find(document.FaultOpened()).Name() + TEXT(")");
    }
    if (result == 0) {
        // When the input ends too early, the last line with text says more than the empty line
        // behind it.
        const std::size_t last = places.Text().find_last_not_of(" \t\r\n");
        const bool nothing = last == std::string_view::npos;
        at = nothing ? 0 : static_cast<int>(last) + 1;
    }
    const TXmlSourceLocation found = result == 0 ? places.FindInText(at) : places.Find(at);
    if (place != nullptr) *place = found;
    UnicodeString text = found.Name() + TEXT(": ") + document.Fault() + opened;
    if (found.shown.Length() > 0) text += TEXT("\n") + found.shown;
    return text;
}
