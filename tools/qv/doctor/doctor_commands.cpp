// qv doctor, qv bundle: how the product is installed on this machine, and all of it for support.
#include <memory>

#include "base/commands.h"
#include "doctor/bundle.h"
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
        app.add_subcommand("doctor", "Show how the product is installed, and faults");
    doctor->add_flag("--json", *as_json, "One JSON document");
    doctor->footer("Settings are those of the current user. Exit code 1 when something is wrong.");
    doctor->callback([as_json] { RunDoctor(*as_json); });

    auto options = std::make_shared<BundleOptions>();
    CLI::App* bundle = app.add_subcommand(
        "bundle", "Put log, settings and the doctor's findings into one ZIP archive");
    bundle->add_option("OUT.zip", options->output.name, "The archive; - is standard output")
        ->required();
    AddForceOption(*bundle, options->output);
    bundle->add_flag("--redact", options->redact,
                     "Replace the names of users, machines and documents by placeholders, and "
                     "leave out what cannot be rewritten");
    bundle->callback([options] { WriteBundle(*options); });
}

}  // namespace qv
