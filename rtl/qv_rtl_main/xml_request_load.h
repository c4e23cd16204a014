// A request from its bytes to a document, and the response to one that is no document.
#pragma once

#include <windows.h>

#include <vector>

#include "qv_rtl_main/xml_messages.h"
#include "xml/xml_doc.h"
#include "xml/xml_source_location.h"

namespace Classes {
class TStream;
}

// What is wrong with a request; a null text: nothing. `position` counts bytes, -1 when there is
// none; `place` is the same for people.
struct TRequestFault {
    UnicodeString text;
    int position = -1;
    TXmlSourceLocation place;
};

// Parses the whole stream, which is at its start; `bytes` keeps what was in it.
TRequestFault LoadRequest(TXmlDoc& request, Classes::TStream& stream,
                          std::vector<unsigned char>& bytes);
// A response that holds nothing but what is wrong with the request. `file` may be null.
void RejectRequest(const TXmlDoc& request, TXmlDoc& response, const UnicodeString& file,
                   const TRequestFault& fault);
// The root of a response in UTF-8.
void BeginResponse(const TXmlDoc& request, TXmlDoc& response);
// Line and column as attributes of a message.
void SetPlace(TXmlNode* message, const TXmlSourceLocation& place);
