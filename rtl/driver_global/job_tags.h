// The values of a job's tags, such as {docname} and {jobid}, in templates of command lines, file
// names and messages.
#pragma once

#include <windows.h>
#include <winspool.h>

#include "mox_classes/text/unicode_string.h"
#include "qv_api.h"

// What the tags are filled from. Product modules that pass this record share its layout.
struct TFillTagsInfo {
    JOB_INFO_2W* Job =
        nullptr;  // the spooler's record; not owned. Without it its tags are unknown.
    int Sn = 0;
    int PageNo = 0;
    UnicodeString OutFile;
    UnicodeString Application;
    bool FileNameSafe =
        false;  // QVFillField makes values safe for file names instead of quoting them
};

// Fill callback of templates; `info` is a TFillTagsInfo. Names are exact, in lower case. `spec`
// replaces the tag's own conversion when it takes the same kind of value. Values with a quote,
// blank or comma are put in quotes, empty ones become two quotes. False, and `out` untouched, for
// an unknown name and a conversion of another kind.
QV_API bool QVFillField(const UnicodeString& name, const UnicodeString& spec, UnicodeString& out,
                        void* info);

// Tag callback of ReplaceTags; `info` is a TFillTagsInfo. The name is taken in any case; "pageno
// 04" and "sn 04" set a width. False, and `value` untouched, for an unknown name and an unusable
// width.
QV_API bool FillTags(const UnicodeString& tag, UnicodeString& value, void* info);
