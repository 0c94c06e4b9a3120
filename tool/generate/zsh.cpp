#include <fmt/format.h>

#include "tool/generate/pages.h"

namespace zmfb::tool {
namespace {

// A text within single quotes, without the characters that part its words.
std::string plain(std::string_view text) {
    std::string out;
    for (const char c : text) {
        if (c == '\'') {
            out += "'\\''";
        } else if (c == '[' || c == ']' || c == ':') {
            out += '\\';
            out += c;
        } else {
            out += c;
        }
    }
    return out;
}

std::string action_of(const OptionHelp& option) {
    if (!option.choices.empty()) return fmt::format("({})", fmt::join(option.choices, " "));
    if (is_table(option)) return "_zmfb_tables";
    return option.argument == "EXPR" || option.argument == "SQL" ? " " : "_files";
}

std::string arguments_of(const std::vector<OptionHelp>& options, std::string_view indent) {
    std::string lines;
    for (const OptionHelp& option : options) {
        const std::string value =
            option.argument.empty() ? "" : fmt::format(":{}:{}", plain(option.argument), action_of(option));
        for (const std::string& name : option.names) {
            lines += fmt::format(" \\\n{}'{}[{}]{}'", indent, name, plain(option.help), value);
        }
        if (option.names.empty()) {
            lines += fmt::format(" \\\n{}'{}:{}:{}'", indent, option.repeated ? "*" : "",
                                 plain(option.argument), action_of(option));
        }
    }
    return lines;
}

std::string first_word(const std::string& name) { return name.substr(0, name.find(' ')); }

// The branches for the commands of a group, or for those of no group.
std::string branches_of(const CommandLineHelp& help, const std::string& group, std::string_view indent) {
    const std::string prefix = group.empty() ? "" : group + " ";
    std::string lines;
    for (const CommandHelp& command : help.commands) {
        if (!command.name.starts_with(prefix)) continue;
        const std::string word = command.name.substr(prefix.size());
        if (word.find(' ') != std::string::npos) continue;
        lines += fmt::format("{}{}) _arguments{} ;;\n", indent, word,
                             arguments_of(command.options, std::string(indent) + "    "));
    }
    return lines;
}

std::string descriptions_of(const CommandLineHelp& help, const std::string& group, std::string_view indent) {
    const std::string prefix = group.empty() ? "" : group + " ";
    std::string lines;
    std::string last;
    for (const CommandHelp& command : help.commands) {
        if (!command.name.starts_with(prefix)) continue;
        const std::string rest = command.name.substr(prefix.size());
        const std::string word = first_word(rest);
        if (word == last) continue;
        last = word;
        lines += fmt::format("{}'{}:{}'\n", indent, word,
                             word == rest ? plain(command.help) : "commands of " + word);
    }
    return lines;
}

// Those of the database of the environment, which is asked for two seconds at most.
constexpr std::string_view tables_of_database = R"zsh(_zmfb_tables() {
    [[ -n $database ]] || return 1
    local -a tables
    tables=(${(f)"$(timeout -k 1 2 $program names "$PREFIX" 2>/dev/null </dev/null)"})
    compadd -- $tables
}
)zsh";

}  // namespace

std::string zsh_completion(const CommandLineHelp& help) {
    std::string script = fmt::format(
        "#compdef zmfb\n{}_zmfb() {{\n    local context state line program=$words[1]\n"
        "    local -a commands\n    typeset -A opt_args\n"
        "    commands=(\n{}    )\n    _arguments -C{} \\\n        '1: :->command' \\\n        "
        "'*:: :->arguments'\n    local database=$ZMFB_DB\n    (( ${{+opt_args[--db]}} )) && database=\n"
        "    case $state in\n    command) _describe command commands ;;\n"
        "    arguments)\n        case $words[1] in\n{}",
        tables_of_database, descriptions_of(help, "", "        "), arguments_of(help.options, "        "),
        branches_of(help, "", "        "));
    for (const std::string& group : help.groups) {
        script += fmt::format(
            "        {0})\n            commands=(\n{1}            )\n"
            "            _arguments -C '1: :->command' '*:: :->arguments'\n"
            "            case $state in\n            command) _describe command commands ;;\n"
            "            arguments)\n                case $words[1] in\n{2}"
            "                esac ;;\n            esac ;;\n",
            group, descriptions_of(help, group, "                "),
            branches_of(help, group, "                "));
    }
    return script + "        esac ;;\n    esac\n}\n_zmfb \"$@\"\n";
}

}  // namespace zmfb::tool
