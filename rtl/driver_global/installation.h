// What the rest of the product asks about its installation: paths, language, log file,
// post-processor, system version. Answers come from the registry keys of the product, with fixed
// fallbacks; a missing, empty or non-string value counts as absent.
#pragma once

#include <windows.h>

#include "mox_classes/text/unicode_string.h"
#include "qv_api.h"

// The name of the product's printer driver.
inline constexpr const WCHAR* kProductDriver = TEXT("Vantrel Driver");

// Registry paths of the product's settings, below the user's and the machine's root.
inline constexpr const WCHAR* kProductKey = TEXT("Software\\Halvorn\\Vantrel");
inline constexpr const WCHAR* kPrintersKey = TEXT("Software\\Halvorn\\Vantrel\\Printers");

// What is taken for a log file's name when there is to be none.
inline constexpr const WCHAR* kLogFileOff = TEXT("Disabled");
// Where the resource file is looked for when the installed one does not open.
inline constexpr const WCHAR* kFallbackResourceFile = TEXT("..\\..\\qv_res.xml");

// The text value `name`, looked for under the user's per-printer key for `section`, the user's
// product key, then the same two of the machine; with an empty section only the product keys. ""
// when no place has it.
QV_API UnicodeString GetRegistrySetting(const UnicodeString& section, const UnicodeString& name);

// "" when the product is not installed.
QV_API UnicodeString GetInstallPath();
// The resource file that a unit which names none takes.
QV_API UnicodeString GetInstalledResourceFile();
// Language code of the user interface; "en" when not set.
QV_API UnicodeString GetPrinterLanguage();
// Locale of a printer's output; "gl" when not set.
QV_API UnicodeString GetPrinterLocale(UnicodeString printer);
// The configured log file, "Disabled" included; else a file in the public documents or the
// temporary folder.
QV_API UnicodeString GetPrinterLogFile();
// The program that runs after a print job; *params, when asked for, receives its command line with
// job tags. A program that is not found by its bare name is placed in the installation folder, in
// the root folder when the product is not installed.
QV_API UnicodeString GetPrinterPost(UnicodeString printer, UnicodeString* params);
// Description of the operating system for the log; the same text on every call.
QV_API UnicodeString GetOSInfo();
