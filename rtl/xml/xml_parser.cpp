#include "xml/xml_parser.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "mox_classes/text/sysutils.h"
#include "xml/xml_decode.h"
#include "xml/xml_reference.h"

namespace {

using TPieces = std::basic_string<WCHAR>;

void AppendSpan(TPieces& pieces, const TAsciiCharFinder& finder, int from, int to) {
    const UnicodeString text = finder.Read(from, to);
    pieces.append(text.t_str(), static_cast<std::size_t>(text.Length()));
}

void AppendPieces(UnicodeString& text, const TPieces& pieces) {
    text += UnicodeString(pieces.data(), static_cast<long long>(pieces.size()));
}

// Says what is wrong with a text at `at`, where '>', '&' or ';' stands. When a reference is open,
// it begins at `start`.
UnicodeString TextFault(const TAsciiCharFinder& finder, int start, int at) {
    constexpr int kMostUnits = 40;
    switch (*finder.Bytes(at)) {
        case '>':
            return TEXT("'>' must be written '&gt;' here");
        case '&':
            return TEXT("'&' stands inside a reference; write '&amp;'");
        default:
            return TEXT("unknown reference '") +
                   finder.Read(start, at + 1).SubString(1, kMostUnits) + TEXT("'");
    }
}

// The length in bytes of the key at `at`, when the key is short, ASCII and ends at a character that
// ends keys; else 0, and the general way is taken.
inline int PlainKeyLength(const TAsciiCharFinder& finder, int at, char end, char quote) {
    if (finder.Size() - at < TByteBlock::kSize) return 0;
    const unsigned char* bytes = finder.Bytes(at);
    const TByteBlock block(bytes);
    const auto bits = (block.Odd() | block.Blank() | block.Is('<') | block.Is('>') | block.Is('=') |
                       block.Is(end) | block.Is(quote))
                          .Bits();
    if (bits == 0) return 0;
    const std::ptrdiff_t length = TByteMarks::First(bits);
    const unsigned char last = bytes[length];
    return last >= 0x20 && last < 0x80 ? static_cast<int>(length) : 0;
}

// Sets a mark and takes it back when it ends.
class TInAttributes {
  public:
    explicit TInAttributes(bool& mark) : mark_(mark) { mark_ = true; }
    ~TInAttributes() { mark_ = false; }
    TInAttributes(const TInAttributes&) = delete;
    TInAttributes& operator=(const TInAttributes&) = delete;

  private:
    bool& mark_;
};

// Whether `wanted`, which may be the address of a node that was deleted, is a node of the tree.
bool IsInTree(const TXmlNode* root, const TXmlNode* wanted) {
    // An element that is being filled mostly is the last one at each level.
    for (const TXmlNode* node = root; node != nullptr;
         node = node->GetChild(node->ChildCount() - 1))
        if (node == wanted) return true;
    std::vector<const TXmlNode*> open{root};
    while (!open.empty()) {
        const TXmlNode* node = open.back();
        open.pop_back();
        if (node == wanted) return true;
        for (int i = 0; i < node->ChildCount(); ++i) open.push_back(node->GetChild(i));
    }
    return false;
}

const TXmlSearchSets& SearchSets() {
    static const TXmlSearchSets sets;
    return sets;
}

}  // namespace

int TXmlDoc::Parse(const void* buffer, int size) {
    parse_result_ = 0;
    fault_opened_ = -1;
    fault_ = UnicodeString();
    TAsciiCharFinder finder(buffer, size);
    finder.CheckCodePage(CodePage);
    CodePage = finder.CodePage();
    if (!IsWideCodePage(CodePage)) return ParseWith(finder);

    const int start = finder.Position();
    const TXmlDecodedText text(finder.Bytes(start), finder.Size() - start, CodePage);
    TAsciiCharFinder decoded(text.Data(), text.Size());
    decoded.CheckCodePage(System::kCodePageUtf8);
    const int result = ParseWith(decoded);
    if (result > 0) parse_result_ = start + text.Original(result);
    if (result < 0) parse_result_ = -(start + text.Original(-result));
    if (fault_opened_ >= 0) fault_opened_ = start + text.Original(fault_opened_);
    return parse_result_;
}

int TXmlDoc::ParseWith(TAsciiCharFinder& finder) {
    TXmlParser parser(*this, finder);
    try {
        parse_result_ = parser.ParseElements();
        if (parse_result_ > 0) fault_ = UnicodeString();
    } catch (const UnicodeString& text) {
        parse_result_ = parser.Fail(text);
        throw;
    } catch (...) {
        parse_result_ = parser.Error();
        throw;
    }
    return parse_result_;
}

// Outside of a parse there is no input.
UnicodeString TXmlDoc::ParseKey(char end) {
    return parser_ == nullptr ? UnicodeString() : parser_->ParseKey(end);
}

int TXmlDoc::ParseAttributes(char end) {
    return parser_ == nullptr ? -1 : parser_->ParseAttributes(end);
}

int TXmlDoc::ParseText(UnicodeString& text, bool in_attribute) {
    return parser_ == nullptr ? -1 : parser_->ParseText(text, in_attribute);
}

// cppcheck-suppress uninitMemberVar ; the text writes its room before it reads it
TXmlParser::TXmlParser(TXmlDoc& document, TAsciiCharFinder& finder)
    : doc_(document), finder_(finder), sets_(SearchSets()), utf8_(finder.TakesUtf8()) {
    doc_.FFinder = &finder;
    doc_.FSets = &sets_;
    doc_.parser_ = this;
    // The element that was being filled may be gone with a tree that was cleared or replaced.
    if (!doc_.FRootSeen) {
        doc_.FCurrent = nullptr;
    } else if (!IsInTree(doc_.FRoot, doc_.FCurrent)) {
        doc_.FCurrent = doc_.FRoot;
    }
}

TXmlParser::~TXmlParser() {
    doc_.FFinder = nullptr;
    doc_.FSets = nullptr;
    doc_.parser_ = nullptr;
}

int TXmlParser::ParseElements() {
    while (!finder_.Eof()) {
        if (finder_.Current() != '<') {
            const int from = finder_.Position();
            const bool found = finder_.FindAny('<', '>') == '<';
            if (doc_.observer_ != nullptr) TellPassed(from);
            if (!found) {
                finder_.Skip(1);
                continue;
            }
        }
        int result = 0;
        switch (finder_.Next()) {
            case '?':
                result = ParseInstruction();
                break;
            case '!':
                SkipComment();
                break;
            case '[':
                finder_.Skip(1);
                break;
            case '/':
                result = ParseEndTag();
                break;
            default:
                result = ParseStartTag();
        }
        if (result != 0) return result;
    }
    if (!doc_.FRootSeen) {
        doc_.fault_ = TEXT("there is no element");
    } else {
        FailAtOpen(TEXT("'") + doc_.FCurrent->FName + TEXT("' has no end tag"));
    }
    return 0;
}

// Tells the observer about characters between two tags that belong to no text.
void TXmlParser::TellPassed(int from) {
    int to = finder_.Position();
    XmlTrimSpan(finder_, from, to);
    if (from < to && doc_.FRootSeen) doc_.observer_->Passed(from);
}

int TXmlParser::Fail(const UnicodeString& reason) {
    doc_.fault_ = reason;
    return Error();
}

// As Fail, for something that a tag lacks: at the end of the input it lacks more than that.
int TXmlParser::FailWithout(const UnicodeString& reason) {
    return Fail(finder_.Eof() ? UnicodeString(TEXT("the tag has no end")) : reason);
}

// A tab or a line break belongs to a name: the tag's own then reaches up to the '='.
int TXmlParser::FailWithoutAttributeName() {
    const UnicodeString& tag = doc_.FCurrent->FName;
    const WCHAR* const end = tag.t_str() + tag.Length();
    const WCHAR* const blank =
        std::find_if(tag.t_str(), end, [](WCHAR unit) { return unit < 0x20; });
    if (finder_.Current() != '=' || doc_.FCurrent->AttributeCount() > 0 || blank == end)
        return FailWithout(TEXT("the attribute has no name"));
    return Fail(TEXT("a space must follow the name '") +
                UnicodeString(tag.t_str(), blank - tag.t_str()) +
                TEXT("', not a tab or a line break"));
}

// As Fail, for a fault of the innermost open element.
int TXmlParser::FailAtOpen(const UnicodeString& reason) {
    if (!open_.empty()) doc_.fault_opened_ = open_.back().from - 1;
    return Fail(reason);
}

// A negative position. 0 would mean the end of the input, so position 0 becomes -1.
int TXmlParser::Error() const {
    return finder_.Position() > 0 ? -finder_.Position() : -1;
}

int TXmlParser::ParseInstruction() {
    if (doc_.FRootSeen) return Fail(TEXT("an instruction stands behind the root's start tag"));
    finder_.Skip(2);
    const UnicodeString name = ParseKey('?');
    if (name.IsEmpty()) return FailWithout(TEXT("the instruction has no name"));
    doc_.FCurrent = doc_.FProlog->AddChild(name);
    if (finder_.Current() != '?' || finder_.Next() != '>') {
        const int result = ParseAttributes('?');
        if (result < 0 && !bare_name_) return result;
        if (finder_.Current() != '?' || finder_.Next() != '>') {
            return Fail(TEXT("the instruction '") + name + TEXT("' does not end with '?>'"));
        }
    }
    finder_.Skip(2);
    doc_.FCurrent = nullptr;
    return 0;
}

// Begins at "<!". Skips a comment. What is no comment is entered: the scan goes on behind the '<'.
void TXmlParser::SkipComment() {
    if (finder_.b(2) != '-' || finder_.b(3) != '-') return finder_.Skip(1);
    finder_.Skip(3);
    while (!finder_.Eof()) {
        const bool end =
            finder_.FindAny('<', '>') == '>' && finder_.b(-1) == '-' && finder_.b(-2) == '-';
        finder_.Skip(1);
        if (end) return;
    }
}

int TXmlParser::ParseEndTag() {
    finder_.Skip(2);
    if (!SkipNameOfOpen()) {
        const UnicodeString name = ParseKey('>');
        if (finder_.Current() != '>') return Fail(TEXT("the end tag does not end with '>'"));
        if (doc_.FCurrent == nullptr) return Fail(TEXT("the end tag closes no element"));
        if (!XmlNamesEqual(name, doc_.FCurrent->FName)) {
            return FailAtOpen(TEXT("the end tag is of '") + name +
                              TEXT("', the open element is '") + doc_.FCurrent->FName + TEXT("'"));
        }
    }
    finder_.Skip(1);
    return CloseElement();
}

// Most end tags repeat the bytes of their start tag. Moves to the '>' of such a tag; false for any
// other.
bool TXmlParser::SkipNameOfOpen() {
    if (open_.empty()) return false;
    const TNameSpan& name = open_.back();
    const int left = finder_.Size() - finder_.Position();
    if (left <= name.length || finder_.b(name.length) != '>') return false;
    const unsigned char* bytes = finder_.Bytes(finder_.Position());
    if (!SameBytes(bytes, finder_.Bytes(name.from), name.length, left)) return false;
    finder_.Skip(name.length);
    return true;
}

int TXmlParser::ParseStartTag() {
    finder_.Skip(1);
    const int start = finder_.Position();
    const int length = PlainKeyLength(finder_, start, '/', '<');
    if (length > 0 && TakeLeaf(length)) return ParseTail();
    UnicodeString name = length > 0 ? TakeKey(length) : ParseKey('/');
    if (name.IsEmpty()) return FailWithout(TEXT("the tag has no name"));
    open_.push_back({start, key_end_ - start});
    if (!doc_.FRootSeen) {
        doc_.FRoot->FName = std::move(name);
        doc_.FCurrent = doc_.FRoot;
        doc_.FRootSeen = true;
    } else {
        doc_.FCurrent = doc_.FCurrent->AppendChild(std::move(name));
    }
    if (doc_.observer_ != nullptr) doc_.observer_->Opened(*doc_.FCurrent, start - 1);
    bool is_bare = false;
    if (finder_.Current() != '/' && finder_.Current() != '>') {
        const int result = ParseAttributes('/');
        if (result < 0 && !bare_name_) return result;
        is_bare = result < 0;
    }
    if (finder_.Current() == '/' && finder_.Next() == '>') {
        finder_.Skip(2);
        return CloseElement();
    }
    if (finder_.Current() != '>' && is_bare) return Error();
    if (finder_.Current() != '>') return Fail(TEXT("the tag does not end with '>' or '/>'"));
    finder_.Skip(1);
    if (doc_.observer_ != nullptr) doc_.observer_->TextBegins(*doc_.FCurrent, finder_.Position());
    const int result = ParseText(doc_.FCurrent->FValue, false);
    return result < 0 ? result : 0;
}

// Reads <name>text</name> in one step; most elements have this form. `length` is the length of the
// plain name at the position; afterwards the position is behind the end tag. False, and nothing has
// changed, for every other element, and when one of its parts needs the general way.
bool TXmlParser::TakeLeaf(int length) {
    if (!doc_.FRootSeen || doc_.observer_ != nullptr) return false;
    const int start = finder_.Position();
    const unsigned char* const name = finder_.Bytes(start);
    const unsigned char* const end = finder_.Bytes(finder_.Size());
    const unsigned char* const text = name + length + 1;
    if (text[-1] != '>' || text == end || *text <= 0x20) return false;
    const unsigned char* const behind = text_.Decode<'<'>(text, end, utf8_);
    if (behind == nullptr || end - behind < length + 3) return false;
    const unsigned char* const repeated = behind + 2;
    if (behind[1] != '/' || repeated[length] != '>' ||
        !SameBytes(repeated, name, length, end - repeated)) {
        return false;
    }
    const auto move_to = [&](const unsigned char* at) {
        finder_.MoveTo(start + static_cast<int>(at - name));
    };
    doc_.FCurrent = doc_.FCurrent->AppendChild(names_.GetTrimmed(finder_, start, start + length));
    move_to(text);
    doc_.FCurrent->FValue = text_.Trimmed();
    move_to(repeated + length + 1);
    return true;
}

// Called behind an end tag or an empty element.
int TXmlParser::CloseElement() {
    if (!open_.empty()) open_.pop_back();
    return ParseTail();
}

// Reads the text up to the next tag and goes back to the owner.
int TXmlParser::ParseTail() {
    if (doc_.FCurrent->GetOwner() == nullptr) return finder_.Position();
    const int start = finder_.Position();
    finder_.SkipBlanks();
    if (finder_.Current() != '<' || !doc_.FCurrent->FTail.IsEmpty()) {
        finder_.MoveTo(start);
        const int result = ParseText(doc_.FCurrent->FTail, false);
        if (result < 0) return result;
    }
    doc_.FCurrent = doc_.FCurrent->GetOwner();
    return 0;
}

UnicodeString TXmlParser::ParseKey(char end) {
    const int start = finder_.Position();
    const char quote = in_attributes_ ? '"' : '<';
    if (const int length = PlainKeyLength(finder_, start, end, quote)) return TakeKey(length);
    finder_.FindAny('<', '>', ' ', '=', end, quote);
    if (finder_.Eof()) return UnicodeString();
    key_end_ = finder_.Position();
    UnicodeString key = names_.Get(finder_, start, key_end_);
    finder_.FindSignificant(&sets_.Significant);
    return key;
}

// Reads the key of `length` plain bytes at the position.
const UnicodeString& TXmlParser::TakeKey(int length) {
    const int start = finder_.Position();
    finder_.Skip(length);
    key_end_ = start + length;
    if (finder_.Current() == ' ') finder_.FindSignificant(&sets_.Significant);
    return names_.GetTrimmed(finder_, start, start + length);
}

int TXmlParser::ParseAttributes(char end) {
    const TInAttributes mark(in_attributes_);
    bare_name_ = false;
    while (finder_.Current() != '>') {
        if (finder_.Current() == static_cast<unsigned char>(end)) break;
        if (!TakeAttribute(end)) {
            const int result = ParseAttribute(end);
            if (result < 0) return result;
        }
        finder_.Skip(1);
        finder_.FindSignificant(&sets_.Significant);
        if (finder_.Eof()) return Fail(TEXT("the tag has no end"));
    }
    return finder_.Position();
}

// Reads name="value" in one step, up to its last quote. False as for TakeLeaf.
bool TXmlParser::TakeAttribute(char tag_end) {
    const int start = finder_.Position();
    const int length = PlainKeyLength(finder_, start, tag_end, '"');
    const unsigned char* const name = finder_.Bytes(start);
    const unsigned char* const end = finder_.Bytes(finder_.Size());
    const unsigned char* const text = name + length + 2;
    if (length == 0 || end - text < 1 || text[-2] != '=' || text[-1] != '"') return false;
    const unsigned char* const behind = text_.Decode<'"'>(text, end, utf8_);
    if (behind == nullptr) return false;
    finder_.MoveTo(start + length + 2);
    doc_.FCurrent->AppendAttribute(names_.GetTrimmed(finder_, start, start + length),
                                   text_.Whole());
    finder_.MoveTo(start + static_cast<int>(behind - name));
    return true;
}

int TXmlParser::ParseAttribute(char end) {
    UnicodeString name = ParseKey(end);
    if (name.IsEmpty()) return FailWithoutAttributeName();
    if (finder_.Current() != '=') {
        bare_name_ = true;
        return Fail(TEXT("the attribute '") + name + TEXT("' has no '='"));
    }
    finder_.Skip(1);
    if (finder_.Current() != '"' && finder_.FindAny('<', '>', '"') != '"') {
        return FailWithout(TEXT("the value of '") + name + TEXT("' is not in double quotes"));
    }
    finder_.Skip(1);
    UnicodeString value;
    const int result = ParseText(value, true);
    if (result >= 0) doc_.FCurrent->AppendAttribute(std::move(name), std::move(value));
    return result;
}

int TXmlParser::ParseText(UnicodeString& text, bool in_attribute) {
    const int start = finder_.Position();
    if (!in_attribute) {
        finder_.SkipBlanks();
        if (finder_.Current() == '<' && text.IsEmpty()) return finder_.Position();
    }
    const unsigned char* const from = finder_.Bytes(finder_.Position());
    const unsigned char* const end = finder_.Bytes(finder_.Size());
    const unsigned char* const to =
        in_attribute ? text_.Decode<'"'>(from, end, utf8_) : text_.Decode<'<'>(from, end, utf8_);
    if (to == nullptr || !text.IsEmpty()) {
        finder_.MoveTo(start);
        return ParsePieces(text, in_attribute);
    }
    text = in_attribute ? text_.Whole() : text_.Trimmed();
    finder_.MoveTo(finder_.Position() + static_cast<int>(to - from));
    return finder_.Position();
}

int TXmlParser::ParsePieces(UnicodeString& text, bool in_attribute) {
    pieces_.clear();
    try {
        return ReadPieces(text, in_attribute);
    } catch (const UnicodeString&) {
        // What stands in front of a byte that starts no character stays, as before other faults.
        AppendPieces(text, pieces_);
        throw;
    }
}

int TXmlParser::ReadPieces(UnicodeString& text, bool in_attribute) {
    const unsigned char end = in_attribute ? '"' : '<';
    TPieces& pieces = pieces_;  // what stands before `start`
    int start = finder_.Position();
    bool in_reference = false;
    unsigned char octet = 0;
    while ((octet = finder_.FindAny('"', '&', ';', '<', '>')) != end) {
        const int at = finder_.Position();
        bool failed = octet == '>' || (octet == '&' && in_reference);
        if (octet == '&' && !in_reference) {
            AppendSpan(pieces, finder_, start, at);
            start = at;
            in_reference = true;
        } else if (octet == ';' && in_reference) {
            failed = !AppendXmlReference(pieces, finder_, start + 1, at);
            if (!failed) start = at + 1;
            in_reference = false;
        }
        if (failed || finder_.Eof()) {
            AppendPieces(text, pieces);
            return failed ? Fail(TextFault(finder_, start, at)) : at;
        }
        finder_.Skip(1);
    }
    const int at = finder_.Position();
    if (pieces.empty() && text.IsEmpty()) {
        int to = at;
        if (!in_attribute) XmlTrimSpan(finder_, start, to);
        text = finder_.Read(start, to);
        return at;
    }
    AppendSpan(pieces, finder_, start, at);
    AppendPieces(text, pieces);
    if (!in_attribute) text = Sysutils::Trim(text);
    return at;
}
