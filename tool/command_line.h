/// The command line: the options before the command, and the commands, each added by its own file.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <string>
#include <vector>

#include "tool/session.h"

namespace zmfb::tool {

/// What a command does once the command line is read.
using Command = std::function<Exit(Session&)>;

class CommandLine {
  public:
    CommandLine();

    /// Adds a command; it runs when it is the one that was given. `example` is a whole line as a person would
    /// type it, shown by --help. `parent` is the application, or a command that groups others.
    CLI::App* add(CLI::App* parent, const std::string& name, const std::string& help,
                  const std::string& example, Command run);
    /// Adds a command that only groups others.
    CLI::App* add_group(const std::string& name, const std::string& help);

    [[nodiscard]] CLI::App* app() { return &app_; }

    /// Reads the command line and runs what it says; returns the exit status of the process.
    int run(int argc, char** argv);
    /// Runs a command in a session that is open already; `words` are the command and what belongs to it.
    /// What is wrong with them is printed. Throws what the command throws.
    Exit run_within(Session& session, std::vector<std::string> words);

  private:
    void add_options();

    CLI::App app_;
    Options options_;
    Command chosen_;
};

/// Adds the flag --yes, which does it without asking.
void add_yes(CLI::App* command, bool& yes);

}  // namespace zmfb::tool
