// Texts with a leading '=' that marks them as templates, replacement of tags between delimiters,
// and lists of names and values joined into one text.
#pragma once

#include "mox_classes/format/format_fields.h"
#include "mox_classes/text/unicode_string.h"
#include "qv_api.h"

namespace Classes {
class TStrings;
}

// Marks `text` with a leading '=', unless it has one, when `fill` knows one of its fields.
QV_API UnicodeString TemplateString(const UnicodeString& text, TFillField fill, void* context);
// A template is filled, any other text is returned as it is.
QV_API UnicodeString TemplateStringFormat(const UnicodeString& text, TFillField fill,
                                          void* context);
// Fills every text that holds a known field, marked or not.
QV_API UnicodeString TemplateStringSafeFormat(const UnicodeString& text, TFillField fill,
                                              void* context);
// The index of the field counted from behind the '='; -1 when it is absent or `text` is no
// template.
QV_API int TemplateStringFindField(const UnicodeString& text, const UnicodeString& name);

// True when the tag is known and `value`, which comes empty, holds its text.
using TReplaceTag = bool (*)(const UnicodeString& tag_name, UnicodeString& value, void* context);

// Replaces the tags between `open` and `close`. A value that is empty or contains a double quote, a
// blank or a comma is quoted; with `fix_file_name` the units that file names cannot hold become
// full-width forms. Unknown tags vanish, an unterminated one stays. An empty delimiter is not
// supported: the text comes back unchanged.
QV_API UnicodeString ReplaceTags(UnicodeString text, TReplaceTag tag, void* context,
                                 bool fix_file_name, UnicodeString open, UnicodeString close);

// Joins alternating names and values. Values that are empty, begin with a double quote or contain a
// blank are quoted, in the list as well. A last name without value gets an empty one, in the result
// only.
QV_API UnicodeString BuildNameValueString(Classes::TStrings* items,
                                          const UnicodeString& pair_separator,
                                          const UnicodeString& name_value_separator);
