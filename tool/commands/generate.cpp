#include <fmt/format.h>

#include <memory>

#include "tool/commands.h"
#include "tool/generate/pages.h"

namespace zmfb::tool {
namespace {

std::string page_of(const CommandLineHelp& help, const std::string& kind) {
    if (kind == "man") return man_page(help, library_version());
    if (kind == "bash") return bash_completion(help);
    return kind == "zsh" ? zsh_completion(help) : fish_completion(help);
}

}  // namespace

void add_generate(CommandLine& line) {
    const auto kind = std::make_shared<std::string>();
    const Subcommand app = line.app();
    const Subcommand generate = line.add(
        line.app(), "generate", "Write the manual page, or the completions of a shell",
        "zmfb generate bash > ~/.local/share/bash-completion/completions/zmfb", [app, kind](Session&) {
            fmt::print("{}", page_of(help_of(*app.app()), *kind));
            return Exit::ok;
        });
    generate.option("KIND", *kind, "man, bash, zsh or fish")
        .one_of({"man", "bash", "zsh", "fish"})
        .required();
}

}  // namespace zmfb::tool
