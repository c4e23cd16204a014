// The parsing members of TXmlDoc: one forward pass over the bytes.
#include "xml/xml_parser.h"

#include <cstddef>
#include <string>
#include <utility>

#include "mox_classes/text/sysutils.h"
#include "xml/xml_decode.h"
#include "xml/xml_doc.h"
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

// What is wrong with a text at `at`, where one of '>', '&' and ';' stands; a reference that is open
// begins at `start`.
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

// The length of the key at `at` when it is short, ASCII and ends right before one of the characters
// that end keys; else 0.
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

// Set for as long as it lives.
class TInAttributes {
  public:
    explicit TInAttributes(bool& mark) : mark_(mark) { mark_ = true; }
    ~TInAttributes() { mark_ = false; }
    TInAttributes(const TInAttributes&) = delete;
    TInAttributes& operator=(const TInAttributes&) = delete;

  private:
    bool& mark_;
};

}  // namespace

// Gives the document its scanner, sets and names for one parse, and takes them back however the
// parse ends.
struct TXmlDoc::TParsing {
    TParsing(TXmlDoc& document, TAsciiCharFinder& finder)
        : doc(document), state(finder.TakesUtf8()) {
        doc.FFinder = &finder;
        static const TXmlSearchSets sets;
        doc.FSets = &sets;
        doc.state_ = &state;
        if (!doc.FRootSeen) doc.FCurrent = nullptr;
    }
    ~TParsing() {
        doc.FFinder = nullptr;
        doc.FSets = nullptr;
        doc.state_ = nullptr;
    }
    TParsing(const TParsing&) = delete;
    TParsing& operator=(const TParsing&) = delete;

    TXmlDoc& doc;
    TXmlParseState state;
};

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
    const TParsing parsing(*this, finder);
    try {
        parse_result_ = ParseElements();
    } catch (const UnicodeString& text) {
        parse_result_ = Fail(text);
        throw;
    } catch (...) {
        parse_result_ = Error();
        throw;
    }
    return parse_result_;
}

// Every step below returns 0 to go on, or what Parse is to return: the position behind the root's
// end tag, or the negated position of an error.
int TXmlDoc::ParseElements() {
    while (!FFinder->Eof()) {
        if (FFinder->Current() != '<') {
            const int from = FFinder->Position();
            const bool found = FFinder->FindAny('<', '>') == '<';
            if (observer_ != nullptr) TellPassed(from);
            if (!found) {
                FFinder->Skip(1);
                continue;
            }
        }
        int result = 0;
        switch (FFinder->Next()) {
            case '?':
                result = ParseInstruction();
                break;
            case '!':
                SkipComment();
                break;
            case '[':
                FFinder->Skip(1);
                break;
            case '/':
                result = ParseEndTag();
                break;
            default:
                result = ParseStartTag();
        }
        if (result != 0) return result;
    }
    if (!FRootSeen) {
        fault_ = TEXT("there is no element");
    } else {
        FailAtOpen(TEXT("'") + FCurrent->FName + TEXT("' has no end tag"));
    }
    return 0;
}

// Tells of characters that the scan has passed over between two tags.
void TXmlDoc::TellPassed(int from) {
    int to = FFinder->Position();
    XmlTrimSpan(*FFinder, from, to);
    if (from < to && FRootSeen) observer_->Passed(from);
}

int TXmlDoc::Fail(const UnicodeString& reason) {
    fault_ = reason;
    return Error();
}

// The same for a fault of the innermost open element.
int TXmlDoc::FailAtOpen(const UnicodeString& reason) {
    if (!state_->open.empty()) fault_opened_ = state_->open.back().from - 1;
    return Fail(reason);
}

// 0 would mean the end of the input.
int TXmlDoc::Error() const {
    return FFinder->Position() > 0 ? -FFinder->Position() : -1;
}

int TXmlDoc::ParseInstruction() {
    if (FRootSeen) return Fail(TEXT("an instruction stands behind the root's start tag"));
    FFinder->Skip(2);
    const UnicodeString name = ParseKey('?');
    if (name.IsEmpty()) return Fail(TEXT("the instruction has no name"));
    FCurrent = FProlog->AddChild(name);
    if (FFinder->Current() != '?' || FFinder->Next() != '>') {
        const int result = ParseAttributes('?');
        if (result < 0 && !state_->bare_name) return result;
        if (FFinder->Current() != '?' || FFinder->Next() != '>') {
            return Fail(TEXT("the instruction '") + name + TEXT("' does not end with '?>'"));
        }
    }
    FFinder->Skip(2);
    FCurrent = nullptr;
    return 0;
}

// From a '<' and a '!'. What is not a comment is stepped into: the scan goes on behind the '<'.
void TXmlDoc::SkipComment() {
    if (FFinder->b(2) != '-' || FFinder->b(3) != '-') return FFinder->Skip(1);
    FFinder->Skip(3);
    while (!FFinder->Eof()) {
        const bool end =
            FFinder->FindAny('<', '>') == '>' && FFinder->b(-1) == '-' && FFinder->b(-2) == '-';
        FFinder->Skip(1);
        if (end) return;
    }
}

int TXmlDoc::ParseEndTag() {
    FFinder->Skip(2);
    if (!SkipNameOfOpen()) {
        const UnicodeString name = ParseKey('>');
        if (FFinder->Current() != '>') return Fail(TEXT("the end tag does not end with '>'"));
        if (FCurrent == nullptr) return Fail(TEXT("the end tag closes no element"));
        if (!XmlNamesEqual(name, FCurrent->FName)) {
            return FailAtOpen(TEXT("the end tag is of '") + name +
                              TEXT("', the open element is '") + FCurrent->FName + TEXT("'"));
        }
    }
    FFinder->Skip(1);
    return CloseElement();
}

// The common end tag, which repeats the bytes of the start tag: moves to its '>'.
bool TXmlDoc::SkipNameOfOpen() {
    if (state_->open.empty()) return false;
    const TXmlNameSpan& name = state_->open.back();
    const int left = FFinder->Size() - FFinder->Position();
    if (left <= name.length || FFinder->b(name.length) != '>') return false;
    const unsigned char* bytes = FFinder->Bytes(FFinder->Position());
    if (!SameBytes(bytes, FFinder->Bytes(name.from), name.length, left)) return false;
    FFinder->Skip(name.length);
    return true;
}

int TXmlDoc::ParseStartTag() {
    FFinder->Skip(1);
    const int start = FFinder->Position();
    const int length = PlainKeyLength(*FFinder, start, '/', '<');
    if (length > 0 && TakeLeaf(length)) return ParseTail();
    UnicodeString name = length > 0 ? TakeKey(length) : ParseKey('/');
    if (name.IsEmpty()) return Fail(TEXT("the tag has no name"));
    state_->open.push_back({start, state_->key_end - start});
    if (!FRootSeen) {
        FRoot->FName = std::move(name);
        FCurrent = FRoot;
        FRootSeen = true;
    } else {
        FCurrent = FCurrent->AppendChild(std::move(name));
    }
    if (observer_ != nullptr) observer_->Opened(*FCurrent, start - 1);
    bool is_bare = false;
    if (FFinder->Current() != '/' && FFinder->Current() != '>') {
        const int result = ParseAttributes('/');
        if (result < 0 && !state_->bare_name) return result;
        is_bare = result < 0;
    }
    if (FFinder->Current() == '/' && FFinder->Next() == '>') {
        FFinder->Skip(2);
        return CloseElement();
    }
    if (FFinder->Current() != '>' && is_bare) return Error();
    if (FFinder->Current() != '>') return Fail(TEXT("the tag does not end with '>' or '/>'"));
    FFinder->Skip(1);
    if (observer_ != nullptr) observer_->TextBegins(*FCurrent, FFinder->Position());
    const int result = ParseText(FCurrent->FValue, false);
    return result < 0 ? result : 0;
}

// Takes <name>text</name> in one step, which most elements are: from a name of `length` plain bytes
// to behind the end tag. False, and nothing has changed, for any other element and whenever one of
// the ways of its parts has more to do.
bool TXmlDoc::TakeLeaf(int length) {
    if (!FRootSeen || observer_ != nullptr) return false;
    const int start = FFinder->Position();
    const unsigned char* const name = FFinder->Bytes(start);
    const unsigned char* const end = FFinder->Bytes(FFinder->Size());
    const unsigned char* const text = name + length + 1;
    if (text[-1] != '>' || text == end || *text <= 0x20) return false;
    const unsigned char* const behind = state_->text.Decode<'<'>(text, end, state_->utf8);
    if (behind == nullptr || end - behind < length + 3) return false;
    const unsigned char* const repeated = behind + 2;
    if (behind[1] != '/' || repeated[length] != '>' ||
        !SameBytes(repeated, name, length, end - repeated)) {
        return false;
    }
    const auto move_to = [&](const unsigned char* at) {
        FFinder->MoveTo(start + static_cast<int>(at - name));
    };
    FCurrent = FCurrent->AppendChild(state_->names.GetTrimmed(*FFinder, start, start + length));
    move_to(text);
    FCurrent->FValue = state_->text.Trimmed();
    move_to(repeated + length + 1);
    return true;
}

// Behind an end tag or an empty element.
int TXmlDoc::CloseElement() {
    if (!state_->open.empty()) state_->open.pop_back();
    return ParseTail();
}

// The text up to the next tag, then back to the owner.
int TXmlDoc::ParseTail() {
    if (FCurrent->GetOwner() == nullptr) return FFinder->Position();
    const int start = FFinder->Position();
    FFinder->SkipBlanks();
    if (FFinder->Current() != '<' || !FCurrent->FTail.IsEmpty()) {
        FFinder->MoveTo(start);
        const int result = ParseText(FCurrent->FTail, false);
        if (result < 0) return result;
    }
    FCurrent = FCurrent->GetOwner();
    return 0;
}

UnicodeString TXmlDoc::ParseKey(char end) {
    const int start = FFinder->Position();
    const char quote = state_->in_attributes ? '"' : '<';
    if (const int length = PlainKeyLength(*FFinder, start, end, quote)) return TakeKey(length);
    FFinder->FindAny('<', '>', ' ', '=', end, quote);
    if (FFinder->Eof()) return UnicodeString();
    state_->key_end = FFinder->Position();
    UnicodeString key = state_->names.Get(*FFinder, start, state_->key_end);
    FFinder->FindSignificant(&FSets->Significant);
    return key;
}

// The key of `length` plain bytes at the position.
const UnicodeString& TXmlDoc::TakeKey(int length) {
    const int start = FFinder->Position();
    FFinder->Skip(length);
    state_->key_end = start + length;
    if (FFinder->Current() == ' ') FFinder->FindSignificant(&FSets->Significant);
    return state_->names.GetTrimmed(*FFinder, start, start + length);
}

int TXmlDoc::ParseAttributes(char end) {
    const TInAttributes mark(state_->in_attributes);
    state_->bare_name = false;
    while (FFinder->Current() != '>') {
        if (FFinder->Current() == static_cast<unsigned char>(end)) break;
        if (!TakeAttribute(end)) {
            const int result = ParseAttribute(end);
            if (result < 0) return result;
        }
        FFinder->Skip(1);
        FFinder->FindSignificant(&FSets->Significant);
        if (FFinder->Eof()) return Fail(TEXT("the tag has no end"));
    }
    return FFinder->Position();
}

// Takes name="value" in one step, up to its last quote, as TakeLeaf does.
bool TXmlDoc::TakeAttribute(char tag_end) {
    const int start = FFinder->Position();
    const int length = PlainKeyLength(*FFinder, start, tag_end, '"');
    const unsigned char* const name = FFinder->Bytes(start);
    const unsigned char* const end = FFinder->Bytes(FFinder->Size());
    const unsigned char* const text = name + length + 2;
    if (length == 0 || end - text < 1 || text[-2] != '=' || text[-1] != '"') return false;
    const unsigned char* const behind = state_->text.Decode<'"'>(text, end, state_->utf8);
    if (behind == nullptr) return false;
    FFinder->MoveTo(start + length + 2);
    FCurrent->AppendAttribute(state_->names.GetTrimmed(*FFinder, start, start + length),
                              state_->text.Whole());
    FFinder->MoveTo(start + static_cast<int>(behind - name));
    return true;
}

int TXmlDoc::ParseAttribute(char end) {
    UnicodeString name = ParseKey(end);
    if (name.IsEmpty()) return Fail(TEXT("the attribute has no name"));
    if (FFinder->Current() != '=') {
        state_->bare_name = true;
        return Fail(TEXT("the attribute '") + name + TEXT("' has no '='"));
    }
    FFinder->Skip(1);
    if (FFinder->Current() != '"' && FFinder->FindAny('<', '>', '"') != '"') {
        return Fail(TEXT("the value of '") + name + TEXT("' is not in double quotes"));
    }
    FFinder->Skip(1);
    UnicodeString value;
    const int result = ParseText(value, true);
    if (result >= 0) FCurrent->AppendAttribute(std::move(name), std::move(value));
    return result;
}

int TXmlDoc::ParseText(UnicodeString& text, bool in_attribute) {
    const int start = FFinder->Position();
    if (!in_attribute) {
        FFinder->SkipBlanks();
        if (FFinder->Current() == '<' && text.IsEmpty()) return FFinder->Position();
    }
    const unsigned char* const from = FFinder->Bytes(FFinder->Position());
    const unsigned char* const end = FFinder->Bytes(FFinder->Size());
    const unsigned char* const to = in_attribute
                                        ? state_->text.Decode<'"'>(from, end, state_->utf8)
                                        : state_->text.Decode<'<'>(from, end, state_->utf8);
    if (to == nullptr || !text.IsEmpty()) {
        FFinder->MoveTo(start);
        return ParsePieces(text, in_attribute);
    }
    text = in_attribute ? state_->text.Whole() : state_->text.Trimmed();
    FFinder->MoveTo(FFinder->Position() + static_cast<int>(to - from));
    return FFinder->Position();
}

int TXmlDoc::ParsePieces(UnicodeString& text, bool in_attribute) {
    const unsigned char end = in_attribute ? '"' : '<';
    TPieces& pieces = state_->pieces;  // what stands before `start`
    pieces.clear();
    int start = FFinder->Position();
    bool in_reference = false;
    unsigned char octet = 0;
    while ((octet = FFinder->FindAny('"', '&', ';', '<', '>')) != end) {
        const int at = FFinder->Position();
        bool failed = octet == '>' || (octet == '&' && in_reference);
        if (octet == '&' && !in_reference) {
            AppendSpan(pieces, *FFinder, start, at);
            start = at;
            in_reference = true;
        } else if (octet == ';' && in_reference) {
            failed = !AppendXmlReference(pieces, *FFinder, start + 1, at);
            if (!failed) start = at + 1;
            in_reference = false;
        }
        if (failed || FFinder->Eof()) {
            AppendPieces(text, pieces);
            return failed ? Fail(TextFault(*FFinder, start, at)) : at;
        }
        FFinder->Skip(1);
    }
    const int at = FFinder->Position();
    if (pieces.empty() && text.IsEmpty()) {
        int to = at;
        if (!in_attribute) XmlTrimSpan(*FFinder, start, to);
        text = FFinder->Read(start, to);
        return at;
    }
    AppendSpan(pieces, *FFinder, start, at);
    AppendPieces(text, pieces);
    if (!in_attribute) text = Sysutils::Trim(text);
    return at;
}
