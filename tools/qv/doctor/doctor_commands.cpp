// qv doctor: how the product is installed on this machine.
#include <memory>

#include "base/commands.h"
#include "doctor/examination.h"

namespace qv {

namespace {

void RunDoctor(bool as_json) {
    const Json examination = Examine();
    if (as_json) {
        PrintJson(examination);
    } else {
        Print(ExaminationText(examination));
    }
    if (!examination.at("problems").empty()) throw Failure("");
}

}  // namespace

void AddDoctorCommands(CLI::App& app) {
    auto as_json = std::make_shared<bool>(false);
    CLI::App* doctor =
        app.add_subcommand("doctor", "Show how the product is installed, and what is wrong");
    doctor->add_flag("--json", *as_json, "One JSON document");
    doctor->footer("Settings are those of the current user. Exit code 1 when something is wrong.");
    doctor->callback([as_json] { RunDoctor(*as_json); });
}

}  // namespace qv
