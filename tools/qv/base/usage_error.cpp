#include "base/usage_error.h"

#include <algorithm>

#include "base/console.h"
#include "base/suggestion.h"

namespace qv {

namespace {

std::vector<const CLI::App*> CommandsOf(const CLI::App& app) {
    return app.get_subcommands(
        [](const CLI::App* command) { return !command->get_group().empty(); });
}

std::vector<std::string> NamesOf(const std::vector<const CLI::App*>& commands) {
    std::vector<std::string> names;
    names.reserve(commands.size());
    for (const CLI::App* command : commands) names.push_back(command->get_name());
    return names;
}

// The options of the command as they are typed: "--all", "-n".
std::vector<std::string> OptionsOf(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::Option* option : app.get_options()) {
        for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
        for (const std::string& name : option->get_snames()) names.push_back("-" + name);
    }
    return names;
}

bool IsOption(const std::string& word) {
    return word.starts_with('-') && word != "-" && word != "--";
}

// Walks through the commands that the words name and finds the first unknown word.
class Follower {
  public:
    explicit Follower(const CLI::App& app) : app_(&app) {}

    // Returns the error of the word, or an empty text.
    std::string Follow(const std::string& word) {
        if (IsOption(word)) return FollowOption(word);
        const auto commands = CommandsOf(*app_);
        if (commands.empty()) return "";
        const auto names = NamesOf(commands);
        const auto found = std::ranges::find(names, word);
        if (found != names.end()) {
            app_ = commands[static_cast<std::size_t>(found - names.begin())];
            return "";
        }
        const bool is_program = app_->get_parent() == nullptr;
        const std::string whose =
            is_program ? "no command " : "'" + app_->get_name() + "' has no command ";
        return whose + Quoted(word) + Suggestion(word, names);
    }

  private:
    std::string FollowOption(const std::string& word) const {
        const std::string name = word.substr(0, word.find('='));
        const auto names = OptionsOf(*app_);
        // Short options may stand together, and a value may follow one without a blank.
        if (!name.starts_with("--") || std::ranges::find(names, name) != names.end()) return "";
        return "no option " + Quoted(name) + Suggestion(name, names);
    }

    const CLI::App* app_;
};

}  // namespace

std::string UsageError(const CLI::App& app, const CLI::Error& error,
                       const std::vector<std::string>& words) {
    Follower follower(app);
    for (const std::string& word : words) {
        if (word == "--") break;
        const std::string fault = follower.Follow(word);
        if (!fault.empty()) return fault;
    }
    return error.what();
}

}  // namespace qv
