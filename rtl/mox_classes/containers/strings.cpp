// TStrings: the text conventions of all lists.
#include <climits>
#include <cstdint>
#include <string>
#include <typeinfo>
#include <utility>

#include "mox_classes/containers/string_list.h"
#include "mox_classes/text/sysutils_text.h"
#include "mox_classes/units/unit_copy.h"
#include "mox_classes/units/unit_ends.h"
#include "mox_classes/units/unit_scan.h"

namespace Classes {

namespace {

constexpr WCHAR kCarriageReturn = 13;
constexpr WCHAR kLineFeed = 10;

using Units = std::char_traits<WCHAR>;

bool IsBlank(WCHAR unit) {
    return unit >= 1 && unit <= 0x20;
}

const WCHAR* SkipBlanks(const WCHAR* p) {
    while (IsBlank(*p)) ++p;
    return p;
}

UnicodeString TextBetween(const WCHAR* begin, const WCHAR* end) {
    return UnicodeString(begin, static_cast<long long>(end - begin));
}

// Fills a string whose length was measured before. When a list gives other items the second time,
// the text is cut; nothing is written behind its end.
class TFiller {
  public:
    explicit TFiller(UnicodeString& target) : place_(target.data()), room_(target.Length()) {}
    void Append(const UnicodeString& text) {
        const int count = text.Length() < room_ ? text.Length() : room_;
        System::CopyUnits(place_, text.t_str(), count);
        place_ += count;
        room_ -= count;
    }
    int Room() const { return room_; }

  private:
    WCHAR* place_;
    int room_;
};

}  // namespace

// Reads and adds the items of a list. A plain TStringList is read directly: the virtual GetString
// shares each string, which takes two thirds of the time of a comparison, and the virtual steps of
// Add take a quarter of an Add. A derived class may override them, so it is called.
class TItemAccess {
  public:
    explicit TItemAccess(TStrings& list)
        : list_(list),
          plain_(typeid(list) == typeid(TStringList) ? static_cast<TStringList*>(&list) : nullptr) {
    }
    const UnicodeString& operator[](int index) {
        if (plain_ != nullptr) return plain_->ItemAt(index).Text;
        held_ = list_.Get(index);
        return held_;
    }
    void Add(UnicodeString text) {
        if (plain_ != nullptr) {
            plain_->Append(std::move(text));
        } else {
            list_.Add(std::move(text));
        }
    }

  private:
    TStrings& list_;
    TStringList* plain_;
    UnicodeString held_;
};

TStrings::TStrings()
    : FDelimiter(','),
      FLineBreak(TEXT("\r\n")),
      FQuoteChar('"'),
      FNameValueSeparator('='),
      FStrictDelimiter(false) {}

TStrings::~TStrings() = default;

int TStrings::Add(UnicodeString s) {
    const int index = GetCount();
    Insert(index, std::move(s));
    return index;
}

int TStrings::AddObject(UnicodeString s, TObject* object) {
    const int index = Add(std::move(s));
    PutObject(index, object);
    return index;
}

void TStrings::InsertObject(int index, UnicodeString s, TObject* object) {
    Insert(index, std::move(s));
    PutObject(index, object);
}

int TStrings::IndexOf(UnicodeString s) {
    const int count = GetCount();
    TItemAccess items(*this);
    for (int i = 0; i < count; ++i) {
        if (items[i] == s) return i;
    }
    return -1;
}

int TStrings::IndexOfName(UnicodeString name) {
    const int count = GetCount();
    TItemAccess items(*this);
    for (int i = 0; i < count; ++i) {
        const UnicodeString& item = items[i];
        const int length = NameLength(item);
        if (length < 0 || name.Length() < length) continue;
        const bool begins_alike =
            Units::compare(item.t_str(), name.t_str(), static_cast<std::size_t>(length)) == 0;
        if (begins_alike && name.t_str()[length] == 0) return i;
    }
    return -1;
}

int TStrings::Parse(void* /*buffer*/, int /*size*/, TCodePage /*code_page*/) {
    return GetCount();
}

int TStrings::GetCapacity() const {
    return GetCount();
}

void TStrings::SetCapacity(int /*capacity*/) {}

void TStrings::Put(int index, UnicodeString s) {
    TObject* object = Get_Object(index);
    Delete(index);
    InsertObject(index, std::move(s), object);
}

TObject* TStrings::Get_Object(int /*index*/) {
    return nullptr;
}

void TStrings::PutObject(int /*index*/, TObject* /*object*/) {}

UnicodeString TStrings::JoinItems(const UnicodeString& separator, bool after_last) {
    const int count = GetCount();
    if (count <= 0) return UnicodeString();
    const int separators = after_last ? count : count - 1;
    TItemAccess items(*this);
    std::int64_t length = std::int64_t{separators} * separator.Length();
    for (int i = 0; i < count; ++i) length += items[i].Length();
    if (length > INT_MAX) throw UnicodeString(TEXT("Integer overflow!"));

    UnicodeString text;
    text.SetLength(length);
    TFiller filler(text);
    for (int i = 0; i < count; ++i) {
        filler.Append(items[i]);
        if (i < separators) filler.Append(separator);
    }
    if (filler.Room() > 0) text.SetLength(text.Length() - filler.Room());
    return text;
}

UnicodeString TStrings::GetTextStr() {
    return JoinItems(FLineBreak, true);
}

UnicodeString TStrings::GetDelimitedText() {
    return JoinItems(UnicodeString(FDelimiter), false);
}

void TStrings::SetTextStr(UnicodeString text) {
    Clear();
    TItemAccess items(*this);
    const WCHAR* p = text.t_str();
    for (;;) {
        const WCHAR* begin = p;
        while (*p != kLineFeed && *p != 0) ++p;
        const bool after_return = p > begin && p[-1] == kCarriageReturn;
        items.Add(TextBetween(begin, after_return ? p - 1 : p));
        if (*p == 0) return;
        ++p;
        if (*p == kCarriageReturn) ++p;
    }
}

void TStrings::SetDelimitedText(UnicodeString text) {
    Clear();
    TItemAccess items(*this);
    const bool strict = FStrictDelimiter;
    const WCHAR delimiter = FDelimiter;
    const System::TUnitEnds ends(delimiter, strict ? WCHAR{0} : WCHAR{0x20});
    const auto skip = [strict](const WCHAR* p) { return strict ? p : SkipBlanks(p); };
    const WCHAR* const end = text.t_str() + text.Length();
    const WCHAR* p = skip(text.t_str());
    while (*p != 0) {
        if (*p == FQuoteChar) {
            items.Add(Sysutils::AnsiExtractQuotedStr(p, FQuoteChar));
        } else {
            const WCHAR* begin = p;
            p = ends.Next(p, end);
            items.Add(TextBetween(begin, p));
        }
        p = skip(p);
        if (*p != 0 && *p == delimiter) {
            if (p[1] == 0) items.Add(UnicodeString());
            p = skip(p + 1);
        }
    }
}

namespace {

// Sets a list's delimiter and quote to ',' and '"', and gives them back when it ends.
class TCommaSettings {
  public:
    explicit TCommaSettings(TStrings& list)
        : list_(list), delimiter_(list.GetDelimiter()), quote_(list.GetQuoteChar()) {
        list_.SetDelimiter(',');
        list_.SetQuoteChar('"');
    }
    TCommaSettings(const TCommaSettings&) = delete;
    TCommaSettings& operator=(const TCommaSettings&) = delete;
    ~TCommaSettings() {
        list_.SetDelimiter(delimiter_);
        list_.SetQuoteChar(quote_);
    }

  private:
    TStrings& list_;
    WCHAR delimiter_;
    WCHAR quote_;
};

}  // namespace

UnicodeString TStrings::GetCommaText() {
    const TCommaSettings comma(*this);
    return GetDelimitedText();
}

void TStrings::SetCommaText(UnicodeString text) {
    const TCommaSettings comma(*this);
    SetDelimitedText(std::move(text));
}

// The length of the item's name; -1 when the item has no separator.
int TStrings::NameLength(const UnicodeString& item) const {
    if (FNameValueSeparator == 0) return 0;
    const int at = System::FindUnitOrEnd(item.t_str(), item.Length(), FNameValueSeparator);
    return item.t_str()[at] == FNameValueSeparator ? at : -1;
}

UnicodeString TStrings::ExtractName(UnicodeString s) {
    return s.SubString(1, NameLength(s));
}

UnicodeString TStrings::GetName(int index) {
    return ExtractName(Get(index));
}

UnicodeString TStrings::GetValue(UnicodeString name) {
    const int index = IndexOfName(name);
    return index < 0 ? UnicodeString() : Get(index).SubString(name.Length() + 2, INT_MAX);
}

void TStrings::SetValue(UnicodeString name, UnicodeString value) {
    const int index = IndexOfName(name);
    if (value.IsEmpty()) {
        if (index >= 0) Delete(index);
        return;
    }
    PutPair(index, name, value);
}

UnicodeString TStrings::GetValueFromIndex(int index) {
    return index < 0 ? UnicodeString() : Get(index).SubString(GetName(index).Length() + 2, INT_MAX);
}

void TStrings::SetValueFromIndex(int index, UnicodeString value) {
    if (value.IsEmpty()) {
        if (index >= 0) Delete(index);
        return;
    }
    PutPair(index, index < 0 ? UnicodeString() : GetName(index), value);
}

// Adds an item for an index below 0. Its text is made first, so that no empty item stays behind
// when that fails.
void TStrings::PutPair(int index, const UnicodeString& name, const UnicodeString& value) {
    UnicodeString item = name + UnicodeString(FNameValueSeparator) + value;
    if (index < 0) index = Add(UnicodeString());
    Put(index, std::move(item));
}

}  // namespace Classes
