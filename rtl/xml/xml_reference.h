// References inside texts, of any kind: &amp; &#228; &#xE4;.
#pragma once

#include <windows.h>

#include <string>

#include "xml/char_finder.h"

// Appends what the reference between '&' and ';' stands for; false for an unknown name.
bool AppendXmlReference(std::basic_string<WCHAR>& pieces, const TAsciiCharFinder& finder, int from,
                        int to);
