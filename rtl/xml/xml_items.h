// The item lists of an XML element: attributes (name, value pairs) and child elements, in insertion
// order, with a hash index over the item names.
//
// Two indices serve two needs. FSlots is the exact table: as many slots as items, rebuilt whole at
// the first lookup after an addition; in a list of more than 256 items it is built once and then
// stays stale. Adding attributes one by one asks for the name before each addition; that question
// goes to TXmlNameIndex, which grows with the list, so that a million additions stay linear. The
// same index answers what the exact table could answer only by a rebuild or a long scan.
#pragma once

#include <windows.h>

#include <cstdint>
#include <memory>

#include "mox_classes/text/unicode_string.h"
#include "qv_api.h"
#include "xml/xml_name_index.h"
#include "xml/xml_pair.h"

using System::TCodePage;

class TXmlNode;

// One slot of the exact table. Plain value.
class THashSlot {
  public:
    THashSlot() = default;
    THashSlot(ULONG hash, int index) : Hash(hash), Index(index) {}

    std::uint32_t Hash = 0;
    std::int32_t Index = -1;  // position in the list; -1 marks a free slot
};

// Owns its items. One thread at a time. Names compare exactly, code unit by code unit; the code
// page arguments have no effect. Renaming an item that stands in the list does not mark the table
// stale: lookups of the new name, and the question whether an attribute exists already, can miss
// until the next addition (in a list of more than 1024 items: until one addition for each 1024).
class QV_API TXmlItems : public TXmlBlock {
  public:
    // A list of pairs. Lists of nodes are made by TXmlNode only.
    TXmlItems() : TXmlItems(TKind::Pairs) {}
    ~TXmlItems();
    TXmlItems(const TXmlItems&) = delete;
    TXmlItems& operator=(const TXmlItems&) = delete;

    // Takes ownership, appends, marks the table stale; the position of the item. Null is not added
    // (-1); a list that is full (2147483647 items) throws "Out of length".
    int AddItem(TXmlPair* item) {
        const int count = GetCount();
        if (item == nullptr) return -1;
        if (count == capacity_) Grow();
        FList[count] = item;
        FCount = -(count + 1);
        return count;
    }
    // Refused: a list of pairs would delete the node without its subtree. Add it to a TXmlNode.
    int AddItem(TXmlNode* node) = delete;
    int GetCount() const { return FCount < 0 ? -FCount : FCount; }
    // Null outside 0 .. count - 1.
    TXmlPair* Items(int i) const { return i < 0 || i >= GetCount() ? nullptr : FList[i]; }
    // Position of the first item of that name in insertion order, -1 when there is none.
    int IndexOf(const UnicodeString& name, TCodePage);
    // Stores the first `max` positions of the items of that name; how many there are in all.
    int EnumIndexOf(int* indices, int max, const UnicodeString& name, TCodePage);
    TXmlPair* Find(const UnicodeString& name, TCodePage code_page);
    // As IndexOf, without the exact table: the question that comes before an addition.
    int FirstOf(const UnicodeString& name);
    // Builds what the first lookup after an addition would build.
    void BuildIndices();

  protected:
    // Rebuilds the exact table: item i lies in the first slot, from its home (hash modulo count)
    // upwards and around, that the items before it left free.
    void Build(TCodePage);
    // The first free slot from `start` upwards and around; -1 when the table is full.
    int FindEmptySlot(int start) const;

    std::unique_ptr<THashSlot[]> FSlots;  // null before the first rebuild
    TXmlPair** FList = nullptr;
    std::int32_t FCount = 0;  // -count while the table is stale, count once it has been rebuilt

  private:
    friend class TXmlNode;

    // What the list holds, and so how it deletes its items: each node with its subtree.
    enum class TKind : unsigned char { Pairs, Nodes };
    explicit TXmlItems(TKind kind) : kind_(kind) {}

    void Grow();
    int NextOf(const UnicodeString& name, int index);
    int Scan(const UnicodeString& name, int from) const;
    const TXmlNameIndex& Names();

    std::int32_t capacity_ = 0;  // entries of FList
    TKind kind_;
    std::unique_ptr<TXmlNameIndex> names_;  // once a long list was asked for a name
};
