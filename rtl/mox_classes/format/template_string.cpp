#include "mox_classes/format/template_string.h"

#include <string>
#include <string_view>

#include "mox_classes/containers/string_list.h"
#include "mox_classes/format/format_scan.h"
#include "mox_classes/text/sysutils_paths.h"
#include "mox_classes/text/sysutils_text.h"

namespace {

using TUnits = std::basic_string_view<WCHAR>;
using TText = std::basic_string<WCHAR>;

TUnits UnitsOf(const UnicodeString& s) {
    return TUnits(s.t_str(), static_cast<std::size_t>(s.Length()));
}

UnicodeString StringOf(const TText& text) {
    return UnicodeString(text.data(), static_cast<long long>(text.size()));
}

bool IsTemplate(const UnicodeString& text) {
    return text.Length() > 0 && text[1] == '=';
}

UnicodeString TagText(const UnicodeString& value, bool fix_file_name) {
    const bool plain =
        value.Length() > 0 && UnitsOf(value).find_first_of(TEXT("\" ,")) == TUnits::npos;
    const UnicodeString text = plain ? value : Sysutils::AnsiQuotedStr(value, '"');
    return fix_file_name ? Sysutils::FixFileName(text, 0) : text;
}

bool NeedsQuotes(const UnicodeString& value) {
    return value.Length() == 0 || value[1] == '"' || UnitsOf(value).find(' ') != TUnits::npos;
}

void QuoteValues(Classes::TStrings& items) {
    for (int i = 1; i < items.GetCount(); i += 2) {
        const UnicodeString value = items.Get(i);
        if (NeedsQuotes(value)) items.Put(i, Sysutils::AnsiQuotedStr(value, '"'));
    }
}

}  // namespace

UnicodeString TemplateString(const UnicodeString& text, TFillField fill, void* context) {
    // `fill` may change the caller's string. The text that is searched stays.
    const UnicodeString kept(text);  // NOLINT(performance-unnecessary-copy-initialization)
    if (IsTemplate(kept)) return kept;
    TFieldSpan field;
    for (const WCHAR* p = kept.t_str(); FindField(p, field); p = field.begin + 1) {
        UnicodeString unused;
        if (fill(field.Name(), field.Spec(), unused, context)) return TEXT("=") + kept;
    }
    return kept;
}

UnicodeString TemplateStringFormat(const UnicodeString& text, TFillField fill, void* context) {
    // As above.
    const UnicodeString kept(text);  // NOLINT(performance-unnecessary-copy-initialization)
    return IsTemplate(kept) ? FillFormat(kept.t_str() + 1, fill, context) : kept;
}

UnicodeString TemplateStringSafeFormat(const UnicodeString& text, TFillField fill, void* context) {
    return TemplateStringFormat(TemplateString(text, fill, context), fill, context);
}

int TemplateStringFindField(const UnicodeString& text, const UnicodeString& name) {
    return IsTemplate(text) ? FindFormatField(text.t_str() + 1, name) : -1;
}

UnicodeString ReplaceTags(UnicodeString text, TReplaceTag tag, void* context, bool fix_file_name,
                          UnicodeString open, UnicodeString close) {
    if (open.Length() == 0 || close.Length() == 0) return text;
    const TUnits units = UnitsOf(text);
    const TUnits opening = UnitsOf(open);
    const TUnits closing = UnitsOf(close);
    TText result;
    std::size_t copied = 0;
    for (;;) {
        const std::size_t start = units.find(opening, copied);
        if (start == TUnits::npos) break;
        const std::size_t name = start + opening.size();
        const std::size_t end = units.find(closing, name);
        if (end == TUnits::npos) break;
        result.append(units, copied, start - copied);
        UnicodeString value;
        const TUnits name_units = units.substr(name, end - name);
        const UnicodeString tag_name(name_units.data(), static_cast<long long>(name_units.size()));
        if (tag(tag_name, value, context)) result += UnitsOf(TagText(value, fix_file_name));
        copied = end + closing.size();
    }
    result.append(units, copied);
    return StringOf(result);
}

UnicodeString BuildNameValueString(Classes::TStrings* items, const UnicodeString& pair_separator,
                                   const UnicodeString& name_value_separator) {
    TText result;
    if (items == nullptr) return UnicodeString();
    QuoteValues(*items);
    const int count = items->GetCount();
    for (int i = 0; i < count; i += 2) {
        if (i > 0) result += UnitsOf(pair_separator);
        result += UnitsOf(items->Get(i));
        result += UnitsOf(name_value_separator);
        result += i + 1 < count ? UnitsOf(items->Get(i + 1)) : TUnits(TEXT("\"\""));
    }
    return StringOf(result);
}
