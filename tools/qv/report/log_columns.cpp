#include "report/log_columns.h"

#include <algorithm>
#include <map>

#include "base/host.h"
#include "log/log_input.h"
#include "log/log_time.h"
#include "log/record_parts.h"

namespace qv {

namespace {

constexpr std::int64_t kTicksPerMillisecond = kTicksPerSecond / 1000;
constexpr std::int64_t kStartOfUnix = kFrom1601To1970 * 1000;  // milliseconds since 1601

bool HasTime(LogTime time) {
    return !UtcText(time).empty();
}

std::int64_t Milliseconds(LogTime time) {
    return static_cast<std::int64_t>(time) / kTicksPerMillisecond - kStartOfUnix;
}

}  // namespace

LogTime LogTimeOf(std::int64_t start, std::int64_t ticks) {
    return static_cast<LogTime>((start + kStartOfUnix) * kTicksPerMillisecond + ticks);
}

void LogColumns::Read(Contents& contents) {
    for (const LogSource& log : contents.logs.logs) logs_.push_back(log.name);
    skips_.assign(logs_.size(), 0);
    contents.ForEachRecord([&](const Mox::TLogMsg& record, std::size_t log) {
        ++total_;
        AddGaps(contents, log);
        if (!filter_.Passes(record)) return;
        rows_.push_back({TimeOf(record), SessionOf(record), record.level, record.line,
                         record.processId, record.threadId, log, ToUtf8(record.source),
                         ToUtf8(record.text), ToUtf8(record.dataLabel), BlockHex(record)});
    });
    for (std::size_t log = 0; log < logs_.size(); ++log) AddGaps(contents, log);
    KeepNewest();
}

// What a log's reader has left out since its record before this one.
void LogColumns::AddGaps(const Contents& contents, std::size_t log) {
    const Mox::TLogReader& reader = *contents.logs.logs[log].reader;
    for (int& done = skips_[log]; done < reader.SkipCount(); ++done)
        if (IsPlace(reader.Skip(done))) gaps_.push_back({rows_.size(), log, reader.Skip(done)});
}

void LogColumns::KeepNewest() {
    const std::size_t wanted = filter_.Last().value_or(rows_.size());
    if (wanted >= rows_.size()) return;
    const std::size_t dropped = rows_.size() - wanted;
    rows_.erase(rows_.begin(), rows_.begin() + static_cast<std::ptrdiff_t>(dropped));
    for (Gap& gap : gaps_) gap.before -= std::min(gap.before, dropped);
}

std::string LogColumns::FirstTime() const {
    return rows_.empty() ? std::string() : LocalText(rows_.front().time);
}

std::string LogColumns::LastTime() const {
    return rows_.empty() ? std::string() : LocalText(rows_.back().time);
}

template <class Get>
Json LogColumns::Column(const Get& get) const {
    Json column = Json::array();
    for (const Row& row : rows_) column.push_back(get(row));
    return column;
}

Json LogColumns::ToJson(bool with_data) const {
    Json json = {{"logs", logs_}};
    AddTimes(json);
    json["logOf"] = Column([](const Row& row) { return row.log; });
    json["levels"] = Column([](const Row& row) { return row.level; });
    json["processes"] = Column([](const Row& row) { return row.process; });
    json["threads"] = Column([](const Row& row) { return row.thread; });
    json["sessions"] = Column([](const Row& row) { return row.session; });
    AddSources(json);
    json["lines"] = Column([](const Row& row) { return row.line; });
    json["texts"] = Column([](const Row& row) { return row.text; });
    AddBlocks(json, with_data);
    json["gaps"] = Json::array();
    for (const Gap& gap : gaps_) {
        json["gaps"].push_back(
            {gap.before, gap.log, gap.skip.offset, gap.skip.size, Text(gap.skip.reason)});
    }
    return json;
}

// Local time is told by where its distance from UTC changes.
void LogColumns::AddTimes(Json& json) const {
    std::int64_t start = 0;
    const auto first =
        std::find_if(rows_.begin(), rows_.end(), [](const Row& row) { return HasTime(row.time); });
    if (first != rows_.end()) start = Milliseconds(first->time);
    const auto from = static_cast<std::int64_t>(LogTimeOf(start, 0));
    Json times = Json::array();
    Json zones = Json::array();
    std::int64_t zone = -1;
    for (const Row& row : rows_) {
        const bool has_time = HasTime(row.time);
        const std::int64_t offset = has_time ? LocalOffset(Milliseconds(row.time) / 1000) : zone;
        if (offset != zone) zones.push_back({times.size(), offset});
        zone = offset;
        times.push_back(has_time ? Json(static_cast<std::int64_t>(row.time) - from) : Json());
    }
    json["start"] = start;
    json["times"] = std::move(times);
    json["zones"] = std::move(zones);
}

void LogColumns::AddSources(Json& json) const {
    std::map<std::string, std::size_t> places;
    Json names = Json::array();
    json["sources"] = Column([&](const Row& row) {
        const auto [place, is_new] = places.emplace(row.source, places.size());
        if (is_new) names.push_back(row.source);
        return place->second;
    });
    json["names"] = std::move(names);
}

void LogColumns::AddBlocks(Json& json, bool with_data) const {
    Json blocks = Json::array();
    for (std::size_t i = 0; i < rows_.size(); ++i) {
        const Row& row = rows_[i];
        const std::string hex = with_data ? row.hex : std::string();
        if (!row.label.empty() || !hex.empty()) blocks.push_back({i, row.label, hex});
    }
    json["blocks"] = std::move(blocks);
}

}  // namespace qv
