#include "completion/command_tree.h"

#include <cctype>

namespace qv {

namespace {

bool Has(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

// "a,b" from the parser's "{a,b}", which it also writes for the members of a set with values.
std::vector<std::string> ChoicesOf(const std::string& type) {
    std::vector<std::string> choices;
    const std::size_t begin = type.find('{');
    const std::size_t end = type.find('}', begin);
    if (begin == std::string::npos || end == std::string::npos) return choices;
    for (const std::string& item : CLI::detail::split(type.substr(begin + 1, end - begin - 1), ','))
        choices.push_back(item.substr(0, item.find("->")));
    return choices;
}

ValueKind KindOf(const std::string& name, const std::string& type) {
    ValueKind kind;
    kind.choices = ChoicesOf(type);
    for (const std::string& text : {Upper(name), type}) {
        kind.file = kind.file || Has(text, "FILE") || Has(text, "PATH") || Has(text, "REQUEST") ||
                    Has(text, "RESPONSE") || Has(text, ".zip");
        kind.folder = kind.folder || Has(text, "FOLDER") || Has(text, "DIRECTORY");
        kind.printer = kind.printer || Has(text, "PRINTER");
    }
    return kind;
}

OptionEntry EntryOf(const CLI::Option& option) {
    OptionEntry entry;
    const bool positional = option.get_positional();
    if (positional) {
        entry.names.push_back(option.get_name(true));
    } else {
        for (const std::string& name : option.get_snames()) entry.names.push_back("-" + name);
        for (const std::string& name : option.get_lnames()) entry.names.push_back("--" + name);
    }
    const std::string type = option.get_type_name();
    const bool takes_value = option.get_type_size() != 0 && option.get_expected_max() != 0;
    if (takes_value) entry.value = type.substr(0, type.find_first_of(":{ "));
    if (takes_value && entry.value.empty()) entry.value = "VALUE";
    entry.description = option.get_description();
    entry.preset = option.get_default_str();
    entry.required = option.get_required();
    entry.repeated = option.get_items_expected_max() > 1;
    if (takes_value) entry.kind = KindOf(entry.names.back(), type);
    return entry;
}

void Append(std::vector<CommandEntry>& tree, const CLI::App& app, const std::string& above) {
    CommandEntry entry;
    entry.path = above.empty() ? app.get_name() : above + " " + app.get_name();
    entry.name = app.get_name();
    entry.description = app.get_description();
    entry.footer = app.get_footer();
    for (const CLI::Option* option : app.get_options()) {
        if (option->get_group().empty()) continue;  // hidden
        (option->get_positional() ? entry.positionals : entry.options).push_back(EntryOf(*option));
    }
    const auto below =
        app.get_subcommands([](const CLI::App* command) { return !command->get_group().empty(); });
    for (const CLI::App* command : below) entry.commands.push_back(command->get_name());
    const std::string path = entry.path;
    tree.push_back(std::move(entry));
    for (const CLI::App* command : below) Append(tree, *command, path);
}

}  // namespace

std::string Upper(std::string text) {
    for (char& c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return text;
}

std::vector<CommandEntry> CommandTree(const CLI::App& app) {
    std::vector<CommandEntry> tree;
    Append(tree, app, "");
    return tree;
}

}  // namespace qv
