// One-line texts of the records and codes that the spooler and the graphics engine hand to the
// driver's modules, for their log lines.
//
// Records are only read; null gives "NULL", an unknown code "Unknown(n)". Pointers show as
// hexadecimal of their low 32 bits. Any thread.
#pragma once

#include <windows.h>

#include <winddi.h>
#include <winspool.h>

#include "mox_classes/text/unicode_string.h"
#include "qv_api.h"

// What a driver's property sheet function receives; the driver kit's own record, which not every
// SDK brings.
struct DOCUMENTPROPERTYHEADER {
    WORD cbSize;
    WORD Reserved;
    HANDLE hPrinter;
    LPWSTR pszPrinterName;
    LPDEVMODEW pdmIn;
    LPDEVMODEW pdmOut;
    DWORD cbOut;
    DWORD fMode;
};

// The public fields, those whose bit is set in dmFields marked with '*'; then, for the product's
// own block, its private fields by name. "Empty" when the public part is all zeros. What a dmSize
// below 220 excludes shows as zeros.
QV_API UnicodeString DEVMODE_Str(DEVMODEW* dm);
QV_API UnicodeString DOCUMENTPROPERTYHEADER_Str(DOCUMENTPROPERTYHEADER* h);
QV_API UnicodeString DrvConvertDevMode_fMode(ULONG mode);
QV_API UnicodeString DrvDeviceCapabilities_DeviceCap(unsigned short cap);
QV_API UnicodeString DrvDocumentEvent_iEsc(int escape);
QV_API UnicodeString TextTypeSTROBJ(STROBJ* s);
QV_API UnicodeString TextTypeSYSTEMTIME(SYSTEMTIME* t);
QV_API UnicodeString TextTypeJOB_INFO_2(JOB_INFO_2W* j);
