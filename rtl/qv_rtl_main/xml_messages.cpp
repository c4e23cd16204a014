#include "qv_rtl_main/xml_messages.h"

#include "mox_log/sys_error.h"

namespace {
constexpr TCodePage kUtf8 = System::kCodePageUtf8;
}

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
    if (list_ == nullptr) {
        list_ = std::make_unique<TXmlNode>();
        list_->FName = TEXT("message");
    }
    return AddText(*list_, kind, text);
}

void TXmlMessages::AppendTo(TXmlNode& response) {
    if (list_ == nullptr) return;
    list_->SetOwner(&response);
    response.AddChild(list_.get());
    static_cast<void>(list_.release());
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
