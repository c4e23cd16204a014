#include "qv_rtl_main/xml_messages.h"

#include <utility>

#include "mox_classes/text/sys_error.h"

TXmlNode* TXmlMessages::Error(const UnicodeString& text, DWORD code) {
    TXmlNode* error = Add(TEXT("error"), text);
    if (code != 0) {
        SetText(error, TEXT("W32Code"), UnicodeString(code));
        SetText(error, TEXT("W32Msg"), Mox::GetSysError(code, true));
    }
    return error;
}

TXmlNode* TXmlMessages::Warning(const UnicodeString& text) {
    return Add(TEXT("warning"), text);
}

TXmlNode* TXmlMessages::Add(const WCHAR* kind, const UnicodeString& text) {
    if (list_ == nullptr) list_ = NewElement(TEXT("message"));
    return AddText(*list_, kind, text);
}

void TXmlMessages::AppendTo(TXmlNode& response) {
    if (list_ != nullptr) Append(response, std::move(list_));
}

std::unique_ptr<TXmlNode> NewElement(const WCHAR* name) {
    auto element = std::make_unique<TXmlNode>();
    element->FName = name;
    return element;
}

void Append(TXmlNode& parent, std::unique_ptr<TXmlNode> child) {
    child->SetOwner(&parent);
    parent.AddChild(child.get());
    static_cast<void>(child.release());
}

TXmlNode* AddText(TXmlNode& parent, const WCHAR* name, const UnicodeString& text) {
    TXmlNode* child = parent.AddChild(name);
    child->FValue = text;
    return child;
}

void SetText(TXmlNode* node, const WCHAR* attribute, const UnicodeString& text) {
    node->SetAttribute(attribute, text, kUtf8);
}

UnicodeString ChildText(const TXmlNode& node, const WCHAR* name) {
    return node.ChildGetText(name, kUtf8);
}
