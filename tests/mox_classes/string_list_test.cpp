// String lists: splitting and joining, names and values, growth, copies, bad indices.
#include "mox_classes/containers/string_list.h"

#include <gtest/gtest.h>

#include <new>
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

Texts Split(const WCHAR* text, bool strict = false) {
    TStringList list;
    list.SetStrictDelimiter(strict);
    list.SetDelimitedText(text);
    return ItemsOf(list);
}

Texts Lines(const WCHAR* text) {
    TStringList list;
    list.SetTextStr(text);
    return ItemsOf(list);
}

}  // namespace

TEST(StringList, BlanksAndDelimitersSeparateUnlessStrict) {
    const struct {
        const WCHAR* text;
        Texts items;
    } cases[] = {
        {TEXT("a, b ,  c"), {TEXT("a"), TEXT("b"), TEXT("c")}},
        {TEXT("a b"), {TEXT("a"), TEXT("b")}},
        {TEXT("a,,b"), {TEXT("a"), TEXT(""), TEXT("b")}},
        {TEXT("a,"), {TEXT("a"), TEXT("")}},
        {TEXT("a, "), {TEXT("a")}},
        {TEXT(" \t\x01"), {}},
        {TEXT(""), {}},
        {TEXT("\"x,y\""), {TEXT("x,y")}},
        {TEXT("\"say, \"\"hi\"\"\""), {TEXT("say, \"hi\"")}},
        {TEXT("\"abc"), {TEXT("ab")}},
        {TEXT("\"ab\"cd"), {TEXT("ab"), TEXT("cd")}},
        {TEXT("a\"b,\"\""), {TEXT("a\"b"), TEXT("")}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(Split(c.text), c.items) << testing::PrintToString(UnicodeString(c.text));
    EXPECT_EQ(Split(TEXT("a b, c"), true), (Texts{TEXT("a b"), TEXT(" c")}));
    EXPECT_EQ(Split(TEXT(", "), true), (Texts{TEXT(""), TEXT(" ")}));
}

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
    EXPECT_TRUE(list.GetDelimitedText().IsEmpty());
    EXPECT_TRUE(list.GetTextStr().IsEmpty());
    list.SetDelimiter('|');
    list.SetCommaText(TEXT("\"x,y\",b"));
    EXPECT_EQ(list.GetCommaText(), TEXT("x,y,b"));
    EXPECT_EQ(list.GetDelimitedText(), TEXT("x,y|b"));
    EXPECT_EQ(list.GetTextStr(), TEXT("x,y\r\nb\r\n"));
}

TEST(StringList, LinesEndAtLineFeedWithOneReturnBesideIt) {
    EXPECT_EQ(Lines(TEXT("a\r\nb")), (Texts{TEXT("a"), TEXT("b")}));
    EXPECT_EQ(Lines(TEXT("a\n\rb")), (Texts{TEXT("a"), TEXT("b")}));
    EXPECT_EQ(Lines(TEXT("a\rb")), (Texts{TEXT("a\rb")}));
    EXPECT_EQ(Lines(TEXT("a\r")), (Texts{TEXT("a")}));
    EXPECT_EQ(Lines(TEXT("a\r\n")), (Texts{TEXT("a"), TEXT("")}));
    EXPECT_EQ(Lines(TEXT("a\n\r\nb")), (Texts{TEXT("a"), TEXT(""), TEXT("b")}));
    EXPECT_EQ(Lines(TEXT("")), (Texts{TEXT("")}));
}

TEST(StringList, NamesAndValues) {
    TStringList list;
    list.SetTextStr(TEXT("abc\nkey=a=b\n=x"));
    EXPECT_EQ(list.IndexOfName(TEXT("Key")), -1);
    EXPECT_EQ(list.IndexOfName(TEXT("ke")), -1);
    EXPECT_EQ(list.IndexOfName(TEXT("")), 2);
    EXPECT_EQ(list.GetValue(TEXT("key")), TEXT("a=b"));
    EXPECT_TRUE(list.GetValue(TEXT("none")).IsEmpty());
    EXPECT_EQ(list.GetValueFromIndex(0), TEXT("bc"));
    EXPECT_TRUE(list.GetValueFromIndex(-1).IsEmpty());

    list.SetValue(TEXT("key"), UnicodeString());
    list.SetValue(TEXT("none"), UnicodeString());
    list.SetValue(TEXT("new"), TEXT("1"));
    list.SetValueFromIndex(1, TEXT("2"));
    list.SetValueFromIndex(-1, TEXT("3"));
    EXPECT_EQ(ItemsOf(list), (Texts{TEXT("abc"), TEXT("=2"), TEXT("new=1"), TEXT("=3")}));
}

TEST(StringList, GrowsInFixedStepsAndClearFreesAll) {
    TStringList list;
    const struct { int count, capacity; } steps[] = {{1, 8}, {9, 16}, {25, 32}, {33, 48}, {49, 64}};
    for (const auto& step : steps) {
        while (list.GetCount() < step.count) list.Add(TEXT("x"));
        EXPECT_EQ(list.GetCapacity(), step.capacity);
    }
    list.SetCapacity(3);
    EXPECT_EQ(list.GetCount(), 3);
    EXPECT_EQ(ThrownText([&] { list.SetCapacity(-1); }), TEXT("Out of range"));
    list.Clear();
    EXPECT_EQ(list.GetCapacity(), 0);
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

    TStringList copy(list);
    TStringList assigned;
    assigned.Add(TEXT("dropped"));
    assigned = copy;
    list.Clear();
    TStrings& copied = assigned;
    EXPECT_EQ(ItemsOf(copied), (Texts{TEXT("a"), TEXT("B")}));
    EXPECT_EQ(copied.Get_Object(0), &first);
    EXPECT_EQ(copied.Get_Object(1), &second);
    EXPECT_EQ(copied.IndexOf(TEXT("b")), -1);
    EXPECT_EQ(copied.IndexOf(TEXT("B")), 1);
}

TEST(StringList, BadIndicesAreLoggedAndThrown) {
    test::CapturedLog log;
    TStringList list;
    TStrings& items = list;
    items.Add(TEXT("x"));
    EXPECT_EQ(ThrownText([&] { items.Insert(2, TEXT("")); }), TEXT("Invalid range of index 2"));
    ASSERT_EQ(log.Entries().size(), 1u);
    EXPECT_EQ(log.Entries()[0].level, 'X');
    EXPECT_EQ(log.Entries()[0].source, TEXT("mox_classes"));
    EXPECT_EQ(log.Entries()[0].line, 483);

    const UnicodeString below = TEXT("Invalid range of index -1");
    EXPECT_EQ(ThrownText([&] { items.InsertObject(-1, TEXT(""), nullptr); }), below);
    EXPECT_EQ(ThrownText([&] { items.Get(-1); }), below);
    EXPECT_EQ(ThrownText([&] { items.Put(-1, TEXT("")); }), below);
    EXPECT_EQ(ThrownText([&] { items.Get_Object(-1); }), below);
    EXPECT_EQ(ThrownText([&] { items.PutObject(1, nullptr); }), TEXT("Invalid range of index 1"));
    EXPECT_EQ(ThrownText([&] { items.Delete(1); }), TEXT("Invalid range of index 1"));
    EXPECT_EQ(ItemsOf(items), (Texts{TEXT("x")}));
}

TEST(StringList, AJoinedTextThatWouldPassTheLongestStringIsRefused) {
    TStringList list;
    const UnicodeString long_item = UnicodeString::StringOfChar('x', 1 << 20);
    for (int i = 0; i < 2048; ++i) list.Add(long_item);
    EXPECT_EQ(ThrownText([&] { list.GetTextStr(); }), TEXT("Integer overflow!"));
    EXPECT_EQ(ThrownText([&] { list.GetDelimitedText(); }), TEXT("Integer overflow!"));
}

TEST(StringList, LargeListsKeepTheirStepsAndTheirItems) {
    TStringList list;
    TStrings& items = list;
    for (int i = 0; i < 5000; ++i) items.Add(UnicodeString(i));
    EXPECT_EQ(list.GetCapacity(), 5008);
    list.SetCapacity(3001);
    for (int i = 3001; i < 4000; ++i) items.Insert(0, UnicodeString(i));
    EXPECT_EQ(list.GetCapacity(), 3001 + 63 * 16);
    EXPECT_EQ(items.Get(0), TEXT("3999"));
    EXPECT_EQ(items.Get(999), TEXT("0"));
    EXPECT_EQ(items.IndexOf(TEXT("3000")), 3999);
    EXPECT_THROW(list.SetCapacity(0x7FFFFFFF), std::bad_alloc);
    EXPECT_EQ(list.GetCount(), 4000);
}

namespace {

// Answers in capitals.
class LoudList : public TStringList {
  public:
    UnicodeString Get(int index) override { return TStringList::Get(index).UpperCase(); }
};

}  // namespace

TEST(StringList, ADerivedListIsAskedForItsItems) {
    LoudList list;
    list.SetCommaText(TEXT("a=1,b"));
    EXPECT_EQ(list.GetCommaText(), TEXT("A=1,B"));
    EXPECT_EQ(list.GetTextStr(), TEXT("A=1\r\nB\r\n"));
    EXPECT_EQ(list.IndexOf(TEXT("B")), 1);
    EXPECT_EQ(list.IndexOfName(TEXT("A")), 0);
}
