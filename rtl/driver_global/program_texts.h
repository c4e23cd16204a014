// Texts of a program start, filled from a job whose names come from strangers.
//
// Filled as templates, with environment variables expanded and blanks taken off both ends. Only
// what the template itself says is expanded: a percent sign that a value brought along stays.
#pragma once

#include "driver_global/job_tags.h"
#include "mox_classes/text/unicode_string.h"
#include "qv_api.h"

namespace driver_global {

// A file or a folder: all double quotes are removed.
UnicodeString FilledPath(const UnicodeString& text, TFillTagsInfo& info);

// Parameters: every value stays within its argument and reaches the program unchanged. Values are
// quoted as QVFillField quotes them; only an argument that Windows' rules would read otherwise is
// quoted anew by these rules. Empty values are two quotes.
QV_API UnicodeString FilledParameters(const UnicodeString& text, TFillTagsInfo& info);

// Whether the command interpreter, which runs batch files, could take a part of a value that `text`
// is filled with for a command: no quoting protects from that.
bool HoldsCommandUnits(const UnicodeString& text, TFillTagsInfo& info);

}  // namespace driver_global
