#include "driver_global/job_tags.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "mox_classes/format/format_fields.h"
#include "mox_classes/text/sysutils.h"

namespace {

using View = std::basic_string_view<WCHAR>;

// One tag. Exactly one of the members says where its value comes from.
struct TTag {
    const WCHAR* name;
    const WCHAR* spec;  // the conversion of a number in a template that names none
    LPWSTR JOB_INFO_2W::*text = nullptr;
    DWORD JOB_INFO_2W::*number = nullptr;
    UnicodeString TFillTagsInfo::*own_text = nullptr;
    int TFillTagsInfo::*own_number = nullptr;
    bool in_templates_only = false;

    bool NeedsJob() const { return text != nullptr || number != nullptr; }
};

constexpr TTag Text(const WCHAR* name, LPWSTR JOB_INFO_2W::*member,
                    bool in_templates_only = false) {
    return {name, nullptr, member, nullptr, nullptr, nullptr, in_templates_only};
}
constexpr TTag Number(const WCHAR* name, DWORD JOB_INFO_2W::*member) {
    return {name, TEXT("%d"), nullptr, member};
}
constexpr TTag OwnText(const WCHAR* name, UnicodeString TFillTagsInfo::*member) {
    return {name, nullptr, nullptr, nullptr, member};
}
constexpr TTag OwnNumber(const WCHAR* name, int TFillTagsInfo::*member) {
    return {name, TEXT("%04d"), nullptr, nullptr, nullptr, member};
}

constexpr TTag kTags[] = {
    OwnText(TEXT("outfile"), &TFillTagsInfo::OutFile),
    OwnText(TEXT("application"), &TFillTagsInfo::Application),
    Text(TEXT("docname"), &JOB_INFO_2W::pDocument),
    Text(TEXT("printername"), &JOB_INFO_2W::pPrinterName),
    Number(TEXT("jobid"), &JOB_INFO_2W::JobId),
    Text(TEXT("username"), &JOB_INFO_2W::pUserName),
    Text(TEXT("machinename"), &JOB_INFO_2W::pMachineName),
    Text(TEXT("notifyname"), &JOB_INFO_2W::pNotifyName),
    Text(TEXT("datatype"), &JOB_INFO_2W::pDatatype),
    Text(TEXT("printprocessor"), &JOB_INFO_2W::pPrintProcessor),
    Text(TEXT("parameters"), &JOB_INFO_2W::pParameters),
    // The job's parameters carry the spool file's name.
    Text(TEXT("spoolfile"), &JOB_INFO_2W::pParameters, true),
    Text(TEXT("drivername"), &JOB_INFO_2W::pDriverName),
    Text(TEXT("status"), &JOB_INFO_2W::pStatus),
    Number(TEXT("totalpages"), &JOB_INFO_2W::TotalPages),
    Number(TEXT("elapsedtime"), &JOB_INFO_2W::Time),
    Number(TEXT("pagesprinted"), &JOB_INFO_2W::PagesPrinted),
    OwnNumber(TEXT("pageno"), &TFillTagsInfo::PageNo),
    OwnNumber(TEXT("sn"), &TFillTagsInfo::Sn),
};

// The tag of that name. Null for an unknown name, and for a tag of the job's record when there is
// no record.
const TTag* FindTag(const UnicodeString& name, const TFillTagsInfo& info) {
    const View wanted(name.t_str(), static_cast<std::size_t>(name.Length()));
    const auto* tag = std::find_if(std::begin(kTags), std::end(kTags),
                                   [wanted](const TTag& t) { return wanted == t.name; });
    return tag == std::end(kTags) || (tag->NeedsJob() && info.Job == nullptr) ? nullptr : tag;
}

// A conversion of pointers would show where the text lies in memory.
bool FormatText(const WCHAR* text, const WCHAR* spec, UnicodeString& out) {
    if (text == nullptr) text = TEXT("");
    return (*spec == 0 || System::FormatFits(spec, text)) &&
           mox_format_field(out, TEXT("%s"), spec, text);
}

bool FormatTag(const TTag& tag, const WCHAR* spec, const TFillTagsInfo& info, UnicodeString& out) {
    if (tag.text != nullptr) return FormatText(info.Job->*tag.text, spec, out);
    if (tag.own_text != nullptr) return FormatText((info.*tag.own_text).t_str(), spec, out);
    if (tag.number != nullptr) return mox_format_field(out, tag.spec, spec, info.Job->*tag.number);
    return mox_format_field(out, tag.spec, spec, info.*tag.own_number);
}

bool NeedsQuotes(const UnicodeString& text) {
    return View(text.t_str(), static_cast<std::size_t>(text.Length()))
               .find_first_of(TEXT("\" ,")) != View::npos;
}

// Formats with "%d". `width` may be digits, with at most one minus sign in front; then it becomes
// the width of the conversion.
bool FormatWithWidth(int number, const UnicodeString& width, UnicodeString& out) {
    const UnicodeString format = UnicodeString(TEXT("%")) + width + TEXT("d");
    if (!System::FormatFits(format.t_str(), number)) return false;
    out.printf(format.t_str(), number);
    return true;
}

}  // namespace

bool QVFillField(const UnicodeString& name, const UnicodeString& spec, UnicodeString& out,
                 void* info) {
    const auto& source = *static_cast<const TFillTagsInfo*>(info);
    const TTag* tag = FindTag(name, source);
    if (tag == nullptr || !FormatTag(*tag, spec.t_str(), source, out)) return false;
    if (source.FileNameSafe) {
        out = Sysutils::FixFileName(out, 0);
    } else if (out.Length() == 0) {
        out = TEXT("\"\"");
    } else if (NeedsQuotes(out)) {
        out = Sysutils::AnsiQuotedStr(out, '"');
    }
    return true;
}

bool FillTags(const UnicodeString& tag_text, UnicodeString& value, void* info) {
    const auto& source = *static_cast<const TFillTagsInfo*>(info);
    const int blank = tag_text.Pos(TEXT(" "));
    const UnicodeString name =
        (blank == 0 ? tag_text : tag_text.SubString(1, blank - 1)).LowerCase();
    const UnicodeString width =
        blank == 0 ? UnicodeString() : tag_text.SubString(blank + 1, tag_text.Length());
    const TTag* tag = FindTag(name, source);
    if (tag == nullptr || tag->in_templates_only) return false;
    if (tag->own_number != nullptr) return FormatWithWidth(source.*tag->own_number, width, value);
    if (tag->own_text != nullptr) {
        value = source.*tag->own_text;
    } else if (tag->text != nullptr) {
        value = UnicodeString(source.Job->*tag->text);
    } else {
        value.printf(TEXT("%lu"), source.Job->*tag->number);
    }
    return true;
}
