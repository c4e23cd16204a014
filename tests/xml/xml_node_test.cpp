// The XML tree: lookups, attributes, paths, the exact index, and its cost.
#include "xml/xml_node.h"

#include <gtest/gtest.h>

#include <type_traits>
#include <utility>

#include "mox_classes/text/sysutils_text.h"
#include "xml/xml_test.h"

using test::Utf8;

namespace {

constexpr TCodePage kUtf8 = System::kCodePageUtf8;

// Opens the protected part of a list.
class TOpenItems : public TXmlItems {
  public:
    using TXmlItems::Build;
    using TXmlItems::FCount;
    using TXmlItems::FindEmptySlot;
    using TXmlItems::FList;
    using TXmlItems::FSlots;

    void Add(const UnicodeString& name) {
        auto* pair = new TXmlPair;
        pair->FName = name;
        AddItem(pair);
    }
};

TEST(XmlNode, ChildrenOfOneNameAreFoundInInsertionOrder) {
    TXmlNode node;
    for (const WCHAR* name : {TEXT("a"), TEXT("b"), TEXT("a")}) node.AddChild(name);
    int at[3] = {-1, -1, -1};
    EXPECT_EQ(node.FindChild(TEXT("a"), kUtf8), node.GetChild(0));
    EXPECT_EQ(node.EnumChild(at, 1, TEXT("a"), kUtf8), 2);
    EXPECT_EQ(at[0], 0);
    EXPECT_EQ(at[1], -1);
    EXPECT_EQ(node.EnumChild(at, 2, TEXT("a"), kUtf8), 2);
    EXPECT_EQ(at[1], 2);
    EXPECT_EQ(node.FindChild(TEXT("A"), kUtf8), nullptr);
    EXPECT_EQ(node.GetChild(-1), nullptr);
    EXPECT_EQ(node.GetChild(node.ChildCount()), nullptr);
    EXPECT_EQ(node.GetChild(2)->GetOwner(), &node);
}

TEST(XmlNode, TheFirstValueOfAnAttributeStaysUntilItIsSet) {
    TXmlNode node;
    ASSERT_NE(node.AddAttribute(TEXT("a"), TEXT("1")), nullptr);
    node.AddAttribute(TEXT("b"), TEXT("x"));
    EXPECT_EQ(node.AddAttribute(TEXT("a"), TEXT("2")), nullptr);
    EXPECT_EQ(node.AttrGetInteger(TEXT("a"), kUtf8), 1);
    EXPECT_EQ(node.SetAttribute(TEXT("a"), TEXT("2"), kUtf8), node.GetAttribute(0));
    EXPECT_EQ(node.AttributeCount(), 2);
    EXPECT_EQ(node.AttrGetInteger(TEXT("a"), kUtf8), 2);
    EXPECT_EQ(node.AttrGetInteger(TEXT("b"), kUtf8), 0);
    EXPECT_TRUE(node.AttrGetString(TEXT("c"), kUtf8).IsEmpty());
    EXPECT_TRUE(node.ChildGetText(TEXT("c"), kUtf8).IsEmpty());
}

TEST(XmlNode, PathsWalkDownChildNames) {
    TXmlNode node;
    TXmlNode* a = node.AddChild(TEXT("a"));
    TXmlNode* b = a->AddChild(TEXT("b"));
    TXmlNode* odd = node.AddChild(TEXT("\\a"));
    const std::pair<const WCHAR*, TXmlNode*> rows[] = {
        {TEXT("a"), a},      {TEXT("a\\b"), b},       {TEXT("a\\\\b"), a},
        {TEXT("a\\"), a},    {TEXT("\\a"), odd},      {TEXT("\\a\\b"), nullptr},
        {TEXT(""), nullptr}, {TEXT("a\\c"), nullptr}, {TEXT("a\\b\\c"), nullptr},
    };
    for (const auto& [path, found] : rows) EXPECT_EQ(node.Find(path, kUtf8), found) << Utf8(path);
}

TEST(XmlItems, TheExactTableHoldsOneSlotPerItem) {
    TOpenItems items;
    EXPECT_EQ(items.FSlots, nullptr);
    EXPECT_EQ(items.IndexOf(TEXT("a"), kUtf8), -1);
    // 0x61, 0x62 and 0x64 modulo 3: homes 1, 2 and 1.
    for (const WCHAR* name : {TEXT("a"), TEXT("b"), TEXT("d")}) items.Add(name);
    EXPECT_EQ(items.FCount, -3);
    EXPECT_EQ(items.GetCount(), 3);
    EXPECT_EQ(items.IndexOf(TEXT("d"), kUtf8), 2);
    EXPECT_EQ(items.FCount, 3);
    const int at[] = {2, 0, 1};
    for (int slot = 0; slot < 3; ++slot) {
        EXPECT_EQ(items.FSlots[slot].Index, at[slot]);
        EXPECT_EQ(items.FSlots[slot].Hash, Sysutils::StringHash(items.Items(at[slot])->FName));
    }
    EXPECT_EQ(items.FindEmptySlot(1), -1);
    EXPECT_EQ(items.Items(-1), nullptr);
    EXPECT_EQ(items.AddItem(static_cast<TXmlPair*>(nullptr)), -1);
    items.Add(TEXT("b"));
    EXPECT_EQ(items.FCount, -4);
}

// The table of a long list is filled by another way than that of a short one, to the same effect.
TEST(XmlItems, ALongTableIsWhatLinearProbingGives) {
    TOpenItems items;
    for (int i = 0; i < 300; ++i) items.Add(UnicodeString(i % 97));
    items.Build(kUtf8);
    std::vector<int> expected(300, -1);
    for (int i = 0; i < 300; ++i) {
        std::size_t slot = Sysutils::StringHash(items.Items(i)->FName) % 300;
        while (expected[slot] >= 0) slot = (slot + 1) % 300;
        expected[slot] = i;
    }
    for (std::size_t slot = 0; slot < 300; ++slot)
        EXPECT_EQ(items.FSlots[slot].Index, expected[slot]);
    for (int i = 0; i < 97; ++i) EXPECT_EQ(items.IndexOf(UnicodeString(i), kUtf8), i);
    EXPECT_EQ(items.IndexOf(TEXT("97"), kUtf8), -1);
}

TEST(XmlNode, AnIndexedTreeIsNotChangedByLookups) {
    struct TOpenNode : TXmlNode {
        int State() const { return static_cast<TOpenItems*>(FChildren)->FCount; }
    };
    TXmlNode root;
    auto* const inner = new TOpenNode;
    root.AddChild(inner);
    inner->AddChild(TEXT("a"));
    EXPECT_EQ(inner->State(), -1);
    root.BuildIndices();
    EXPECT_EQ(inner->State(), 1);
}

TEST(XmlItems, ARenamedItemIsFoundAfterTheNextAddition) {
    TOpenItems items;
    for (int i = 0; i < 40; ++i) items.Add(UnicodeString(i));
    EXPECT_EQ(items.IndexOf(TEXT("7"), kUtf8), 7);
    items.Items(7)->FName = TEXT("seven");
    EXPECT_EQ(items.IndexOf(TEXT("7"), kUtf8), -1);
    items.Add(TEXT("40"));
    EXPECT_EQ(items.IndexOf(TEXT("seven"), kUtf8), 7);

    TXmlNode node;
    for (int i = 0; i < 40; ++i) {
        node.AddAttribute(UnicodeString(i), UnicodeString());
        node.SetChild(UnicodeString(i), UnicodeString(), kUtf8);
    }
    node.GetAttribute(7)->FName = TEXT("seven");
    node.GetChild(7)->FName = TEXT("seven");
    node.AddAttribute(TEXT("40"), UnicodeString());
    node.AddChild(TEXT("40"));
    EXPECT_EQ(node.AddAttribute(TEXT("seven"), UnicodeString()), nullptr);
    EXPECT_EQ(node.SetAttribute(TEXT("seven"), UnicodeString(), kUtf8), node.GetAttribute(7));
    EXPECT_EQ(node.SetChild(TEXT("seven"), UnicodeString(), kUtf8), node.GetChild(7));
}

static_assert(!std::is_destructible_v<TXmlBlock>);

TEST(XmlItems, NamesWithAZeroInsideAreTwoNames) {
    TOpenItems items;
    items.Add(UnicodeString(TEXT("a\0b"), 3));
    items.Add(UnicodeString(TEXT("a\0c"), 3));
    EXPECT_EQ(items.IndexOf(UnicodeString(TEXT("a\0c"), 3), kUtf8), 1);
}

// Each of these takes minutes when it is done item by item against all others.
TEST(XmlItems, ThirtyThousandItemsTakeNoQuadraticTime) {
    constexpr int kMany = 30000;
    TXmlNode node;
    for (int i = 0; i < kMany; ++i) {
        node.AddAttribute(UnicodeString(i), UnicodeString());
        node.AddChild(TEXT("same"));
        ASSERT_EQ(node.FindChild(TEXT("same"), kUtf8), node.GetChild(0));
        ASSERT_EQ(node.FindAttribute(UnicodeString(i), kUtf8), node.GetAttribute(i));
    }
    EXPECT_EQ(node.AddAttribute(TEXT("77"), UnicodeString()), nullptr);
    EXPECT_EQ(node.AttributeCount(), kMany);
    EXPECT_EQ(node.EnumChild(nullptr, 0, TEXT("same"), kUtf8), kMany);
    for (int i = 0; i < kMany; ++i) {
        ASSERT_EQ(node.FindAttribute(UnicodeString(i), kUtf8), node.GetAttribute(i));
        ASSERT_EQ(node.FindAttribute(UnicodeString(i + kMany), kUtf8), nullptr);
    }
}

// Every name of the four code units (a, b, a + 31 x, b - x ...) has the same hash as its brothers.
TEST(XmlItems, MassesOfEqualHashesTakeNoQuadraticTime) {
    constexpr int kMany = 60000;
    TOpenItems items;
    const auto name = [](int i) {
        const WCHAR units[] = {
            static_cast<WCHAR>(i % 1000 + 1), 1, static_cast<WCHAR>(31 * (2000 - i % 1000)), 1,
            static_cast<WCHAR>(i / 1000 + 1), 1, static_cast<WCHAR>(31 * (100 - i / 1000)),  1};
        return UnicodeString(units, 8);
    };
    for (int i = 0; i < kMany; ++i) items.Add(name(i));
    ASSERT_EQ(Sysutils::StringHash(name(5)), Sysutils::StringHash(name(1777)));
    for (int i = 0; i < kMany; ++i) ASSERT_EQ(items.IndexOf(name(i), kUtf8), i);
}

}  // namespace
