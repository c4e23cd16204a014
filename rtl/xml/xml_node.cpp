#include "xml/xml_node.h"

#include <memory>
#include <utility>
#include <vector>

#include "xml/xml_prefetch.h"

void TXmlNode::Clear() {
    TXmlNode* pending = nullptr;
    ReleaseInto(pending);
    while (pending != nullptr) {
        TXmlNode* node = std::exchange(pending, pending->FOwner);
        node->ReleaseInto(pending);
        delete node;
    }
}

// Deletes both lists and all children that have no lists. The other children go to the front of
// `pending`, a list that is linked through the owner members: a node that is about to be deleted
// needs no owner. So a tree of any depth is deleted without recursion and without memory.
void TXmlNode::ReleaseInto(TXmlNode*& pending) noexcept {
    delete std::exchange(FAttributes, nullptr);
    if (FChildren == nullptr) return;
    const int count = FChildren->GetCount();
    const TXmlPrefetch prefetch(FChildren->FList, count);
    for (int i = 0; i < count; ++i) {
        prefetch.At(i);
        auto* child = static_cast<TXmlNode*>(FChildren->FList[i]);
        if (child->IsLeaf()) {
            delete child;
        } else {
            child->FOwner = std::exchange(pending, child);
        }
    }
    FChildren->FCount = 0;
    delete std::exchange(FChildren, nullptr);
}

void TXmlNode::BuildIndices() {
    std::vector<const TXmlNode*> open{this};
    while (!open.empty()) {
        const TXmlNode* const node = open.back();
        open.pop_back();
        if (node->FAttributes != nullptr) node->FAttributes->BuildIndices();
        if (node->FChildren == nullptr) continue;
        node->FChildren->BuildIndices();
        for (int i = 0; i < node->ChildCount(); ++i) open.push_back(node->GetChild(i));
    }
}

TXmlNode* TXmlNode::AddChild(TXmlNode* node) {
    if (FChildren == nullptr) FChildren = new TXmlItems(TXmlItems::TKind::Nodes);
    FChildren->AddItem(static_cast<TXmlPair*>(node));
    return node;
}

TXmlNode* TXmlNode::AddChild(const UnicodeString& name) {
    return AppendChild(name);
}

TXmlNode* TXmlNode::AppendChild(UnicodeString name) {
    auto node = std::make_unique<TXmlNode>(this);
    node->FName = std::move(name);
    AddChild(node.get());
    return node.release();
}

TXmlNode* TXmlNode::FindChild(const UnicodeString& name, TCodePage code_page) const {
    if (FChildren == nullptr) return nullptr;
    return static_cast<TXmlNode*>(FChildren->Find(name, code_page));
}

int TXmlNode::EnumChild(int* indices, int max, const UnicodeString& name,
                        TCodePage code_page) const {
    return FChildren == nullptr ? 0 : FChildren->EnumIndexOf(indices, max, name, code_page);
}

TXmlNode* TXmlNode::SetChild(const UnicodeString& name, const UnicodeString& text, TCodePage) {
    TXmlNode* child = FChildren == nullptr ? nullptr : GetChild(FChildren->FirstOf(name));
    if (child == nullptr) child = AddChild(name);
    child->FValue = text;
    return child;
}

UnicodeString TXmlNode::ChildGetText(const UnicodeString& name, TCodePage code_page) const {
    const TXmlNode* child = FindChild(name, code_page);
    return child == nullptr ? UnicodeString() : child->FValue;
}

TXmlNode* TXmlNode::Find(const UnicodeString& path, TCodePage code_page) {
    const WCHAR* text = path.t_str();
    const int length = path.Length();
    if (length == 0) return nullptr;
    TXmlNode* node = this;
    for (int start = 0, end = 1; start < length; start = end + 1, end = start) {
        while (end < length && text[end] != TEXT('\\')) ++end;
        if (end == start) break;
        node = node->FindChild(path.SubString(start + 1, end - start), code_page);
        if (node == nullptr) break;
    }
    return node;
}

TXmlPair* TXmlNode::AddAttribute(const UnicodeString& name, const UnicodeString& value) {
    return AppendAttribute(name, value);
}

TXmlPair* TXmlNode::AppendAttribute(UnicodeString name, UnicodeString value) {
    if (FAttributes == nullptr) {
        FAttributes = new TXmlItems;
    } else if (FAttributes->FirstOf(name) >= 0) {
        return nullptr;
    }
    auto pair = std::make_unique<TXmlPair>();
    pair->FName = std::move(name);
    pair->FValue = std::move(value);
    FAttributes->AddItem(pair.get());
    return pair.release();
}

TXmlPair* TXmlNode::FindAttribute(const UnicodeString& name, TCodePage code_page) const {
    return FAttributes == nullptr ? nullptr : FAttributes->Find(name, code_page);
}

TXmlPair* TXmlNode::SetAttribute(const UnicodeString& name, const UnicodeString& value, TCodePage) {
    TXmlPair* pair =
        FAttributes == nullptr ? nullptr : FAttributes->Items(FAttributes->FirstOf(name));
    if (pair == nullptr) return AddAttribute(name, value);
    pair->FValue = value;
    return pair;
}

UnicodeString TXmlNode::AttrGetString(const UnicodeString& name, TCodePage code_page) const {
    const TXmlPair* pair = FindAttribute(name, code_page);
    return pair == nullptr ? UnicodeString() : pair->FValue;
}

int TXmlNode::AttrGetInteger(const UnicodeString& name, TCodePage code_page) const {
    return AttrGetString(name, code_page).ToIntDef(0);
}

void DeleteXmlNode(TXmlPair* node) noexcept {
    delete static_cast<TXmlNode*>(node);
}
