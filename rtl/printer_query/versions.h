// Version numbers of files and of the operating system as text.
#pragma once

#include "mox_classes/text/unicode_string.h"
#include "qv_api.h"

// Both return "" on failure, and for a format that asks for other arguments than there are; it may
// leave out the last ones.

// Four numbers: the file version of the file's version resource, as in "%d.%d.%d.%d".
QV_API UnicodeString FormatFileVersion(const UnicodeString& fileName, const UnicodeString& format);
// Major, minor and build number, service-pack text, platform id, service-pack major and minor,
// suite mask, product type; all numbers but the text.
QV_API UnicodeString FormatOSVersion(const UnicodeString& format);
