#include <fmt/format.h>

#include "tool/generate/pages.h"

namespace zmfb::tool {
namespace {

// A text as roff takes it: dashes that can be copied, no line that begins with a control character.
std::string roff(std::string_view text) {
    std::string out;
    for (const char c : text) {
        const bool at_start = out.empty() || out.back() == '\n';
        if (at_start && (c == '.' || c == '\'')) out += "\\&";
        if (c == '-') {
            out += "\\-";
        } else if (c == '\\') {
            out += "\\(rs";
        } else if (c == '\'') {
            out += "\\(aq";
        } else {
            out += c;
        }
    }
    return out;
}

std::string joined_names(const OptionHelp& option) {
    std::string all;
    for (const std::string& name : option.names) {
        all += (all.empty() ? "\\fB" : ", \\fB") + roff(name) + "\\fR";
    }
    return all;
}

std::string value_of(const OptionHelp& option) {
    if (option.choices.empty()) return option.argument.empty() ? "" : "\\fI" + roff(option.argument) + "\\fR";
    std::string all;
    for (const std::string& choice : option.choices) all += (all.empty() ? "" : "|") + roff(choice);
    return all;
}

void add_options(std::string& page, const std::vector<OptionHelp>& options) {
    for (const OptionHelp& option : options) {
        const std::string names = joined_names(option);
        const std::string value = value_of(option);
        page += fmt::format(".TP\n{}{}{}\n{}\n", names, names.empty() || value.empty() ? "" : " ", value,
                            roff(option.help));
    }
}

std::string usage(const CommandHelp& command) {
    std::string line = "\\fBzmfb " + roff(command.name) + "\\fR";
    for (const OptionHelp& option : command.options) {
        if (!option.names.empty()) continue;
        const std::string value = value_of(option) + (option.repeated ? "..." : "");
        line += option.optional ? " [" + value + "]" : " " + value;
    }
    return line;
}

}  // namespace

std::string man_page(const CommandLineHelp& help, std::string_view version) {
    std::string page = fmt::format(
        ".TH ZMFB 1 \"\" \"zmfbconn {}\" \"User Commands\"\n.SH NAME\nzmfb \\- {}\n.SH "
        "SYNOPSIS\n\\fBzmfb\\fR "
        "[\\fIOPTIONS\\fR] \\fICOMMAND\\fR ...\n.SH OPTIONS\nThese stand before or behind the command.\n",
        roff(version), roff(help.help));
    add_options(page, help.options);
    page += ".SH COMMANDS\n";
    std::string group;
    for (const CommandHelp& command : help.commands) {
        if (command.group != group) page += fmt::format(".SS {}\n", roff(command.group));
        group = command.group;
        page += fmt::format(".TP\n{}\n{}.\n.RS\n", usage(command), roff(command.help));
        add_options(page, command.options);
        page += fmt::format(".PP\nExample:\n.PP\n.nf\n{}\n.fi\n.RE\n", roff(command.example));
    }
    page += fmt::format(".SH EXIT STATUS\n{}\n", roff(help.footer));
    page +=
        ".SH ENVIRONMENT\n.TP\n\\fBZMFB_DB\\fR, \\fBISC_USER\\fR, \\fBISC_PASSWORD\\fR\nDatabase, user and "
        "password where the options do not name them.\n.TP\n\\fBNO_COLOR\\fR\nNo colours on a terminal.\n";
    return page;
}

}  // namespace zmfb::tool
