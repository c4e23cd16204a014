#include "log/log_stat.h"

#include <map>
#include <vector>

#include "base/json_output.h"
#include "base/progress.h"
#include "log/log_filter.h"
#include "log/log_input.h"
#include "log/log_sources.h"
#include "log/record_line.h"
#include "log/ring_picture.h"

namespace qv {

namespace {

constexpr std::size_t kPictureWidth = 64;

// Some of the records: how many, and the oldest and the newest time among them.
struct Share {
    std::uint64_t records = 0;
    LogTime first = 0, last = 0;

    void Add(LogTime time) {
        if (records == 0 || time < first) first = time;
        if (records == 0 || time > last) last = time;
        ++records;
    }
};

struct LogStat {
    Mox::TLogFileHeader header{};
    Share all;
    std::map<std::string, Share> levels, sources;
    std::map<std::uint32_t, Share> processes;
    std::vector<Mox::TLogSkip> skips;
    std::uint32_t missing = 0;  // bytes of the ring behind the file's end

    // The change counter has counted every record since the log was made.
    std::uint64_t Dropped() const {
        return header.counter > header.count ? header.counter - header.count : 0;
    }
};

LogStat Collect(Mox::TLogReader& reader) {
    Progress progress("records");
    LogStat stat;
    stat.header = reader.Header();
    stat.missing = reader.Missing();
    while (const Mox::TLogMsg* record = reader.Next()) {
        progress.Add();
        const LogTime time = TimeOf(*record);
        stat.all.Add(time);
        stat.levels[LevelName(record->level)].Add(time);
        stat.sources[OneLine(record->source)].Add(time);
        stat.processes[record->processId].Add(time);
    }
    stat.skips = Skips(reader);
    return stat;
}

// "label" and what belongs to it, in columns.
void Row(const std::string& label, const std::string& text) {
    PrintLine(label + std::string(label.size() < 10 ? 10 - label.size() : 1, ' ') + text);
}

std::string Span(const Share& share) {
    return LocalText(share.first) + " to " + LocalText(share.last);
}

std::string ShareText(const std::string& name, const Share& share) {
    const std::string padding(name.size() < 20 ? 20 - name.size() : 1, ' ');
    const std::string count = std::to_string(share.records);
    return name + padding + std::string(count.size() < 8 ? 8 - count.size() : 0, ' ') + count;
}

std::string FillText(const Mox::TLogFileHeader& header) {
    const std::uint64_t room = header.limit > Mox::kFirstSlot ? header.limit - Mox::kFirstSlot : 0;
    const std::uint64_t fill = RingFill(header);
    return std::to_string(fill) + " of " + std::to_string(room) + " bytes, " +
           std::to_string(room == 0 ? 0 : fill * 100 / room) + " %";
}

void PrintText(const std::string& name, const LogStat& stat) {
    Row("file", OneLine(FromUtf8(name)));
    Row("records", std::to_string(stat.all.records) + ", " + std::to_string(stat.Dropped()) +
                       " dropped since the log was made");
    if (stat.all.records > 0) Row("time", Span(stat.all));
    for (const auto& [level, share] : stat.levels)
        Row("level", ShareText(level == " " ? "blank" : level, share));
    for (const auto& [pid, share] : stat.processes)
        Row("process", ShareText(std::to_string(pid), share) + "  " + Span(share));
    for (const auto& [source, share] : stat.sources) Row("source", ShareText(source, share));
    if (stat.header.version != 0) {
        Row("ring", FillText(stat.header));
        Row("", "[" + RingPicture(stat.header, stat.skips, kPictureWidth) + "]");
    }
    if (stat.missing > 0) Row("missing", MissingText(stat.missing));
    Row("damage", stat.skips.empty() ? "none" : std::to_string(stat.skips.size()) + " places");
}

Json TimeValue(LogTime time) {
    const std::string text = UtcText(time);
    return text.empty() ? Json() : Json(text);
}

template <class Key>
Json Shares(const char* key_name, const std::map<Key, Share>& shares) {
    Json list = Json::array();
    for (const auto& [key, share] : shares) {
        list.push_back({{key_name, key},
                        {"records", share.records},
                        {"first", TimeValue(share.first)},
                        {"last", TimeValue(share.last)}});
    }
    return list;
}

void PrintAsJson(const std::string& name, const LogStat& stat) {
    const Mox::TLogFileHeader& header = stat.header;
    const bool any = stat.all.records > 0;
    Json body;
    body["file"] = name;
    body["records"] = stat.all.records;
    body["dropped"] = stat.Dropped();
    body["written"] = std::uint64_t{header.counter};
    body["first"] = any ? TimeValue(stat.all.first) : Json();
    body["last"] = any ? TimeValue(stat.all.last) : Json();
    body["levels"] = Shares("level", stat.levels);
    body["processes"] = Shares("pid", stat.processes);
    body["sources"] = Shares("source", stat.sources);
    body["ring"] = {{"limit", std::uint32_t{header.limit}},
                    {"fill", RingFill(header)},
                    {"oldest", std::uint32_t{header.oldest}},
                    {"write_position", std::uint32_t{header.write_position}},
                    {"wrap", std::uint32_t{header.wrap}}};
    body["missing"] = stat.missing;
    body["damage"] = DamageList(stat.skips);
    PrintJson(body);
}

}  // namespace

void ShowLogStat(const std::string& file, bool json) {
    const LogSource log = OpenOneLog(file);
    const LogStat stat = Collect(*log.reader);
    json ? PrintAsJson(log.name, stat) : PrintText(log.name, stat);
    FailOnDamage(log);
}

}  // namespace qv
