// A module that fires an event of a job: event_host DESCRIPTION.xml DOCUMENT
#include <qv_rtl.h>

#include <cstdio>
#include <string>

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: event_host DESCRIPTION.xml DOCUMENT\n");
        return 2;
    }
    try {
        TXmlDoc description;
        description.LoadFromFile(argv[1]);
        TXmlFormatter plain;
        const UnicodeString name(argv[2]);
        std::basic_string<WCHAR> document(name.t_str());
        JOB_INFO_2W job = {};
        job.JobId = 1;
        job.pDocument = document.data();
        TFillTagsInfo info;
        info.Job = &job;
        return DoXmlEvent(TEXT("JobDone"), description.FRoot->SaveToString(plain), &info) ? 0 : 1;
    } catch (const UnicodeString&) {
        std::fprintf(stderr, "event_host: the description cannot be read\n");
        return 1;
    }
}
