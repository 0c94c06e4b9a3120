#include "tool/shell/shell.h"

#include <fmt/format.h>
#include <unistd.h>

#include <memory>

#include "tool/commands.h"
#include "tool/interrupt.h"
#include "tool/shell/line_reader.h"
#include "tool/terminal.h"

namespace zmfb::tool {
namespace {

// A comment to the end of its line does not go into one line with what follows.
void add_to_input(std::string& input, const std::string& line) {
    if (!input.empty()) input += input.find("--") == std::string::npos ? ' ' : '\n';
    input += line;
}

void talk(Session& session, const Shell::Options& options) {
    fmt::print("zmfb {}, {}\n.help shows what can be typed, .quit or Ctrl-D ends.\n", library_version(),
               session.options().database);
    const ControlC only_noted(ControlC::Second::is_noted);  // between the lines
    Shell shell(session, options);
    LineReader reader(
        [&](std::string_view line, std::size_t start) { return shell.candidates(line, start); });
    std::string input;
    while (ending_signal() == 0) {
        const std::optional<std::string> line = reader.read(shell.prompt());
        if (!line && !reader.interrupted()) {
            if (ending_signal() != 0 || shell.may_leave()) break;
            continue;
        }
        if (!line) {
            shell.forget();
            input.clear();
            continue;
        }
        add_to_input(input, *line);
        shell.take(*line);
        if (shell.waiting()) continue;
        if (input.find_first_not_of(" \t") != std::string::npos) reader.remember(input);
        input.clear();
        if (shell.done() && shell.may_leave()) break;
    }
    if (ending_signal() == 0) shell.end();
    session.forget_raised();
}

struct Given {
    std::vector<std::string> inputs;
    bool no_pager = false;
    bool stop_on_error = false;
};

Exit shell_command(Session& session, const Given& given) {
    session.connection();
    Shell::Options options{.pages = !given.no_pager, .stops_on_error = given.stop_on_error};
    options.interactive = given.inputs.empty() && isatty(STDIN_FILENO) != 0 && output_is_terminal();
    if (options.interactive) {
        talk(session, options);
        return Exit::ok;
    }
    Shell shell(session, options);
    if (given.inputs.empty()) {
        shell.take_all(LineInput::standard(), "");
    } else {
        shell.take_given(given.inputs);
    }
    shell.end();
    return shell.failed() ? Exit::failed : Exit::ok;
}

}  // namespace

void add_shell(CommandLine& line) {
    const auto given = std::make_shared<Given>();
    const Subcommand shell = line.add(
        line.app(), "shell", "Type statements, calls and commands, or read them from standard input",
        "zmfb --db shop.fdb shell", [given](Session& session) { return shell_command(session, *given); });
    shell
        .option("-c", given->inputs,
                "Statement, call or command to run instead of reading any, as often as wanted, in that order")
        .type_name("TEXT");
    shell.flag("--stop-on-error", given->stop_on_error,
               "Run nothing behind the first error of a script, and roll back the transaction that is open");
    shell.no_pager(given->no_pager);
}

}  // namespace zmfb::tool
