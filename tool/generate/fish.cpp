#include <fmt/format.h>

#include <algorithm>
#include <set>

#include "tool/generate/pages.h"

namespace zmfb::tool {
namespace {

std::string in_quotes(std::string_view text) {
    std::string out = "'";
    for (const char c : text) {
        if (c == '\'' || c == '\\') out += '\\';
        out += c;
    }
    return out + "'";
}

std::string option_line(const OptionHelp& option, const std::string& condition) {
    std::string line = "complete -c zmfb";
    if (!condition.empty()) line += " -n " + in_quotes(condition);
    for (const std::string& name : option.names) {
        line += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
    }
    if (!option.argument.empty()) line += " -r";
    if (!option.choices.empty()) {
        line += fmt::format(" -f -a {}", in_quotes(fmt::format("{}", fmt::join(option.choices, " "))));
    }
    return line + " -d " + in_quotes(option.help) + "\n";
}

// True where the words of a command stand on the line.
std::string seen(const std::string& command) {
    std::string condition;
    for (std::size_t start = 0; start < command.size();) {
        const std::size_t end = std::min(command.find(' ', start), command.size());
        condition += (condition.empty() ? "" : "; and ") +
                     ("__fish_seen_subcommand_from " + command.substr(start, end - start));
        start = end + 1;
    }
    return condition;
}

// Those of the database of the environment, which is asked for two seconds at most.
constexpr std::string_view tables_of_database = R"(function __zmfb_tables
    set -l words (commandline -opc)
    test -n "$ZMFB_DB"; and not string match -q -- '--db*' $words; or return
    timeout -k 1 2 $words[1] names (commandline -ct) 2>/dev/null </dev/null
end
)";

}  // namespace

std::string fish_completion(const CommandLineHelp& help) {
    std::string script = "# fish completion for zmfb\n" + std::string(tables_of_database);
    std::set<std::string> groups;
    for (const OptionHelp& option : help.options) script += option_line(option, "");
    for (const CommandHelp& command : help.commands) {
        const std::size_t blank = command.name.find(' ');
        const std::string first = command.name.substr(0, blank);
        if (blank == std::string::npos) {
            script += fmt::format("complete -c zmfb -n __fish_use_subcommand -a {} -d {}\n", first,
                                  in_quotes(command.help));
        } else {
            if (groups.insert(first).second) {
                script += fmt::format("complete -c zmfb -n __fish_use_subcommand -a {} -f\n", first);
            }
            script += fmt::format("complete -c zmfb -n {} -f -a {} -d {}\n", in_quotes(seen(first)),
                                  command.name.substr(blank + 1), in_quotes(command.help));
        }
        if (takes_tables(command)) {
            script += fmt::format("complete -c zmfb -n {} -f -a '(__zmfb_tables)'\n",
                                  in_quotes(seen(command.name)));
        }
        for (const OptionHelp& option : command.options) {
            if (!option.names.empty()) script += option_line(option, seen(command.name));
        }
    }
    return script;
}

}  // namespace zmfb::tool
