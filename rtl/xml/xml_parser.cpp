// The parsing members of TXmlDoc: one forward pass over the bytes.
#include "xml/xml_parser.h"

#include <functional>
#include <memory>
#include <string>

#include "mox_classes/sysutils.h"
#include "xml/xml_decode.h"
#include "xml/xml_doc.h"

TXmlSearchSets::TXmlSearchSets() {
    for (const char octet : {'<', '>'}) Tag[octet] = 1;
    for (const char octet : {'"', '&', ';', '<', '>'}) Text[octet] = 1;
    Significant.NoneControl(1);
}

UnicodeString TXmlNameCache::Get(const TAsciiCharFinder& finder, int from, int to) {
    const unsigned char* bytes = finder.Bytes(0);
    while (from < to && bytes[from] <= 0x20) ++from;
    while (from < to && bytes[to - 1] <= 0x20) --to;
    const std::string_view key(reinterpret_cast<const char*>(bytes) + from,
                               static_cast<std::size_t>(to - from));
    if (key.empty()) return UnicodeString();
    Entry& entry = entries_[std::hash<std::string_view>()(key) % entries_.size()];
    if (entry.bytes != key) entry = {key, finder.Read(from, to)};
    return entry.name;
}

namespace {

// The code point of a numeric reference: what stands behind its '#'. Other characters than digits
// are passed over, too large numbers wrap.
std::uint32_t NumberOf(const UnicodeString& reference) {
    const bool hexadecimal = reference.Length() > 0 && *reference.t_str() == TEXT('x');
    const UnicodeString digits = Sysutils::LowerCase(
        Sysutils::Trim(hexadecimal ? reference.SubString(2, reference.Length()) : reference));
    if (hexadecimal && digits.Length() > 8) return 0;
    std::uint32_t value = 0;
    for (int i = 0; i < digits.Length(); ++i) {
        const WCHAR unit = digits.t_str()[i];
        if (unit >= TEXT('0') && unit <= TEXT('9')) {
            value = value * (hexadecimal ? 16u : 10u) + (unit - TEXT('0'));
        } else if (hexadecimal && unit >= TEXT('a') && unit <= TEXT('f')) {
            value = value * 16u + 10u + (unit - TEXT('a'));
        }
    }
    return value;
}

struct TNamedReference {
    const WCHAR* name;
    const WCHAR* text;
};
constexpr TNamedReference kReferences[] = {
    {TEXT("gt"), TEXT(">")},  {TEXT("lt"), TEXT("<")},   {TEXT("quot"), TEXT("\"")},
    {TEXT("amp"), TEXT("&")}, {TEXT("nbsp"), TEXT(" ")}, {TEXT("apos"), TEXT("'")},
};

void Append(std::basic_string<WCHAR>& text, const UnicodeString& piece) {
    text.append(piece.t_str(), static_cast<std::size_t>(piece.Length()));
}

void AppendPieces(UnicodeString& text, const std::basic_string<WCHAR>& pieces) {
    text += UnicodeString(pieces.data(), static_cast<long long>(pieces.size()));
}

// Appends what the reference between '&' and ';' stands for; false for an unknown name.
bool AppendReference(std::basic_string<WCHAR>& text, const UnicodeString& reference) {
    if (reference.Length() > 0 && *reference.t_str() == TEXT('#')) {
        const std::uint32_t point = NumberOf(reference.SubString(2, reference.Length()));
        Append(text, UnicodeString(&point, 1));
        return true;
    }
    const UnicodeString name = Sysutils::LowerCase(reference);
    for (const TNamedReference& row : kReferences) {
        if (!XmlNamesEqual(name, row.name)) continue;
        text.append(row.text);
        return true;
    }
    return false;
}

// The text from `from` to `to` of the scanned bytes, trimmed.
UnicodeString ReadTrimmed(const TAsciiCharFinder& finder, int from, int to) {
    const unsigned char* bytes = finder.Bytes(0);
    while (from < to && bytes[from] <= 0x20) ++from;
    while (from < to && bytes[to - 1] <= 0x20) --to;
    return finder.Read(from, to);
}

}  // namespace

// Gives the document its scanner, sets and names for one parse, and takes them back however the
// parse ends.
struct TXmlDoc::TParsing {
    TParsing(TXmlDoc& document, TAsciiCharFinder& finder) : doc(document) {
        doc.FFinder = &finder;
        doc.FSets = &sets;
        doc.names_ = names.get();
        if (!doc.FRootSeen) doc.FCurrent = nullptr;
    }
    ~TParsing() {
        doc.FFinder = nullptr;
        doc.FSets = nullptr;
        doc.names_ = nullptr;
    }
    TParsing(const TParsing&) = delete;
    TParsing& operator=(const TParsing&) = delete;

    TXmlDoc& doc;
    TXmlSearchSets sets;
    std::unique_ptr<TXmlNameCache> names = std::make_unique<TXmlNameCache>();
};

int TXmlDoc::Parse(const void* buffer, int size) {
    parse_result_ = 0;
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
    return parse_result_;
}

int TXmlDoc::ParseWith(TAsciiCharFinder& finder) {
    const TParsing parsing(*this, finder);
    try {
        parse_result_ = ParseElements();
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
        if (FFinder->Find(&FSets->Tag) != '<') {
            FFinder->Skip(1);
            continue;
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
    return 0;
}

// 0 would mean the end of the input.
int TXmlDoc::Error() const {
    return FFinder->Position() > 0 ? -FFinder->Position() : -1;
}

int TXmlDoc::ParseInstruction() {
    if (FRootSeen) return Error();
    FFinder->Skip(2);
    const UnicodeString name = ParseKey('?');
    if (name.IsEmpty()) return Error();
    FCurrent = FProlog->AddChild(name);
    if (FFinder->Current() != '?' || FFinder->Next() != '>') {
        const int result = ParseAttributes('?');
        if (result < 0 && !bare_name_) return result;
        if (FFinder->Current() != '?' || FFinder->Next() != '>') return Error();
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
            FFinder->Find(&FSets->Tag) == '>' && FFinder->b(-1) == '-' && FFinder->b(-2) == '-';
        FFinder->Skip(1);
        if (end) return;
    }
}

int TXmlDoc::ParseEndTag() {
    FFinder->Skip(2);
    const UnicodeString name = ParseKey('>');
    if (FFinder->Current() != '>' || FCurrent == nullptr) return Error();
    if (!XmlNamesEqual(name, FCurrent->FName)) return Error();
    FFinder->Skip(1);
    return CloseElement();
}

int TXmlDoc::ParseStartTag() {
    FFinder->Skip(1);
    const UnicodeString name = ParseKey('/');
    if (name.IsEmpty()) return Error();
    if (!FRootSeen) {
        FRoot->FName = name;
        FCurrent = FRoot;
        FRootSeen = true;
    } else {
        FCurrent = FCurrent->AddChild(name);
    }
    if (FFinder->Current() != '/' && FFinder->Current() != '>') {
        const int result = ParseAttributes('/');
        if (result < 0 && !bare_name_) return result;
    }
    if (FFinder->Current() == '/' && FFinder->Next() == '>') {
        FFinder->Skip(2);
        return CloseElement();
    }
    if (FFinder->Current() != '>') return Error();
    FFinder->Skip(1);
    const int result = ParseText(FCurrent->FValue, false);
    return result < 0 ? result : 0;
}

// Behind an end tag or an empty element: the tail, then back to the owner.
int TXmlDoc::CloseElement() {
    if (FCurrent->GetOwner() == nullptr) return FFinder->Position();
    const int result = ParseText(FCurrent->FTail, false);
    if (result < 0) return result;
    FCurrent = FCurrent->GetOwner();
    return 0;
}

UnicodeString TXmlDoc::ParseKey(char end) {
    const TMemberFor blank(FSets->Tag, ' ');
    const TMemberFor equal(FSets->Tag, '=');
    const TMemberFor last(FSets->Tag, end);
    const int start = FFinder->Position();
    FFinder->Find(&FSets->Tag);
    if (FFinder->Eof()) return UnicodeString();
    const UnicodeString key = names_->Get(*FFinder, start, FFinder->Position());
    FFinder->Find(&FSets->Significant);
    return key;
}

int TXmlDoc::ParseAttributes(char end) {
    const TMemberFor quote(FSets->Tag, '"');
    bare_name_ = false;
    while (FFinder->Current() != '>') {
        if (FFinder->Current() == static_cast<unsigned char>(end)) break;
        const UnicodeString name = ParseKey(end);
        if (name.IsEmpty()) return Error();
        if (FFinder->Current() != '=') {
            bare_name_ = true;
            return Error();
        }
        FFinder->Skip(1);
        if (FFinder->Find(&FSets->Tag) != '"') return Error();
        FFinder->Skip(1);
        UnicodeString value;
        const int result = ParseText(value, true);
        if (result < 0) return result;
        FCurrent->AddAttribute(name, value);
        FFinder->Skip(1);
        FFinder->Find(&FSets->Significant);
        if (FFinder->Eof()) return Error();
    }
    return FFinder->Position();
}

int TXmlDoc::ParseText(UnicodeString& text, bool in_attribute) {
    const unsigned char end = in_attribute ? '"' : '<';
    std::basic_string<WCHAR> pieces;  // what stands before `start`, once there is a reference
    int start = FFinder->Position();
    bool in_reference = false;
    unsigned char octet = 0;
    while ((octet = FFinder->Find(&FSets->Text)) != end) {
        const int at = FFinder->Position();
        bool failed = octet == '>' || (octet == '&' && in_reference);
        if (octet == '&' && !in_reference) {
            Append(pieces, FFinder->Read(start, at));
            start = at;
            in_reference = true;
        } else if (octet == ';' && in_reference) {
            failed = !AppendReference(pieces, FFinder->Read(start + 1, at));
            start = at + 1;
            in_reference = false;
        }
        if (failed || FFinder->Eof()) {
            AppendPieces(text, pieces);
            return failed ? Error() : at;
        }
        FFinder->Skip(1);
    }
    const int at = FFinder->Position();
    if (pieces.empty() && text.IsEmpty()) {
        text = in_attribute ? FFinder->Read(start, at) : ReadTrimmed(*FFinder, start, at);
        return at;
    }
    Append(pieces, FFinder->Read(start, at));
    AppendPieces(text, pieces);
    if (!in_attribute) text = Sysutils::Trim(text);
    return at;
}
