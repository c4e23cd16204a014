// Templates, format fields and tags: texts of anyone, filled from a job.
#include "mox_classes/format/template_string.h"

#include "driver_global/job_tags.h"
#include "support/input.h"

static bool Nothing(const UnicodeString&, const UnicodeString&, UnicodeString&, void*) {
    return false;
}

static void Fill(const UnicodeString& text, TFillTagsInfo& info) {
    const UnicodeString marked = TemplateString(text, QVFillField, &info);
    fuzz::Require(TemplateString(marked, QVFillField, &info) == marked, "marked once");
    fuzz::Require(TemplateStringSafeFormat(text, QVFillField, &info) ==
                      TemplateStringFormat(marked, QVFillField, &info),
                  "one way to fill");
    fuzz::Require(FillFormat(text.t_str(), Nothing, nullptr) == text, "unknown fields stay");
    const int at = TemplateStringFindField(marked, TEXT("docname"));
    fuzz::Require(at < 0 || marked[at + 2] == '{', "a field begins with a brace");
    TFormatFields(text.t_str()).printf(text.t_str(), 7, TEXT("x"), 1.5, 8LL, 9U);
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    UnicodeString own = fuzz::Text(input.Until('\n'));
    JOB_INFO_2W job{};
    job.pDocument = own.Unique().data();
    TFillTagsInfo info;
    info.Job = input.Byte() % 4 == 0 ? nullptr : &job;
    info.FileNameSafe = input.Byte() % 2 != 0;
    info.OutFile = own;
    const UnicodeString open = fuzz::Text(input.Until('\n')), close = fuzz::Text(input.Until('\n'));
    const UnicodeString text = fuzz::Text(input.Rest());
    Fill(text, info);
    const UnicodeString full = ReplaceTags(text, FillTags, &info, info.FileNameSafe, open, close);
    if (text.Pos(open) == 0) fuzz::Require(full == text, "no tag, no change");
    return 0;
}
