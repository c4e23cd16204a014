// The product's resource file (translatable texts, paper and resolution lists) and the current
// language.
//
// The document hangs in the logger's record, because the first unit of a process opens it and the
// last one closes it. Set-up and tear-down belong to start-up and shut-down; lookups may come from
// any thread that logs.
#pragma once

#include <windows.h>

#include "mox_classes/text/unicode_string.h"
#include "qv_api.h"

class TXmlDoc;

// Opens the file, or the fallback when that fails, and installs the lookup in the logger; reads
// nothing yet. Does nothing while a lookup is installed.
QV_API void InitXmlRes(UnicodeString file_name, UnicodeString fallback_file_name);
// Releases the document when the calling unit is the logger's last user.
QV_API void UninitXmlRes();
// Null before InitXmlRes and after the last UninitXmlRes.
QV_API TXmlDoc* GetXmlRes();
// Any text: it is the name of the attribute that holds a translation. "en" at library start.
QV_API void SetLanguage(UnicodeString language);
QV_API UnicodeString GetLanguage();
// The lookup behind TLogger::GetResString: text `id` of the domain in the current language, else in
// "en"; `result` stays as it is when there is none. `context` is the document.
QV_API void ResStringLookup(void* context, UnicodeString domain, ULONG id, UnicodeString* result);
