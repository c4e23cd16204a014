// String lists: joining, names and values, growth, copies, bad indices.
#include "mox_classes/containers/string_list.h"

#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <utility>
#include <vector>

#include "support/captured_log.h"
#include "support/thrown_text.h"

namespace {

using test::ThrownText;
using Texts = std::vector<UnicodeString>;

Texts ItemsOf(TStrings& list) {
    Texts items;
    for (int i = 0; i < list.GetCount(); ++i) items.push_back(list.Get(i));
    return items;
}

// Answers in capitals.
class LoudList : public TStringList {
  public:
    UnicodeString Get(int index) override { return TStringList::Get(index).UpperCase(); }
};

class FullList : public TStringList {
    void SetCapacity(int) override {}
};

}  // namespace

TEST(StringList, UnusualDelimitersNeverHang) {
    TStringList list;
    for (const WCHAR unit : {WCHAR{0}, WCHAR{' '}, WCHAR{'"'}, WCHAR{0xD800}}) {
        list.SetDelimiter(unit);
        list.SetDelimitedText(TEXT("a \"b\" c"));
        EXPECT_EQ(ItemsOf(list).front(), TEXT("a"));
        EXPECT_EQ(ItemsOf(list).back(), TEXT("c"));
    }
}

TEST(StringList, JoiningDoesNotQuote) {
    TStringList list;
    EXPECT_TRUE(list.GetDelimitedText().IsEmpty() && list.GetTextStr().IsEmpty());
    list.SetDelimiter('|');
    list.SetQuoteChar('\'');
    list.SetCommaText(TEXT("\"x,y\",b"));
    EXPECT_EQ(list.GetCommaText(), TEXT("x,y,b"));
    EXPECT_EQ(list.GetDelimitedText(), TEXT("x,y|b"));
    EXPECT_EQ(list.GetTextStr(), TEXT("x,y\r\nb\r\n"));
    list.SetDelimitedText(TEXT("'p|q'"));
    EXPECT_EQ(ItemsOf(list), Texts{TEXT("p|q")});
}

TEST(StringList, NamesAndValues) {
    TStringList list;
    list.SetTextStr(TEXT("abc\nkey=a=b\n=x"));
    EXPECT_EQ(list.IndexOfName(TEXT("Key")), -1);
    EXPECT_EQ(list.IndexOfName(TEXT("ke")), -1);
    EXPECT_EQ(list.IndexOfName(TEXT("keys")), -1);
    EXPECT_EQ(list.IndexOfName(TEXT("")), 2);
    EXPECT_EQ(list.GetName(1), TEXT("key"));
    EXPECT_EQ(list.GetValue(TEXT("key")), TEXT("a=b"));
    EXPECT_TRUE(list.GetValue(TEXT("none")).IsEmpty());
    EXPECT_EQ(list.GetValueFromIndex(0), TEXT("bc"));
    EXPECT_TRUE(list.GetValueFromIndex(-1).IsEmpty());

    list.SetValue(TEXT("key"), UnicodeString());
    list.SetValue(TEXT("none"), UnicodeString());
    list.SetValue(TEXT("new"), TEXT("0"));
    list.SetValue(TEXT("new"), TEXT("1"));
    list.SetValueFromIndex(1, TEXT("2"));
    list.SetValueFromIndex(-1, TEXT("3"));
    EXPECT_EQ(ItemsOf(list), (Texts{TEXT("abc"), TEXT("=2"), TEXT("new=1"), TEXT("=3")}));
    list.SetValueFromIndex(0, UnicodeString());
    list.SetValueFromIndex(-1, UnicodeString());
    EXPECT_EQ(list.GetCount(), 3);
}

TEST(StringList, GrowsInFixedStepsAndClearFreesAll) {
    TStringList list;
    const std::pair<int, int> steps[] = {{1, 8}, {9, 16}, {33, 48}, {49, 64}, {5000, 5008}};
    for (const auto& [count, capacity] : steps) {
        while (list.GetCount() < count) list.Add(UnicodeString(list.GetCount()));
        EXPECT_EQ(list.GetCapacity(), capacity);
    }
    list.SetCapacity(3001);
    for (int i = 3001; i < 4000; ++i) list.Insert(0, UnicodeString(i));
    EXPECT_EQ(list.GetCapacity(), 3001 + 63 * 16);
    EXPECT_EQ(ItemsOf(list)[0], TEXT("3999"));
    EXPECT_EQ(ItemsOf(list)[999], TEXT("0"));
    EXPECT_EQ(list.IndexOf(TEXT("3000")), 3999);
    EXPECT_THROW(list.SetCapacity(0x7FFFFFFF), std::bad_alloc);
    EXPECT_EQ(ThrownText([&] { list.SetCapacity(-1); }), TEXT("Out of range"));
    EXPECT_EQ(list.GetCount(), 4000);
    list.Clear();
    EXPECT_EQ(list.GetCapacity() + list.GetCount(), 0);
}

TEST(StringList, ItemsMoveWithTheirObjectsAndCopiesAreDeep) {
    System::TObject first, second;
    TStringList list;
    TStrings& items = list;
    items.AddObject(TEXT("b"), &second);
    items.InsertObject(0, TEXT("a"), &first);
    items.Insert(1, TEXT("between"));
    items.Delete(1);
    items.Put(1, TEXT("B"));

    list.SetDelimiter('|');
    TStringList copy(list);
    TStringList assigned;
    assigned.Add(TEXT("dropped"));
    assigned = copy;
    list.Clear();
    TStrings& copied = assigned;
    EXPECT_EQ(copied.GetDelimitedText(), TEXT("a|B"));
    EXPECT_EQ(copied.Get_Object(0), &first);
    EXPECT_EQ(copied.Get_Object(1), &second);
    EXPECT_EQ(copied.IndexOf(TEXT("b")), -1);
    EXPECT_EQ(copied.IndexOf(TEXT("B")), 1);

    TStringList moved(std::move(assigned));
    EXPECT_EQ(assigned.GetCount() + assigned.GetCapacity(), 0);
    assigned.Add(TEXT("dropped"));
    assigned = std::move(moved);
    EXPECT_EQ(moved.GetCount(), 0);
    EXPECT_EQ(copied.GetDelimitedText(), TEXT("a|B")) << "the delimiter comes along";
}

TEST(StringList, BadIndicesAreLoggedAndThrown) {
    test::CapturedLog log;
    TStringList list;
    TStrings& items = list;
    items.Add(TEXT("x"));
    const std::pair<int, std::function<void()>> rows[] = {{2, [&] { items.Insert(2, TEXT("")); }},
                                                          {-1, [&] { items.Insert(-1, TEXT("")); }},
                                                          {1, [&] { items.Get(1); }},
                                                          {-1, [&] { items.Put(-1, TEXT("")); }},
                                                          {-1, [&] { items.Get_Object(-1); }},
                                                          {1, [&] { items.PutObject(1, nullptr); }},
                                                          {1, [&] { items.Delete(1); }}};
    for (const auto& [index, action] : rows) {
        EXPECT_EQ(ThrownText(action), TEXT("Invalid range of index ") + UnicodeString(index));
    }
    ASSERT_EQ(log.Entries().size(), std::size(rows));
    EXPECT_EQ(log.Entries()[0].level, 'X');
    EXPECT_EQ(log.Entries()[0].source, TEXT("mox_classes"));
    EXPECT_EQ(log.Entries()[0].line, 483);
    EXPECT_EQ(ItemsOf(items), Texts{TEXT("x")});
}

TEST(StringList, AJoinedTextThatWouldPassTheLongestStringIsRefused) {
    TStringList list;
    const UnicodeString long_item = UnicodeString::StringOfChar('x', 1 << 20);
    for (int i = 0; i < 2048; ++i) list.Add(long_item);
    EXPECT_EQ(ThrownText([&] { list.GetTextStr(); }), TEXT("Integer overflow!"));
    EXPECT_EQ(ThrownText([&] { list.GetDelimitedText(); }), TEXT("Integer overflow!"));
}

TEST(StringList, ADerivedListIsAskedForItsItems) {
    LoudList list;
    list.SetCommaText(TEXT("a=1,b"));
    EXPECT_EQ(list.GetCommaText(), TEXT("A=1,B"));
    EXPECT_EQ(list.GetTextStr(), TEXT("A=1\r\nB\r\n"));
    EXPECT_EQ(list.IndexOf(TEXT("B")), 1);
    EXPECT_EQ(list.IndexOfName(TEXT("A")), 0);
    EXPECT_THROW(FullList().Add(TEXT("x")), std::bad_alloc);
}
