// Ordered lists of strings, each with an optional object: delimited text, text of lines, and
// name=value items.
//
// The order of the virtual functions is a contract with the modules that derive from these classes.
#pragma once

#include <windows.h>

#include <utility>

#include "mox_classes/memory/object.h"
#include "mox_classes/text/code_page.h"
#include "mox_classes/text/unicode_string.h"
#include "qv_api.h"

namespace Classes {

using System::TCodePage;
using System::TObject;
using System::UnicodeString;

// The abstract list: text conventions over the virtual item access. Indices are 0-based. A blank is
// a code unit from 1 to 0x20. A text that is split ends at its first 0 unit. A copy takes over the
// five settings, not the items. Results longer than 2147483647 units throw "Integer overflow!". One
// thread at a time.
class QV_API TStrings : public TObject {
  public:
    TStrings();
    TStrings(const TStrings&) = default;
    TStrings& operator=(const TStrings&) = default;
    ~TStrings() override;

    // Both return the index of the new item, which is the last one.
    virtual int Add(UnicodeString s);
    virtual int AddObject(UnicodeString s, TObject* object);
    virtual void Clear() = 0;
    virtual void Insert(int index, UnicodeString s) = 0;
    virtual void Delete(int index) = 0;
    virtual void InsertObject(int index, UnicodeString s, TObject* object);
    // The first item equal to `s`, ordinally; -1 when there is none.
    virtual int IndexOf(UnicodeString s);
    // The first item whose text before the first name/value separator equals `name`; else -1.
    virtual int IndexOfName(UnicodeString name);
    // Reads nothing; returns the count.
    virtual int Parse(void* buffer, int size, TCodePage code_page);
    virtual int GetCount() const = 0;
    virtual int GetCapacity() const;
    virtual void SetCapacity(int capacity);
    // Every item followed by the line break.
    virtual UnicodeString GetTextStr();
    // Lines end at LF, CR LF, LF CR and at the end: a text always gives at least one item.
    virtual void SetTextStr(UnicodeString text);
    virtual UnicodeString Get(int index) = 0;
    virtual void Put(int index, UnicodeString s);
    virtual TObject* Get_Object(int index);
    virtual void PutObject(int index, TObject* object);

    // Joined by the delimiter, without quoting; SetDelimitedText does understand quoting.
    UnicodeString GetDelimitedText();
    void SetDelimitedText(UnicodeString text);
    // The same with ',' and '"'.
    UnicodeString GetCommaText();
    void SetCommaText(UnicodeString text);

    UnicodeString GetName(int index);
    // The text before the first name/value separator; empty without one.
    UnicodeString ExtractName(UnicodeString s);
    // Empty when no item has that name.
    UnicodeString GetValue(UnicodeString name);
    // The null string as value deletes the item; any other value changes it or adds one.
    void SetValue(UnicodeString name, UnicodeString value);
    // The item's text behind the length of its name and one more unit; empty below 0.
    UnicodeString GetValueFromIndex(int index);
    void SetValueFromIndex(int index, UnicodeString value);

    WCHAR GetDelimiter() const { return FDelimiter; }
    void SetDelimiter(WCHAR unit) { FDelimiter = unit; }
    UnicodeString GetLineBreak() const { return FLineBreak; }
    void SetLineBreak(UnicodeString text) { FLineBreak = text; }
    WCHAR GetQuoteChar() const { return FQuoteChar; }
    void SetQuoteChar(WCHAR unit) { FQuoteChar = unit; }
    WCHAR GetNameValueSeparator() const { return FNameValueSeparator; }
    void SetNameValueSeparator(WCHAR unit) { FNameValueSeparator = unit; }
    // Strict: only the delimiter separates. Otherwise blanks do too, and are skipped around items.
    bool GetStrictDelimiter() const { return FStrictDelimiter; }
    void SetStrictDelimiter(bool strict) { FStrictDelimiter = strict; }

  private:
    int NameLength(const UnicodeString& item) const;
    void PutPair(int index, const UnicodeString& name, const UnicodeString& value);
    UnicodeString JoinItems(const UnicodeString& separator, bool after_last);

    WCHAR FDelimiter;
    UnicodeString FLineBreak;
    WCHAR FQuoteChar;
    WCHAR FNameValueSeparator;
    bool FStrictDelimiter;
};

// The list as an array of (string, object). It owns its strings and never the objects. A copy has
// items of its own (the strings' buffers are shared, as with any string). Capacity grows by 8 items
// below 32 and by 16 from there. An index that is out of range is logged and the logged text
// thrown: "Invalid range of index %d". Items are read through TStrings&, where Get is public.
class QV_API TStringList : public TStrings {
  public:
    TStringList() = default;
    TStringList(const TStringList& other);
    TStringList& operator=(const TStringList& other);
    // Takes the items and the five settings; the other has no items then.
    TStringList(TStringList&& other) noexcept
        : TStrings(other),
          FItems(std::exchange(other.FItems, nullptr)),
          FCapacity(std::exchange(other.FCapacity, 0)),
          FCount(std::exchange(other.FCount, 0)) {}
    TStringList& operator=(TStringList&& other) noexcept {
        TStringList taken(std::move(other));
        TStrings::operator=(taken);
        Swap(taken);
        return *this;
    }
    ~TStringList() override;

    void Clear() override;
    void Insert(int index, UnicodeString s) override;
    void Delete(int index) override;
    void InsertObject(int index, UnicodeString s, TObject* object) override;
    int GetCount() const override { return FCount; }
    int GetCapacity() const override { return FCapacity; }
    // Drops the items that no longer fit. Throws "Out of range" below 0.
    void SetCapacity(int capacity) override;
    void Put(int index, UnicodeString s) override;

  protected:
    UnicodeString Get(int index) override;
    TObject* Get_Object(int index) override;
    void PutObject(int index, TObject* object) override;
    // `index` is within 0 .. count.
    virtual void InsertItem(int index, UnicodeString s, TObject* object);

  private:
    friend class TItemAccess;
    struct TItem {
        UnicodeString Text;
        TObject* Object;
    };

    void Swap(TStringList& other) noexcept {
        std::swap(FItems, other.FItems);
        std::swap(FCapacity, other.FCapacity);
        std::swap(FCount, other.FCount);
    }
    void Grow();
    void Append(UnicodeString s);
    TItem& ItemAt(int index, int line = __builtin_LINE());
    void ReleaseItems(int first);

    TItem* FItems = nullptr;
    int FCapacity = 0;
    int FCount = 0;
};

}  // namespace Classes

using Classes::TStringList;
using Classes::TStrings;
