#include "support/xml_answer.h"

#include "xml/xml_doc.h"

namespace fuzz {

bool IsPlain(const Bytes request) {
    TXmlDoc document;
    try {
        if (document.Parse(request.data(), static_cast<int>(request.size())) <= 0) return true;
    } catch (const UnicodeString&) {
        return true;
    }
    constexpr auto kUtf8 = System::kCodePageUtf8;
    return document.FRoot->AttrGetString(TEXT("linebreak"), kUtf8).Trim().IsEmpty() &&
           document.FRoot->AttrGetString(TEXT("indentation"), kUtf8).Trim().IsEmpty() &&
           HasWholeCharacters(request, document.CodePage);
}

void RequireReadable(Classes::TMemoryStream& response) {
    TXmlDoc answer;
    const auto* bytes = static_cast<const char*>(response.GetMemory());
    answer.CodePage = bytes[1] == 0 ? System::kCodePageUtf16 : System::kCodePageUtf8;
    Require(answer.Parse(bytes, static_cast<int>(response.GetSize())) > 0, "well-formed");
}

}  // namespace fuzz
