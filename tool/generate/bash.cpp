#include <fmt/format.h>

#include <set>

#include "tool/generate/pages.h"

namespace zmfb::tool {
namespace {

// What is offered behind an option that takes a value.
struct Values {
    std::string files;      ///< options whose value is a file, parted by "|"
    std::string others;     ///< options whose value cannot be known
    std::string of_choice;  ///< branches for those with certain values
};

bool is_file(const OptionHelp& option) {
    return option.argument == "FILE" || option.argument == "DATABASE" || option.argument == "DIR" ||
           option.names[0] == "--output";
}

void add_value(Values& values, const OptionHelp& option, std::set<std::string>& seen) {
    if (option.names.empty() || option.argument.empty()) return;
    std::string pattern;
    for (const std::string& name : option.names) {
        if (seen.insert(name).second) pattern += (pattern.empty() ? "" : "|") + name;
    }
    if (pattern.empty()) return;
    if (!option.choices.empty()) {
        values.of_choice += fmt::format(
            "        {})\n            COMPREPLY=($(compgen -W \"{}\" -- \"$current\"))\n"
            "            return ;;\n",
            pattern, fmt::join(option.choices, " "));
        return;
    }
    std::string& list = is_file(option) ? values.files : values.others;
    list += (list.empty() ? "" : "|") + pattern;
}

std::string names_of(const std::vector<OptionHelp>& options) {
    std::string names;
    for (const OptionHelp& option : options) {
        for (const std::string& name : option.names) names += (names.empty() ? "" : " ") + name;
    }
    return names;
}

// The words that may follow a group, or the program itself for "".
std::string commands_in(const CommandLineHelp& help, const std::string& group) {
    std::set<std::string> words;
    for (const CommandHelp& command : help.commands) {
        const std::string prefix = group.empty() ? "" : group + " ";
        if (!command.name.starts_with(prefix)) continue;
        const std::string rest = command.name.substr(prefix.size());
        words.insert(rest.substr(0, rest.find(' ')));
    }
    return fmt::format("{}", fmt::join(words, " "));
}

// The database that is asked for tables is that of the environment, for two seconds at most.
constexpr std::string_view script = R"(# bash completion for zmfb
_zmfb() {{
    local current="${{COMP_WORDS[COMP_CWORD]}}" previous="${{COMP_WORDS[COMP_CWORD-1]}}"
    local command="" options="" commands="" tables="" database="$ZMFB_DB" i
    COMPREPLY=()
    for ((i = 1; i < COMP_CWORD; i++)); do
        [[ "${{COMP_WORDS[i]}}" == --db* ]] && database=""
        case "${{COMP_WORDS[i]}}" in
            {valued}) ((i++)) ;;
            -*) ;;
            *)
                case "$command" in
                    "") command="${{COMP_WORDS[i]}}" ;;
                    {groups}) command="$command ${{COMP_WORDS[i]}}" ;;
                esac ;;
        esac
    done
    case "$previous" in
{choices}        {files})
            COMPREPLY=($(compgen -f -- "$current"))
            return ;;
        {others})
            return ;;
    esac
    case "$command" in
{branches}    esac
    if [[ "$current" == -* ]]; then
        COMPREPLY=($(compgen -W "{all} $options" -- "$current"))
    elif [[ -n "$commands" ]]; then
        COMPREPLY=($(compgen -W "$commands" -- "$current"))
    elif [[ -n "$tables" ]]; then
        [[ -z "$database" ]] || mapfile -t COMPREPLY < <(
            timeout -k 1 2 "${{COMP_WORDS[0]}}" names "$current" 2>/dev/null </dev/null)
    else
        COMPREPLY=($(compgen -f -- "$current"))
    fi
}}
complete -o filenames -F _zmfb zmfb
)";

}  // namespace

std::string bash_completion(const CommandLineHelp& help) {
    Values values;
    std::set<std::string> seen;
    std::string valued;
    std::string branches = fmt::format("        \"\") commands=\"{}\" ;;\n", commands_in(help, ""));
    const auto add_all = [&](const std::vector<OptionHelp>& options) {
        for (const OptionHelp& option : options) {
            if (!option.argument.empty()) {
                for (const std::string& name : option.names) valued += (valued.empty() ? "" : "|") + name;
            }
            add_value(values, option, seen);
        }
    };
    add_all(help.options);
    for (const std::string& group : help.groups) {
        branches += fmt::format("        \"{}\") commands=\"{}\" ;;\n", group, commands_in(help, group));
    }
    for (const CommandHelp& command : help.commands) {
        add_all(command.options);
        branches += fmt::format("        \"{}\") options=\"{}\"{} ;;\n", command.name,
                                names_of(command.options), takes_tables(command) ? " tables=1" : "");
    }
    return fmt::format(script, fmt::arg("valued", valued), fmt::arg("groups", fmt::join(help.groups, "|")),
                       fmt::arg("choices", values.of_choice), fmt::arg("files", values.files),
                       fmt::arg("others", values.others), fmt::arg("branches", branches),
                       fmt::arg("all", names_of(help.options)));
}

}  // namespace zmfb::tool
