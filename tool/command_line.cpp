#include "tool/command_line.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <sstream>
#include <utility>

#include "tool/catalog.h"
#include "tool/encoding.h"
#include "tool/output.h"
#include "tool/suggest.h"
#include "zmfbconn/database.h"

namespace zmfb::tool {
namespace {

constexpr const char* exit_statuses =
    "Exit status: 0 done, 1 something failed or was raised, 2 wrong usage, 3 the attach failed.";

std::vector<std::string> names_of_commands(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::App* command : app.get_subcommands(nullptr)) {
        if (!command->get_group().empty()) names.push_back(command->get_name());
    }
    return names;
}

// The command that the words have come to: the application itself at first.
const CLI::App& innermost(const CLI::App& app) {
    const auto chosen = app.get_subcommands();
    return chosen.empty() ? app : innermost(*chosen.back());
}

// "zmfb matrix check"
std::string full_name(const CLI::App& command) {
    const CLI::App* const outer = command.get_parent();
    return (outer == nullptr ? "" : full_name(*outer) + " ") + command.get_name();
}

// The words that no command takes.
std::vector<std::string> unknown_words(const CLI::App& app) {
    std::vector<std::string> words = app.remaining(true);
    std::erase_if(words, [](const std::string& word) { return word.starts_with('-'); });
    return words;
}

// An option that there is not, without its value.
std::string unknown_option(const CLI::App& app) {
    for (const std::string& word : app.remaining(true)) {
        if (word.size() > 1 && word.starts_with('-') && word != "--")
            return word.substr(0, word.find_first_of("= \n"));
    }
    return "";
}

// Whether a word too many, or one that is missing, may come of an option that was mistyped.
bool is_about_words(const CLI::ParseError& problem) {
    return dynamic_cast<const CLI::ExtrasError*>(&problem) != nullptr ||
           dynamic_cast<const CLI::RequiredError*>(&problem) != nullptr;
}

// The options of a command and of those around it, as they are typed.
std::vector<std::string> names_of_options(const CLI::App& command) {
    std::vector<std::string> names;
    for (const CLI::App* app = &command; app != nullptr; app = app->get_parent()) {
        for (const CLI::Option* option : app->get_options()) {
            for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
        }
    }
    return names;
}

}  // namespace

Parameter Parameter::required() const { return Parameter(option_->required()); }

Parameter Parameter::type_name(const std::string& name) const { return Parameter(option_->type_name(name)); }

Parameter Parameter::with_default() const { return Parameter(option_->capture_default_str()); }

Parameter Parameter::not_empty() const {
    const auto problem = [](const std::string& text) { return text.empty() ? "may not be empty" : ""; };
    return Parameter(option_->check(problem));
}

Parameter Parameter::one_of(const std::vector<std::string>& values) const {
    return Parameter(option_->check(CLI::IsMember(values)));
}

Parameter Subcommand::option(const std::string& names, std::string& value, const std::string& help) const {
    return Parameter(app_->add_option(names, value, help));
}

Parameter Subcommand::option(const std::string& names, std::vector<std::string>& value,
                             const std::string& help) const {
    return Parameter(app_->add_option(names, value, help));
}

Parameter Subcommand::option(const std::string& names, std::optional<int>& value,
                             const std::string& help) const {
    return Parameter(app_->add_option(names, value, help));
}

Parameter Subcommand::option(const std::string& names, std::size_t& value, const Range& range,
                             const std::string& help) const {
    const auto problem = [range](const std::string& text) {
        std::size_t number = 0;
        const char* const end = text.data() + text.size();
        const auto [at, error] = std::from_chars(text.data(), end, number);
        const bool fits = error == std::errc() && at == end && number >= range.least && number <= range.most;
        return fits ? ""
                    : fmt::format("{} is no number of {} from {} to {}", text, range.of, range.least,
                                  range.most);
    };
    return Parameter(app_->add_option(names, value, help)->check(problem));
}

void Subcommand::flag(const std::string& names, bool& value, const std::string& help) const {
    app_->add_flag(names, value, help);
}

void Subcommand::hide() const { app_->group(""); }

CommandLine::CommandLine() : app_(std::make_unique<CLI::App>("xBase tables in a Firebird database", "zmfb")) {
    app_->require_subcommand(1);
    app_->footer(exit_statuses);
    add_options();
}

CommandLine::~CommandLine() = default;

void CommandLine::add_options() {
    app_->add_option("--db", options_.database,
                     "Database: a file (embedded engine), or host:/path, host/port:/path")
        ->type_name("DATABASE")
        ->envname("ZMFB_DB");
    app_->add_option("--user", options_.user, "User name")->type_name("NAME")->envname("ISC_USER");
    CLI::Option* const password =
        app_->add_option("--password", options_.password,
                         "Password; shows in the list of processes, unlike ISC_PASSWORD and the prompt")
            ->type_name("TEXT")
            ->each([this](const std::string&) { password_.on_command_line = true; });
    app_->add_option("--password-file", password_.file, "File with the password in its first line")
        ->type_name("FILE")
        ->excludes(password);
    app_->add_option("--role", options_.role, "SQL role")->type_name("NAME");
    app_->add_option("--encoding", encoding_,
                     "Single-byte character set of the texts in the database, as iconv names it; create "
                     "keeps it there")
        ->type_name("NAME");
    app_->add_option("--log-level", options_.log_level,
                     "Log level: -1 nothing, 0 connections, 1 SQL errors, 7 updates, 8 queries")
        ->type_name("LEVEL")
        ->capture_default_str();
    app_->add_flag("--json", options_.json, "Print results as JSON");
    // The last one: what it prints depends on the others.
    app_->set_version_flag("--version", [this] { return versions(); });
}

std::string CommandLine::versions() const {
    std::string text = fmt::format("zmfb {}\nclient library {}", library_version(), client_version());
    if (options_.database.empty()) return text;
    Options options = options_;
    find_password(options, password_);
    try {
        Session session(options);
        return text + "\nengine " + engine_version(session.connection_to_any());
    } catch (const Failure& failure) {
        return text + "\nengine unknown: " + failure.message;
    }
}

Subcommand CommandLine::add(const Subcommand& parent, const std::string& name, const std::string& help,
                            const std::string& example, Command run) {
    CLI::App* command = parent.app()->add_subcommand(name, help);
    if (parent.app() == app_.get()) command->group(head_);
    command->footer("Example:\n  " + example);
    command->callback([this, run = std::move(run)] { chosen_ = run; });
    command->fallthrough();
    return Subcommand(command);
}

Subcommand CommandLine::add_group(const std::string& name, const std::string& help) {
    CLI::App* group = app_->add_subcommand(name, help);
    group->group(head_);
    group->require_subcommand(1);
    group->fallthrough();
    return Subcommand(group);
}

std::optional<std::string> CommandLine::help_line(const std::string& command) const {
    const auto named = [&](const CLI::App* one) { return one->get_name() == command; };
    const auto found = app_->get_subcommands(named);
    return found.empty() ? std::nullopt : std::optional(found[0]->get_description());
}

// "help import" is "import --help".
void CommandLine::parse(int argc, char** argv) {
    std::vector<std::string> unknown;
    try {
        return app_->parse(argc, argv);
    } catch (const CLI::ParseError&) {
        unknown = unknown_words(*app_);
        if (unknown.empty() || unknown.front() != "help") throw;
    }
    std::vector<std::string> words(argv + 1, argv + argc);
    words.erase(std::ranges::find(words, "help"));
    if (unknown.size() == 1) words.emplace_back("--help");
    std::ranges::reverse(words);  // as the parser wants them
    app_->parse(std::move(words));
}

int CommandLine::run(int argc, char** argv) {
    // What is wrong with the command line is told as JSON, too.
    if (std::find(argv, argv + argc, std::string_view("--json")) != argv + argc) show_errors_as_json();
    const Exit status = told([&] {
        try {
            parse(argc, argv);
        } catch (const CLI::ParseError& problem) {
            return answer(problem);
        }
        hide_password(argc, argv);
        if (!encoding_.empty() && !set_encoding(encoding_)) {
            throw Failure{Exit::usage, fmt::format("{} is no single-byte character set", encoding_), "",
                          "iconv --list has the names"};
        }
        options_.encoding_given = !encoding_.empty();
        find_password(options_, password_);
        return told_in_session(options_, chosen_);
    });
    return static_cast<int>(finish_output(status));
}

Exit CommandLine::answer(const CLI::ParseError& problem) const {
    if (problem.get_exit_code() == 0) {  // help, or the version
        std::ostringstream text;
        app_->exit(problem, text);
        fmt::print("{}", text.str());
        return Exit::ok;
    }
    const CLI::App& command = innermost(*app_);
    const std::string name = full_name(command);
    std::string message = problem.what(), meant;
    const std::vector<std::string> words = unknown_words(*app_);
    const std::string option = unknown_option(*app_);
    if (!words.empty() && !command.get_subcommands(nullptr).empty()) {
        message = fmt::format("there is no command {}", words.front());
        const std::string nearest = nearest_name(words.front(), names_of_commands(command));
        if (!nearest.empty()) meant = name + " " + nearest;
    } else if (!option.empty() && is_about_words(problem)) {
        message = fmt::format("there is no option {}", option);
        meant = nearest_name(option, names_of_options(command));
    }
    print_error(message, "",
                meant.empty() ? name + " --help says more" : fmt::format("did you mean \"{}\"?", meant));
    return Exit::usage;
}

Exit CommandLine::run_within(Session& session, std::vector<std::string> words) {
    std::ranges::reverse(words);  // as the parser wants them
    try {
        app_->parse(std::move(words));
    } catch (const CLI::ParseError& problem) {
        return answer(problem);
    }
    return chosen_(session);
}

}  // namespace zmfb::tool
