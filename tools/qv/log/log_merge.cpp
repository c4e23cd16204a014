#include "log/log_merge.h"

#include <algorithm>
#include <tuple>

namespace qv {

LogMerge::LogMerge(std::span<LogSource> logs) : logs_(logs) {
    for (std::size_t log = 0; log < logs.size(); ++log) Advance(log);
}

const Mox::TLogMsg* LogMerge::Next() {
    if (has_returned_) {
        const std::size_t log = Log();
        heads_.pop_back();
        Advance(log);
    }
    has_returned_ = !heads_.empty();
    if (!has_returned_) return nullptr;
    std::pop_heap(heads_.begin(), heads_.end(), IsLater);
    return heads_.back().record;
}

bool LogMerge::IsLater(const Head& a, const Head& b) {
    return std::tie(a.time, a.log) > std::tie(b.time, b.log);
}

void LogMerge::Advance(std::size_t log) {
    const Mox::TLogMsg* const record = logs_[log].reader->Next();
    if (record == nullptr) return;
    heads_.push_back({TimeOf(*record), log, record});
    std::push_heap(heads_.begin(), heads_.end(), IsLater);
}

}  // namespace qv
