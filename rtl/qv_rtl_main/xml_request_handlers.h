// The two operations of the XML request call.
#pragma once

#include "qv_rtl_main/xml_messages.h"

// Reports the product's settings, port monitors, printer drivers and printers, as far as the
// request names them, in this order.
void AnswerQuery(const TXmlNode& request, TXmlNode& response, TXmlMessages& messages);
// Writes global settings and changes printers' settings in the request's order; the response holds
// the previous values.
void AnswerUpdate(const TXmlNode& request, TXmlNode& response, TXmlMessages& messages);

// The text that a registry value which does not exist is read as.
inline constexpr const WCHAR* kMissingValue = TEXT("__NULL__");
