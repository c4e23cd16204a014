// The whole of DoXML and of its strict reading on a machine with printers: every request gets a
// response that can be read.
#include "qv_rtl_main/xml_request.h"

#include "mox_classes/memory_stream.h"
#include "qv_rtl_main/xml_check.h"
#include "support/input.h"
#include "support/machine.h"
#include "xml/xml_doc.h"

namespace {

// The response's layout and some of its names are the request's own.
bool IsPlain(const fuzz::Bytes request) {
    TXmlDoc document;
    try {
        if (document.Parse(request.data(), static_cast<int>(request.size())) <= 0) return true;
    } catch (const UnicodeString&) {
        return true;
    }
    constexpr auto kUtf8 = System::kCodePageUtf8;
    return document.FRoot->AttrGetString(TEXT("linebreak"), kUtf8).Trim().IsEmpty() &&
           document.FRoot->AttrGetString(TEXT("indentation"), kUtf8).Trim().IsEmpty() &&
           fuzz::HasWholeCharacters(request, document.CodePage);
}

void RequireReadable(const Classes::TMemoryStream& response, int size) {
    TXmlDoc answer;
    const auto* bytes = static_cast<const char*>(response.GetMemory());
    answer.CodePage = bytes[1] == 0 ? System::kCodePageUtf16 : System::kCodePageUtf8;
    fuzz::Require(answer.Parse(bytes, size) > 0, "well-formed");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::ResetMachine();
    Classes::TMemoryStream request, response;
    request.WriteBuffer(data, static_cast<int>(size));
    request.SetPosition(0);
    fuzz::Require(DoXML(&request, &response) == 1, "every request is answered");
    if (!IsPlain({data, size})) return 0;
    RequireReadable(response, static_cast<int>(response.GetSize()));
    Classes::TMemoryStream complaints;
    request.SetPosition(0);
    if (!CheckXmlRequest(&request, &complaints))
        RequireReadable(complaints, static_cast<int>(complaints.GetSize()));
    return 0;
}
