#include "journal/old_journal.h"

#include "base/json_output.h"
#include "base/value_text.h"

namespace qv {

namespace {

UnicodeString OldText(const Json& object, const char* key) {
    return FromValueText(object.at(key).get<std::string>()).value();
}

ChangeRecord OldChange(const Json& object, std::uint64_t number) {
    ChangeRecord change;
    change.number = number;
    change.time = object.at("time").get<std::string>();
    change.command = {"qv", object.at("command").get<std::string>()};
    change.state = ChangeState::kDone;
    for (const Json& printer : object.at("printers")) {
        TargetChange target;
        target.printer = OldText(printer, "printer");
        for (const Json& field : printer.at("fields")) {
            target.fields.push_back({field.at("name").get<std::string>(), OldText(field, "before"),
                                     OldText(field, "after")});
        }
        change.targets.push_back(std::move(target));
    }
    return change;
}

}  // namespace

std::vector<ChangeRecord> ReadOldJournal(const std::string& bytes) {
    std::vector<ChangeRecord> changes;
    const Json document = Json::parse(bytes);
    for (const Json& entry : document.at("entries"))
        changes.push_back(OldChange(entry, changes.size() + 1));
    return changes;
}

}  // namespace qv
