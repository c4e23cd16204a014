// An element of the XML tree: name, text, attributes, child elements, and the text behind its end
// tag.
#pragma once

#include "xml/xml_items.h"

namespace Classes {
class TStream;
}
class TXmlFormatter;

// Owns its attributes and its children with their subtrees. Neither destruction nor saving
// recurses: the depth of a tree is limited by memory alone. One thread at a time, since lookups
// build indices; see BuildIndices for more. Lookups that find nothing give null, -1, 0 or the null
// string; the code page arguments have no effect.
class QV_API TXmlNode : public TXmlPair {
  public:
    TXmlNode() = default;
    // Only remembers the owner; the node is not added to its children.
    explicit TXmlNode(TXmlNode* owner) : FOwner(owner) {}
    ~TXmlNode() {
        if (!IsLeaf()) Clear();
    }
    TXmlNode(const TXmlNode&) = delete;
    TXmlNode& operator=(const TXmlNode&) = delete;

    // Deletes attributes and children; name, text, tail and owner stay.
    void Clear();
    TXmlNode* GetOwner() const { return FOwner; }
    void SetOwner(TXmlNode* owner) { FOwner = owner; }

    // Takes ownership of `node` and returns it. Its owner member stays as it is. Null is not added
    // and comes back. When the list is full or memory ends, the exception leaves `node` to the
    // caller.
    TXmlNode* AddChild(TXmlNode* node);
    TXmlNode* AddChild(const UnicodeString& name);
    TXmlNode* GetChild(int i) const {
        return FChildren == nullptr ? nullptr : static_cast<TXmlNode*>(FChildren->Items(i));
    }
    int ChildCount() const { return FChildren == nullptr ? 0 : FChildren->GetCount(); }
    TXmlNode* FindChild(const UnicodeString& name, TCodePage code_page) const;
    // Stores the first `max` positions of the children of that name; how many there are in all.
    int EnumChild(int* indices, int max, const UnicodeString& name, TCodePage code_page) const;
    // Gives the first child of that name the text; adds the child when there is none.
    TXmlNode* SetChild(const UnicodeString& name, const UnicodeString& text, TCodePage code_page);
    UnicodeString ChildGetText(const UnicodeString& name, TCodePage code_page) const;
    // Walks down child names separated by backslashes; the first character never separates, and an
    // empty component ends the walk at the node reached so far. Null when a step fails or the path
    // is empty.
    TXmlNode* Find(const UnicodeString& path, TCodePage code_page);

    // Null, and no change, when there is an attribute of that name already.
    TXmlPair* AddAttribute(const UnicodeString& name, const UnicodeString& value);
    TXmlPair* GetAttribute(int i) const {
        return FAttributes == nullptr ? nullptr : FAttributes->Items(i);
    }
    int AttributeCount() const { return FAttributes == nullptr ? 0 : FAttributes->GetCount(); }
    TXmlPair* FindAttribute(const UnicodeString& name, TCodePage code_page) const;
    // An attribute that exists keeps its place.
    TXmlPair* SetAttribute(const UnicodeString& name, const UnicodeString& value,
                           TCodePage code_page);
    UnicodeString AttrGetString(const UnicodeString& name, TCodePage code_page) const;
    // 0 when the attribute is absent or not a number.
    int AttrGetInteger(const UnicodeString& name, TCodePage code_page) const;

    // Builds the indices of the whole subtree. From then on any number of threads may read and look
    // up in it, until one thread changes it.
    void BuildIndices();

    // The subtree as text. Values and texts are trimmed and escaped; names and control characters
    // are written as they are, also where XML forbids them.
    UnicodeString SaveToString(TXmlFormatter& format) const;
    // Writes the subtree in UTF-8 (65001 or 0) or UTF-16 (1200), nothing in another code page; the
    // bytes written.
    int SaveToStream(Classes::TStream* stream, TXmlFormatter& format, TCodePage code_page) const;

  protected:
    friend class TXmlDoc;
    friend class TXmlParser;

    // With a stream writes to it, otherwise appends to `out`; the bytes or code units written.
    int SaveTo(Classes::TStream* stream, UnicodeString* out, TXmlFormatter& format,
               TCodePage code_page) const;

    TXmlNode* FOwner = nullptr;        // the enclosing element; not owned
    TXmlItems* FAttributes = nullptr;  // owned; null until the first attribute
    TXmlItems* FChildren = nullptr;    // owned; null until the first child

  public:
    UnicodeString FTail;  // text between the end tag and the next tag

  private:
    bool IsLeaf() const { return FAttributes == nullptr && FChildren == nullptr; }
    TXmlNode* AppendChild(UnicodeString name);
    TXmlPair* AppendAttribute(UnicodeString name, UnicodeString value);
    void ReleaseInto(TXmlNode*& pending) noexcept;
};
