// The texts that start a program, filled from a job. The names in a job come from strangers.
//
// Each text is a template. Its environment variables are expanded, and blanks at both ends are
// removed. Only the template's own text is expanded: a percent sign in a value stays.
#pragma once

#include "driver_global/job_tags.h"
#include "mox_classes/text/unicode_string.h"
#include "qv_api.h"

namespace driver_global {

// A file or a folder. All double quotes are removed.
UnicodeString FilledPath(const UnicodeString& text, TFillTagsInfo& info);

// Parameters. Every value stays within its argument and reaches the program unchanged. Values are
// quoted as QVFillField does it; an argument that Windows would read in another way is quoted again
// by the rules of Windows. An empty value becomes two quotes.
QV_API UnicodeString FilledParameters(const UnicodeString& text, TFillTagsInfo& info);

// Whether a value that `text` is filled with holds characters that the command interpreter would
// take for commands. The interpreter runs batch files, and no quoting protects from that.
bool HoldsCommandUnits(const UnicodeString& text, TFillTagsInfo& info);

}  // namespace driver_global
