// The records of a log as the script of the report's page takes them: an array for each column.
#pragma once

#include "base/json_output.h"
#include "log/log_filter.h"
#include "report/contents.h"

namespace qv {

// The time of a record in the columns.
LogTime LogTimeOf(std::int64_t start, std::int64_t ticks);

class LogColumns {
  public:
    explicit LogColumns(const LogFilterOptions& options) : filter_(options) {}

    // Takes the records of the logs from the oldest to the newest, and the gaps between them.
    void Read(Contents& contents);

    // How many records passed the filter, and how many there are.
    std::size_t Count() const { return rows_.size(); }
    std::uint64_t Total() const { return total_; }
    // Local times of the first and the last one; empty without records that have a time.
    std::string FirstTime() const;
    std::string LastTime() const;

    // {"logs": [names], "start": milliseconds since 1970, "times": [units of 100 ns behind it, or
    // null for a time
    //  that cannot be shown], "zones": [[from this record on, seconds ahead of UTC]...],
    //  "logOf": [places in "logs"], "levels", "processes", "threads", "sessions" (-1: not known),
    //  "lines",
    //  "sources": [places in "names"], "names": [...], "texts": [...],
    //  "blocks": [[record, label, hex]], "gaps": [[in front of this record, log, offset,
    //  size, why]]}
    Json ToJson(bool with_data) const;

  private:
    struct Row {
        LogTime time;
        std::int64_t session;
        int level, line;
        std::uint32_t process, thread;
        std::size_t log;
        std::string source, text, label, hex;
    };
    struct Gap {
        std::size_t before, log;
        Mox::TLogSkip skip;
    };

    void AddGaps(const Contents& contents, std::size_t log);
    void KeepNewest();
    void AddTimes(Json& json) const;
    void AddSources(Json& json) const;
    void AddBlocks(Json& json, bool with_data) const;
    template <class Get>
    Json Column(const Get& get) const;

    LogFilter filter_;
    std::vector<Row> rows_;
    std::vector<Gap> gaps_;
    std::vector<std::string> logs_;
    std::vector<int> skips_;  // of each log, how many are among the gaps
    std::uint64_t total_ = 0;
};

}  // namespace qv
