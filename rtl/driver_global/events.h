// Events of a job: an XML text whose elements start programs and send texts to windows of other
// processes. docs/events.md describes the elements, and what keeps a job's names from becoming more
// than one argument.
#pragma once

#include <windows.h>

#include "driver_global/job_tags.h"
#include "mox_classes/text/unicode_string.h"
#include "qv_api.h"

// Fires every element of `description`, in order; `info` fills its tags. True when the description
// could be read, whatever became of its elements. What the parser throws passes to the caller.
// Blocks for at most the time-out of each text that is sent; writes info->FileNameSafe meanwhile
// and restores it.
QV_API bool DoXmlEvent(const UnicodeString& event_name, const UnicodeString& description,
                       TFillTagsInfo* info);

// Sends `text` with its terminator as WM_COPYDATA and waits for the answer, which is the result.
QV_API long long SendString(HWND window, ULONG id, UnicodeString text);
