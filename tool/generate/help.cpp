#include <CLI/CLI.hpp>
#include <algorithm>

#include "tool/generate/pages.h"

namespace zmfb::tool {
namespace {

constexpr std::string_view example_head = "Example:\n  ";

// A check for certain values shows itself in the type: "TEXT:{table,csv}".
std::vector<std::string> choices_of(const std::string& type) {
    std::vector<std::string> choices;
    const std::size_t open = type.find('{');
    const std::size_t end = type.find('}');
    if (open == std::string::npos || end == std::string::npos) return choices;
    for (std::size_t start = open + 1; start < end;) {
        const std::size_t stop = std::min(type.find(',', start), end);
        choices.push_back(type.substr(start, stop - start));
        start = stop + 1;
    }
    return choices;
}

OptionHelp option_help(const CLI::Option& option) {
    OptionHelp help;
    for (const std::string& name : option.get_lnames()) help.names.push_back("--" + name);
    for (const std::string& name : option.get_snames()) help.names.push_back("-" + name);
    const std::string type = option.get_type_name();
    if (help.names.empty()) {
        help.argument = option.get_name(true);
    } else if (option.get_items_expected_max() > 0) {
        help.argument = type.substr(0, type.find(':'));
    }
    help.choices = choices_of(type);
    help.help = option.get_description();
    help.optional = !option.get_required();
    help.repeated = option.get_items_expected_max() > 1;
    return help;
}

std::vector<OptionHelp> options_of(const CLI::App& app) {
    std::vector<OptionHelp> options;
    for (const CLI::Option* option : app.get_options()) {
        if (!option->get_group().empty()) options.push_back(option_help(*option));
    }
    return options;
}

void add_commands(CommandLineHelp& help, const CLI::App& app, const std::string& prefix,
                  const std::string& group) {
    for (const CLI::App* command : app.get_subcommands(nullptr)) {
        if (command->get_group().empty()) continue;
        const std::string name = prefix + command->get_name();
        const std::string head = group.empty() ? command->get_group() : group;
        if (!command->get_subcommands(nullptr).empty()) {
            help.groups.push_back(name);
            add_commands(help, *command, name + " ", head);
            continue;
        }
        std::string example = command->get_footer();
        if (example.starts_with(example_head)) example.erase(0, example_head.size());
        help.commands.push_back({name, head, command->get_description(), example, options_of(*command)});
    }
}

}  // namespace

bool is_table(const OptionHelp& option) { return option.names.empty() && option.argument == "TABLE"; }

bool takes_tables(const CommandHelp& command) { return std::ranges::any_of(command.options, is_table); }

CommandLineHelp help_of(const CLI::App& app) {
    CommandLineHelp help{app.get_description(), app.get_footer(), options_of(app), {}, {}};
    add_commands(help, app, "", "");
    return help;
}

}  // namespace zmfb::tool
