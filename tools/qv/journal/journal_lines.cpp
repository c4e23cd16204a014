#include "journal/journal_lines.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

#include "base/json_output.h"
#include "base/value_text.h"

namespace qv {

namespace {

constexpr const char* kName = "qv settings";
constexpr int kVersion = 1;

std::string Line(const Json& object) {
    return object.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

Json ValueJson(const std::optional<UnicodeString>& value) {
    return value ? Json(ToValueText(*value)) : Json();
}

const char* NameOf(ChangeState state) {
    return state == ChangeState::kStopped ? "stopped" : "done";
}

// A line may hold anything. Each function below throws for a value that it does not accept.
std::uint64_t ReadNumber(const Json& value) {
    const auto number = value.get<std::uint64_t>();
    if (!value.is_number_unsigned() || number == 0 || number > kLargestNumber)
        throw Failure("a number that none is");
    return number;
}

UnicodeString ReadValueText(const Json& value) {
    return FromValueText(value.get_ref<const std::string&>()).value();
}

std::optional<UnicodeString> ReadOptional(const Json& value) {
    if (value.is_null()) return {};
    return ReadValueText(value);
}

TargetChange ReadTarget(const Json& object) {
    TargetChange target;
    target.is_global = object.contains("global");
    if (!target.is_global) target.printer = ReadValueText(object.at("printer"));
    for (const Json& field : object.at("fields")) {
        target.fields.push_back({field.at("name").get<std::string>(), ReadOptional(field.at("old")),
                                 ReadOptional(field.at("new"))});
    }
    target.failure = object.value("error", std::string());
    return target;
}

ChangeRecord ReadBegin(std::uint64_t number, const Json& begin) {
    ChangeRecord change;
    change.number = number;
    change.time = begin.at("time").get<std::string>();
    change.user = begin.value("user", std::string());
    change.host = begin.value("host", std::string());
    change.process = begin.contains("process") ? ReadNumber(begin.at("process")) : 0;
    change.command = begin.at("command").get<std::vector<std::string>>();
    change.undoes = begin.contains("undoes") ? ReadNumber(begin.at("undoes")) : 0;
    return change;
}

// The key of a target within the journal.
std::string KeyOf(std::uint64_t change, const TargetChange& target) {
    return std::to_string(change) + (target.is_global ? "|" : ":" + ToUtf8(target.printer));
}

class JournalReader {
  public:
    void Take(std::string_view line) {
        try {
            const Json object = Json::parse(line);
            TakeObject(ReadNumber(object.at("change")), object);
        } catch (const std::exception&) {
            ++content_.bad_lines;
        }
    }

    JournalContent Finish() {
        MarkUndone();
        return std::move(content_);
    }

  private:
    void TakeObject(std::uint64_t number, const Json& object) {
        if (object.contains("begin")) return Begin(ReadBegin(number, object.at("begin")));
        ChangeRecord& change = content_.changes[places_.at(number)];
        if (object.contains("end")) {
            const auto end = object.at("end").get<std::string>();
            change.state = end == "stopped" ? ChangeState::kStopped : ChangeState::kDone;
            return;
        }
        TargetChange target = ReadTarget(object);
        const auto [place, is_new] =
            targets_.try_emplace(KeyOf(number, target), change.targets.size());
        if (is_new) {
            change.targets.push_back(std::move(target));
        } else {
            change.targets[place->second] = std::move(target);
        }
    }

    void Begin(ChangeRecord change) {
        const auto [place, is_new] = places_.try_emplace(change.number, content_.changes.size());
        if (!is_new || change.undoes >= change.number) throw Failure("a number that none is");
        content_.changes.push_back(std::move(change));
    }

    // From the last change to the first: a change that was undone undoes nothing itself.
    void MarkUndone() {
        std::unordered_set<std::string> undone;
        for (std::size_t i = content_.changes.size(); i-- > 0;) {
            ChangeRecord& change = content_.changes[i];
            const bool counts = change.undoes != 0 && change.state != ChangeState::kUnfinished;
            for (TargetChange& target : change.targets) {
                target.undone = undone.contains(KeyOf(change.number, target));
                if (counts && target.IsMade() && !target.undone)
                    undone.insert(KeyOf(change.undoes, target));
            }
        }
    }

    JournalContent content_;
    std::unordered_map<std::uint64_t, std::size_t> places_;  // of changes, by their numbers
    std::unordered_map<std::string, std::size_t> targets_;   // within their changes
};

}  // namespace

bool ChangeRecord::CanBeUndone() const {
    return std::ranges::any_of(targets, [](const TargetChange& t) { return t.CanBeUndone(); });
}

bool ChangeRecord::IsUnknown(const TargetChange& target) const {
    const bool has_plan = undoes != 0 && !target.is_global;
    return state == ChangeState::kUnfinished && !has_plan && target.IsMade() &&
           target.fields.empty();
}

bool ChangeRecord::HasUnknown() const {
    return std::ranges::any_of(targets, [this](const TargetChange& t) { return IsUnknown(t); });
}

std::string HeadLine() {
    return Line({{"journal", kName}, {"schema", kVersion}});
}

std::string BeginLine(const ChangeRecord& change) {
    Json begin = {{"time", change.time}};
    if (!change.user.empty()) begin["user"] = change.user;
    if (!change.host.empty()) begin["host"] = change.host;
    if (change.process != 0) begin["process"] = change.process;
    begin["command"] = change.command;
    if (change.undoes != 0) begin["undoes"] = change.undoes;
    return Line({{"change", change.number}, {"begin", begin}});
}

std::string TargetLine(std::uint64_t change, const TargetChange& target) {
    Json fields = Json::array();
    for (const ValueChange& f : target.fields) {
        fields.push_back(
            {{"name", f.field}, {"old", ValueJson(f.before)}, {"new", ValueJson(f.after)}});
    }
    Json line = {{"change", change}};
    if (target.is_global) {
        line["global"] = true;
    } else {
        line["printer"] = ToValueText(target.printer);
    }
    line["fields"] = fields;
    if (!target.IsMade()) line["error"] = target.failure;
    return Line(line);
}

std::string EndLine(std::uint64_t change, ChangeState state) {
    return Line({{"change", change}, {"end", NameOf(state)}});
}

JournalHead ExamineHead(std::string_view bytes) {
    try {
        const Json head = Json::parse(bytes.substr(0, bytes.find('\n')));
        if (head.at("journal") != kName) return JournalHead::kNone;
        return head.at("schema") == kVersion ? JournalHead::kGood : JournalHead::kNewer;
    } catch (const std::exception&) {
        return JournalHead::kNone;
    }
}

std::optional<std::uint64_t> ChangeOfLine(std::string_view line) {
    try {
        return ReadNumber(Json::parse(line).at("change"));
    } catch (const std::exception&) {
        return {};
    }
}

bool IsBeginLine(std::string_view line) {
    try {
        return Json::parse(line).contains("begin");
    } catch (const std::exception&) {
        return false;
    }
}

JournalContent ReadJournal(std::string_view bytes) {
    JournalReader reader;
    for (bool is_head = true; !bytes.empty(); is_head = false) {
        const std::size_t end = bytes.find('\n');
        if (end == std::string_view::npos) break;
        if (!is_head) reader.Take(bytes.substr(0, end));
        bytes.remove_prefix(end + 1);
    }
    return reader.Finish();
}

}  // namespace qv
