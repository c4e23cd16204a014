#include "settings/change_list.h"

#include <algorithm>

#include "settings/changes.h"
#include "settings/field_json.h"

namespace qv {

namespace {

std::string PlainText(const std::string& utf8) {
    return OneLine(FromUtf8(utf8));
}

std::string Word(const std::string& word) {
    const std::string text = PlainText(word);
    return text.empty() || text.find(' ') != std::string::npos ? '"' + text + '"' : text;
}

std::string CommandText(const std::vector<std::string>& command) {
    std::string text;
    for (const std::string& word : command) text += (text.empty() ? "" : " ") + Word(word);
    return text;
}

std::string StateText(const ChangeRecord& change) {
    std::string text;
    if (change.undoes != 0) text += " (takes back change " + std::to_string(change.undoes) + ")";
    if (change.state == ChangeState::kStopped) text += " (stopped by the user)";
    if (change.state == ChangeState::kUnfinished) text += " (unfinished: cut off, or running)";
    return text;
}

std::string TargetName(const TargetChange& target) {
    return target.is_global ? "global settings" : OneLine(target.printer);
}

// A known field gives its own type of value, an unknown one a text.
Json ValueJson(const std::string& field, const std::optional<UnicodeString>& value) {
    if (!value) return {};
    const Field* const known = FindField(FromUtf8(field));
    return known == nullptr ? Text(*value) : FieldJson(*known, *value);
}

// The word behind the program's name; an option of the program may stand between them.
std::string Verb(const std::vector<std::string>& command) {
    const auto verb = std::find_if(command.begin() + (command.empty() ? 0 : 1), command.end(),
                                   [](const std::string& word) { return !word.starts_with('-'); });
    return verb == command.end() ? "" : *verb;
}

Json TargetJson(const ChangeRecord& change, const TargetChange& target) {
    Json fields = Json::array();
    for (const ValueChange& f : target.fields) {
        fields.push_back({{"name", f.field},
                          {"old", ValueJson(f.field, f.before)},
                          {"new", ValueJson(f.field, f.after)}});
    }
    Json object = {{"printer", target.is_global ? Json() : Text(target.printer)},
                   {"fields", fields}};
    if (!target.IsMade()) object["error"] = target.failure;
    if (target.undone) object["undone"] = true;
    if (change.IsUnknown(target)) object["unknown"] = true;
    return object;
}

const char* StateName(ChangeState state) {
    switch (state) {
        case ChangeState::kDone:
            return "done";
        case ChangeState::kStopped:
            return "stopped";
        default:
            return "unfinished";
    }
}

}  // namespace

void PrintRecord(const ChangeRecord& change) {
    std::string line = std::to_string(change.number) + "  " + PlainText(change.time);
    if (!change.user.empty()) line += "  " + PlainText(change.user) + "@" + PlainText(change.host);
    if (change.process != 0) line += "  P" + std::to_string(change.process);
    PrintLine(line + "  " + CommandText(change.command) + StateText(change));
    for (const TargetChange& target : change.targets) {
        const std::string name = "  " + TargetName(target) + ": ";
        if (!target.IsMade()) {
            PrintLine(name + "not changed: " + PlainText(target.failure));
            continue;
        }
        if (change.IsUnknown(target))
            PrintLine(name + "what changed is not known: the command did not come to its end");
        for (const ValueChange& f : target.fields) {
            PrintLine(name + PlainText(f.field) + ": " + Shown(f.before) + " -> " + Shown(f.after) +
                      (target.undone ? " (taken back)" : ""));
        }
    }
}

Json RecordJson(const ChangeRecord& change) {
    Json printers = Json::array();
    for (const TargetChange& target : change.targets)
        printers.push_back(TargetJson(change, target));
    Json object = {{"change", change.number},     {"time", change.time},
                   {"user", change.user},         {"host", change.host},
                   {"process", change.process},   {"command", Verb(change.command)},
                   {"arguments", change.command}, {"state", StateName(change.state)}};
    if (change.undoes != 0) object["undoes"] = change.undoes;
    object["printers"] = printers;
    return object;
}

}  // namespace qv
