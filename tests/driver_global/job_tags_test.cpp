// Job tags in templates and in delimited tags.
#include "driver_global/job_tags.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "mox_classes/format/format_fields.h"
#include "mox_classes/format/template_string.h"
#include "support/string_print.h"

namespace {

class JobTags : public testing::Test {
  protected:
    JobTags() {
        job.JobId = 17;
        job.TotalPages = 4000000000u;
        job.pDocument = document.data();
        job.pParameters = spool.data();
        info.Job = &job;
        info.PageNo = 3;
    }
    UnicodeString Fill(const WCHAR* text) { return FillFormat(text, QVFillField, &info); }
    UnicodeString Tags(const WCHAR* text) {
        return ReplaceTags(text, FillTags, &info, false, TEXT("["), TEXT("]"));
    }

    std::basic_string<WCHAR> document = TEXT("Annual report");
    std::basic_string<WCHAR> spool = TEXT("C:\\t\\1.qvspl");
    JOB_INFO_2W job = {};
    TFillTagsInfo info;
};

TEST_F(JobTags, TemplatesTakeDefaultsAndConversionsOfTheSameKind) {
    const std::pair<const WCHAR*, const WCHAR*> rows[] = {
        {TEXT("{jobid}"), TEXT("17")},
        {TEXT("{jobid%05d}"), TEXT("00017")},
        {TEXT("{jobid%s}"), TEXT("{jobid%s}")},
        {TEXT("{docname%d}"), TEXT("{docname%d}")},
        {TEXT("{docname%*s}{docname%n}"), TEXT("{docname%*s}{docname%n}")},
        {TEXT("{pageno} {sn}"), TEXT("0003 0000")},
        {TEXT("{docname}"), TEXT("\"Annual report\"")},
        {TEXT("{spoolfile}{parameters}"), TEXT("C:\\t\\1.qvspl\x43:\\t\\1.qvspl")},
        {TEXT("{outfile}"), TEXT("\"\"")},
        {TEXT("{username}"), TEXT("\"\"")},
        {TEXT("{DocName} {unknown}"), TEXT("{DocName} {unknown}")}};
    for (const auto& [text, expected] : rows) EXPECT_EQ(Fill(text), expected);
}

TEST_F(JobTags, ValuesForFileNamesAreMadeSafeInsteadOfQuoted) {
    document = TEXT("a/b \"c\"");
    job.pDocument = document.data();
    EXPECT_EQ(Fill(TEXT("{docname}")), TEXT("\"a/b \"\"c\"\"\""));
    info.FileNameSafe = true;
    EXPECT_EQ(Fill(TEXT("{docname}")), TEXT("a\uFF0Fb \uFF02c\uFF02"));
    EXPECT_EQ(Fill(TEXT("{outfile}")), UnicodeString());
}

TEST_F(JobTags, DelimitedTagsTakeAnyCaseAndAWidth) {
    const std::pair<const WCHAR*, const WCHAR*> rows[] = {
        {TEXT("[DocName]"), TEXT("\"Annual report\"")},
        {TEXT("[pageno] [pageno 04] [sn 0008]"), TEXT("3 0003 00000000")},
        {TEXT("[totalpages]"), TEXT("4000000000")},
        {TEXT("<[spoolfile]>"), TEXT("<>")},
        {TEXT("<[pageno *][pageno n%s]>"), TEXT("<>")}};
    for (const auto& [text, expected] : rows) EXPECT_EQ(Tags(text), expected);
}

TEST_F(JobTags, WithoutAJobItsTagsAreUnknown) {
    info.Job = nullptr;
    EXPECT_EQ(Fill(TEXT("{docname}{jobid}{pageno}")), TEXT("{docname}{jobid}0003"));
}

}  // namespace
