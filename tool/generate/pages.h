/// Manual page and completions, made from the command line that --help shows.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace CLI {
class App;
}

namespace zmfb::tool {

struct OptionHelp {
    std::vector<std::string> names;    ///< with their dashes, the long ones first; empty for an argument
    std::string argument;              ///< what stands for the value: "FILE"; empty for a flag
    std::vector<std::string> choices;  ///< the only values, when there are such
    std::string help;
    bool optional = true;
    bool repeated = false;
};

struct CommandHelp {
    std::string name;   ///< "matrix extract"
    std::string group;  ///< the head above it in --help
    std::string help;
    std::string example;
    std::vector<OptionHelp> options;
};

/// Whether names of tables are to be offered for the option, and whether for what stands behind the command.
bool is_table(const OptionHelp& option);
bool takes_tables(const CommandHelp& command);

/// A command line, without what is hidden.
struct CommandLineHelp {
    std::string help;
    std::string footer;
    std::vector<OptionHelp> options;
    std::vector<std::string> groups;  ///< commands that only group others
    std::vector<CommandHelp> commands;
};

/// Reads it off the parser.
CommandLineHelp help_of(const CLI::App& app);

std::string man_page(const CommandLineHelp& help, std::string_view version);
std::string bash_completion(const CommandLineHelp& help);
std::string zsh_completion(const CommandLineHelp& help);
std::string fish_completion(const CommandLineHelp& help);

}  // namespace zmfb::tool
