// Events of a job: an XML text whose elements start programs and send texts to windows of other
// processes. docs/events.md describes the elements, and what keeps a job's names from becoming more
// than one argument.
#pragma once

#include <windows.h>

#include <vector>

#include "driver_global/job_tags.h"
#include "mox_classes/text/unicode_string.h"
#include "qv_api.h"

// Fires every element of `description`, in order; `info` fills its tags. True when the description
// could be read, whatever became of its elements. What the parser throws passes to the caller.
// Blocks for at most the time-out of each text that is sent; writes info->FileNameSafe meanwhile
// and restores it.
QV_API bool DoXmlEvent(const UnicodeString& event_name, const UnicodeString& description,
                       TFillTagsInfo* info);

// What an element of a description comes to: a text to a window, or a program with its arguments.
struct TEventAction {
    HWND window = nullptr;
    UnicodeString message, text;
    UnicodeString verb, program, folder, parameters;
    std::vector<UnicodeString> arguments;  // the parameters as the program gets them
    bool refused = false;  // a batch file, and a value that could act as its command
};

// What DoXmlEvent would do, in order; nothing is sent or started. An element without a window and a
// program has no action. Throws a UnicodeString when the description is empty or cannot be read,
// and what the parser throws.
QV_API std::vector<TEventAction> PlanXmlEvent(const UnicodeString& event_name,
                                              const UnicodeString& description,
                                              TFillTagsInfo* info);

// Sends `text` with its terminator as WM_COPYDATA and waits for the answer, which is the result.
QV_API long long SendString(HWND window, ULONG id, UnicodeString text);
