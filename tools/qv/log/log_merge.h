// The records of several logs in the order of their times.
#pragma once

#include <span>
#include <vector>

#include "log/log_filter.h"
#include "log/log_sources.h"

namespace qv {

// The records of one log keep their order, also where its clock was set back: what follows such a
// record waits for it. Of records of one time, those of the log that was named first come first.
class LogMerge {
  public:
    explicit LogMerge(std::span<LogSource> logs);

    // The next record, or null at the end. Valid until the next call.
    const Mox::TLogMsg* Next();
    // Which of the logs it is of.
    std::size_t Log() const { return heads_.back().log; }

  private:
    struct Head {
        LogTime time;
        std::size_t log;
        const Mox::TLogMsg* record;
    };
    static bool IsLater(const Head& a, const Head& b);
    // Puts the log's next record into the heap.
    void Advance(std::size_t log);

    std::span<LogSource> logs_;
    // One for each log that has more: a heap with the earliest in front. The record that Next
    // returned stands behind it.
    std::vector<Head> heads_;
    bool has_returned_ = false;
};

}  // namespace qv
