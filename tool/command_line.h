/// The command line: the options before the command, and the commands, each added by its own file. The parser
/// itself is seen by what implements this alone: it is large.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tool/password.h"
#include "tool/session.h"

namespace CLI {
class App;
class Option;
class ParseError;
}  // namespace CLI

namespace zmfb::tool {

/// What a command does once the command line is read.
using Command = std::function<Exit(Session&)>;

/// An option or an argument of a command. What each call says is added to it.
class Parameter {
  public:
    explicit Parameter(CLI::Option* option) : option_(option) {}
    Parameter required() const;
    /// What stands for its value in the help.
    Parameter type_name(const std::string& name) const;
    /// The help shows the value that the variable has now.
    Parameter with_default() const;
    /// Refuses an empty text.
    Parameter not_empty() const;
    /// Refuses other values than these.
    Parameter one_of(const std::vector<std::string>& values) const;

  private:
    CLI::Option* option_;
};

/// What a number may be.
struct Range {
    std::size_t least;
    std::size_t most;
    const char* of;  ///< what it counts, as in "seconds"
};

/// A command that has been added, to be given options and arguments. `names` are as in "--output,-o" or
/// "FILE"; the value goes to the variable, which has to live as long as the command line.
class Subcommand {
  public:
    explicit Subcommand(CLI::App* app) : app_(app) {}
    Parameter option(const std::string& names, std::string& value, const std::string& help) const;
    Parameter option(const std::string& names, std::vector<std::string>& value,
                     const std::string& help) const;
    Parameter option(const std::string& names, std::optional<int>& value, const std::string& help) const;
    /// A whole number of that range.
    Parameter option(const std::string& names, std::size_t& value, const Range& range,
                     const std::string& help) const;
    void flag(const std::string& names, bool& value, const std::string& help) const;
    /// The flag --yes, which does it without asking.
    void yes(bool& value) const { flag("--yes,-y", value, "Do it without asking"); }
    /// The flag --no-pager, for what shows rows.
    void no_pager(bool& value) const {
        flag("--no-pager", value, "Show rows without a pager, however many they are");
    }
    /// Keeps it out of --help and of completions.
    void hide() const;

    [[nodiscard]] CLI::App* app() const { return app_; }

  private:
    CLI::App* app_;
};

class CommandLine {
  public:
    CommandLine();
    ~CommandLine();

    /// Adds a command; it runs when it is the one that was given. `example` is a whole line as a person would
    /// type it, shown by --help. `parent` is the application, or a command that groups others.
    Subcommand add(const Subcommand& parent, const std::string& name, const std::string& help,
                   const std::string& example, Command run);
    /// The head under which --help lists the commands that are added from now on.
    void head(const std::string& text) { head_ = text; }
    /// Adds a command that only groups others.
    Subcommand add_group(const std::string& name, const std::string& help);

    [[nodiscard]] Subcommand app() { return Subcommand(app_.get()); }
    /// The help line of a command of the application; nothing when there is no such command.
    [[nodiscard]] std::optional<std::string> help_line(const std::string& command) const;

    /// Reads the command line and runs what it says; returns the exit status of the process.
    int run(int argc, char** argv);
    /// What it said before the command.
    [[nodiscard]] const Options& options() const { return options_; }
    /// Runs a command in a session that is open already; `words` are the command and what belongs to it.
    /// What is wrong with them is printed. Throws what the command throws.
    Exit run_within(Session& session, std::vector<std::string> words);

  private:
    void add_options();
    void parse(int argc, char** argv);
    /// Prints help and version, and what is wrong with the command line.
    Exit answer(const CLI::ParseError& problem) const;
    [[nodiscard]] std::string versions() const;

    std::unique_ptr<CLI::App> app_;
    Options options_;
    GivenPassword password_;
    std::string encoding_;
    std::string head_ = "Commands";
    Command chosen_;
};

}  // namespace zmfb::tool
