/// The command line: the options before the command, and the commands, each added by its own file.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <string>
#include <vector>

#include "tool/password.h"
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
    /// The head under which --help lists the commands that are added from now on.
    void head(const std::string& text) { head_ = text; }
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
    void parse(int argc, char** argv);
    /// Prints help and version, and what is wrong with the command line.
    Exit answer(const CLI::ParseError& problem) const;
    /// The word that stands where a command should; "" when there is none.
    [[nodiscard]] std::string unknown_command() const;
    [[nodiscard]] std::string hint() const;
    [[nodiscard]] std::string versions() const;

    CLI::App app_;
    Options options_;
    GivenPassword password_;
    std::string encoding_;
    std::string head_ = "Commands";
    Command chosen_;
};

/// Adds the flag --yes, which does it without asking.
void add_yes(CLI::App* command, bool& yes);

}  // namespace zmfb::tool
