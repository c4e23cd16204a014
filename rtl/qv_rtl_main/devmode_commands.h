// The handlers of the text commands on the product's printers.
//
// A handler gets keyword, value, keyword, value, ...: keywords trimmed and in lower case, values as
// they came. It appends its answer or its error text to `result` and returns a status, negative for
// an error. What the values' conversions throw passes through.
#pragma once

#include "mox_classes/containers/string_list.h"
#include "mox_classes/text/unicode_string.h"
#include "qv_api.h"

// Between the items of a command.
inline constexpr WCHAR kTab = 9;

// Names of the printers that the product's driver serves, separated by tabs; the status is their
// number.
QV_API int CmdGetOrloPrinters(TStrings* items, UnicodeString& result);
// The main settings of the printer named by "printername".
QV_API int CmdGetDevMode(TStrings* items, UnicodeString& result);
// Changes them; the status is the number of keywords that were understood.
QV_API int CmdSetDevMode(TStrings* items, UnicodeString& result);
