// What an XML response says about problems: the "message" element, and short ways to write
// elements.
#pragma once

#include <windows.h>

#include <memory>

#include "xml/xml_node.h"

// The code page of the names and texts in a request.
inline constexpr TCodePage kUtf8 = System::kCodePageUtf8;

// Errors and warnings in the order raised.
class TXmlMessages {
  public:
    // The new element, for further attributes. With a Win32 error code other than 0 it carries the
    // code and the system's text.
    TXmlNode* Error(const UnicodeString& text, DWORD code = 0);
    TXmlNode* Warning(const UnicodeString& text);
    // Hands the messages, when there are any, to the response's root as its last child.
    void AppendTo(TXmlNode& response);

  private:
    TXmlNode* Add(const WCHAR* kind, const UnicodeString& text);

    std::unique_ptr<TXmlNode> list_;  // the "message" element, once there is one
};

// An element outside the document: what fails while it is filled leaves no half of it there.
std::unique_ptr<TXmlNode> NewElement(const WCHAR* name);
// Hands the element to `parent` as its last child.
void Append(TXmlNode& parent, std::unique_ptr<TXmlNode> child);
// A child with a text; the child.
TXmlNode* AddText(TXmlNode& parent, const WCHAR* name, const UnicodeString& text);
void SetText(TXmlNode* node, const WCHAR* attribute, const UnicodeString& text);
// The text of the first child of that name, null without one.
UnicodeString ChildText(const TXmlNode& node, const WCHAR* name);
