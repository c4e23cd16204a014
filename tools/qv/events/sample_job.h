// A sample print job, described by command-line options, to try out events, tags and job records.
#pragma once

#include <windows.h>

#include <winspool.h>

#include <CLI/CLI.hpp>
#include <string>

#include "base/console.h"
#include "driver_global/job_tags.h"

namespace qv {

// A job as the options describe it.
struct JobOptions {
    DWORD id = 1, pages = 1;
    int page = 1, serial = 1;
    std::string document = "Document", user = "user", machine = "machine", printer = "printer";
    std::string spool_file, output_file, application;
};

inline void AddJobOptions(CLI::App& command, JobOptions& job) {
    command.add_option("--job-id", job.id, "The job's number");
    command.add_option("--document", job.document, "The document's name");
    command.add_option("--user", job.user, "The user who prints");
    command.add_option("--machine", job.machine, "The machine of the user");
    command.add_option("--printer", job.printer, "The printer's name");
    command.add_option("--spool-file", job.spool_file, "The spool file (the job's parameters)");
    command.add_option("--output-file", job.output_file, "The output file");
    command.add_option("--application", job.application, "The application");
    command.add_option("--pages", job.pages, "The number of pages");
    command.add_option("--page", job.page, "The page's number");
    command.add_option("--serial", job.serial, "The serial number");
}

// Owns the texts that the job's record points at.
class SampleJob {
  public:
    explicit SampleJob(const JobOptions& options) {
        job_.JobId = options.id;
        job_.TotalPages = options.pages;
        job_.pDocument = Keep(0, options.document);
        job_.pUserName = Keep(1, options.user);
        job_.pMachineName = Keep(2, options.machine);
        job_.pPrinterName = Keep(3, options.printer);
        job_.pParameters = Keep(4, options.spool_file);
        info_.Job = &job_;
        info_.Sn = options.serial;
        info_.PageNo = options.page;
        info_.OutFile = FromUtf8(options.output_file);
        info_.Application = FromUtf8(options.application);
    }
    SampleJob(const SampleJob&) = delete;
    SampleJob& operator=(const SampleJob&) = delete;
    TFillTagsInfo& Info() { return info_; }
    JOB_INFO_2W& Record() { return job_; }

  private:
    LPWSTR Keep(int i, const std::string& text) {
        texts_[i] = FromUtf8(text).t_str();
        return texts_[i].data();
    }

    std::basic_string<WCHAR> texts_[5];
    JOB_INFO_2W job_ = {};
    TFillTagsInfo info_;
};

}  // namespace qv
