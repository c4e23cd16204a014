#include "log/log_save.h"

#include "base/files.h"
#include "base/progress.h"
#include "log/log_sources.h"
#include "log_file/log_image.h"

namespace qv {

namespace {

// How many of the records that pass are in front of the newest that are wanted.
std::uint64_t CountToDrop(Mox::TLogReader& reader, const LogFilter& filter) {
    if (!filter.Last()) return 0;
    std::uint64_t passing = 0;
    while (const Mox::TLogMsg* record = reader.Next()) passing += filter.Passes(*record) ? 1 : 0;
    reader.Seek(0);
    return passing > *filter.Last() ? passing - *filter.Last() : 0;
}

std::uint64_t Copy(Mox::TLogReader& reader, const LogFilter& filter, Mox::TLogImage& image) {
    std::uint64_t to_drop = CountToDrop(reader, filter);
    Progress progress("records");
    std::uint64_t saved = 0;
    while (const Mox::TLogMsg* record = reader.Next()) {
        progress.Add();
        if (!filter.Passes(*record)) continue;
        if (to_drop > 0) {
            --to_drop;
            continue;
        }
        // The copy lends its data block from the record.
        Mox::TLogMsg lent = *record;
        if (!image.Append(lent)) throw Failure("the records are too many for one log file");
        ++saved;
    }
    return saved;
}

}  // namespace

void SaveLog(const SaveOptions& options) {
    const LogFilter filter(options.filter);
    RefuseExisting(options.output);
    const LogSource log = OpenOneLog(options.file);
    Mox::TLogImage image;
    const std::uint64_t saved = Copy(*log.reader, filter, image);
    const std::vector<std::uint8_t>& bytes = image.Finish(kUsualLimit);
    WriteOutput(options.output, std::string(bytes.begin(), bytes.end()));
    PrintError(Counted(saved, "record") + " saved");
    FailOnDamage(log);
}

}  // namespace qv
