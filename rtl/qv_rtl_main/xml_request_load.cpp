#include "qv_rtl_main/xml_request_load.h"

#include "xml/xml_file.h"

void BeginResponse(const TXmlDoc& request, TXmlDoc& response) {
    response.FRoot->FName = TEXT("response");
    SetText(response.FRoot, TEXT("to"), request.FRoot->FName);
    response.CodePage = System::kCodePageUtf8;
}

void SetPlace(TXmlNode* message, const TXmlSourceLocation& place) {
    SetText(message, TEXT("line"), UnicodeString(place.line));
    SetText(message, TEXT("column"), UnicodeString(place.column));
}

void RejectRequest(const TXmlDoc& request, TXmlDoc& response, const UnicodeString& file,
                   const TRequestFault& fault) {
    BeginResponse(request, response);
    TXmlMessages messages;
    TXmlNode* error = messages.Error(fault.text);
    if (file.Length() > 0) SetText(error, TEXT("file"), file);
    if (fault.position >= 0) {
        SetText(error, TEXT("position"), UnicodeString(fault.position));
        SetPlace(error, fault.place);
    }
    messages.AppendTo(*response.FRoot);
}

TRequestFault LoadRequest(TXmlDoc& request, Classes::TStream& stream,
                          std::vector<unsigned char>& bytes) {
    TRequestFault fault;
    try {
        bytes = ReadWhole(stream);
        request.Parse(bytes.data(), static_cast<int>(bytes.size()));
    } catch (const UnicodeString& text) {
        if (request.ParseResult() == 0) {
            fault.text = TEXT("Cannot read the request: ") + text;
            return fault;
        }
    }
    const int result = request.ParseResult();
    if (result > 0) return fault;
    const int size = static_cast<int>(bytes.size());
    fault.position = result < 0 ? -result : size;
    fault.text = (result == 0 ? TEXT("The request ends before its root element is closed: ")
                              : TEXT("The request is not well-formed XML: ")) +
                 DescribeXmlFault(request, bytes.data(), size, &fault.place);
    return fault;
}
