// What the XML tests share: texts that a failure shows readably, and documents from literals.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>

#include "mox_classes/text/unicode_string.h"
#include "xml/xml_doc.h"

namespace test {

inline std::string Utf8(const UnicodeString& text) {
    const int size =
        WideCharToMultiByte(CP_UTF8, 0, text.t_str(), text.Length(), nullptr, 0, nullptr, nullptr);
    std::string bytes(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.t_str(), text.Length(), bytes.data(), size, nullptr,
                        nullptr);
    return bytes;
}

inline int Parse(TXmlDoc& doc, std::string_view bytes) {
    return doc.Parse(bytes.data(), static_cast<int>(bytes.size()));
}

// Parse's result for a document of its own.
inline int Result(std::string_view bytes) {
    TXmlDoc doc;
    return Parse(doc, bytes);
}

}  // namespace test
