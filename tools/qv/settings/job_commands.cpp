// qv job: reads and writes flattened job records.
#include <CLI/CLI.hpp>
#include <memory>

#include "base/files.h"
#include "driver_global/diagnostic_text.h"
#include "events/sample_job.h"
#include "printer_query/job_record.h"
#include "settings/settings_commands.h"

namespace qv {

namespace {

void EncodeJob(const std::string& file, const JobOptions& options) {
    SampleJob job(options);
    auto block = EncodeJobInfo2(&job.Record());
    const auto* bytes = reinterpret_cast<const char*>(&block[0]);
    WriteAll(file, {bytes, bytes + block.Size()});
}

void DecodeJob(const std::string& file) {
    const std::string bytes = ReadAll(file);
    auto job = DecodeJobInfo2(bytes.data(), static_cast<int>(bytes.size()));
    if (!job.IsSuccess()) {
        throw Failure(Quoted(file) + " is no job record: " + SystemText(job.GetErrorCode()));
    }
    PrintLine(OneLine(TextTypeJOB_INFO_2(&job[0]).TrimRight()));
}

}  // namespace

void AddJobCommands(CLI::App& app) {
    auto name = std::make_shared<std::string>();
    auto job = std::make_shared<JobOptions>();
    CLI::App* records = app.add_subcommand("job", "Flattened job records");
    records->require_subcommand(1);
    CLI::App* encode =
        records->add_subcommand("encode", "Write the record of a job that the options describe");
    encode->add_option("FILE", *name, "The file to write")->required();
    AddJobOptions(*encode, *job);
    encode->callback([name, job] { EncodeJob(*name, *job); });
    CLI::App* decode = records->add_subcommand("decode", "Check a record and show it");
    decode->add_option("FILE", *name, "A file that holds a record")->required();
    decode->callback([name] { DecodeJob(*name); });
}

}  // namespace qv
