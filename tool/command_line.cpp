#include "tool/command_line.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace zmfb::tool {
namespace {

constexpr const char* exit_statuses =
    "Exit status: 0 done, 1 something failed or was raised, 2 wrong usage, 3 the attach failed.";

Exit run_command(const Options& options, const Command& command) {
    try {
        Session session(options);
        const Exit status = command(session);
        return status == Exit::ok && !session.raised().empty() ? Exit::failed : status;
    } catch (const Failure& failure) {
        print_error(failure.message, failure.detail);
        return failure.status;
    } catch (const std::exception& problem) {
        print_error(problem.what());
        return Exit::failed;
    }
}

}  // namespace

CommandLine::CommandLine() : app_("xBase tables in a Firebird database", "zmfb") {
    app_.set_version_flag("--version", std::string(library_version()));
    app_.require_subcommand(1);
    app_.footer(exit_statuses);
    add_options();
}

void CommandLine::add_options() {
    app_.add_option("--db", options_.database,
                    "Database: a file (embedded engine), or host:/path, host/port:/path")
        ->envname("ZMFB_DB");
    app_.add_option("--user", options_.user, "User name")->envname("ISC_USER");
    app_.add_option("--password", options_.password, "Password")->envname("ISC_PASSWORD");
    app_.add_option("--role", options_.role, "SQL role");
    app_.add_option("--log-level", options_.log_level,
                    "Log level: -1 nothing, 0 connections, 1 SQL errors, 7 updates, 8 queries")
        ->capture_default_str();
    app_.add_flag("--json", options_.json, "Print results as JSON");
}

CLI::App* CommandLine::add(CLI::App* parent, const std::string& name, const std::string& help,
                           const std::string& example, Command run) {
    CLI::App* command = parent->add_subcommand(name, help);
    command->footer("Example:\n  " + example);
    command->callback([this, run = std::move(run)] { chosen_ = run; });
    command->fallthrough();
    return command;
}

CLI::App* CommandLine::add_group(const std::string& name, const std::string& help) {
    CLI::App* group = app_.add_subcommand(name, help);
    group->require_subcommand(1);
    group->fallthrough();
    return group;
}

int CommandLine::run(int argc, char** argv) {
    try {
        app_.parse(argc, argv);
    } catch (const CLI::ParseError& problem) {
        return app_.exit(problem) == 0 ? static_cast<int>(Exit::ok) : static_cast<int>(Exit::usage);
    }
    return static_cast<int>(run_command(options_, chosen_));
}

Exit CommandLine::run_within(Session& session, std::vector<std::string> words) {
    std::ranges::reverse(words);  // as the parser wants them
    try {
        app_.parse(std::move(words));
    } catch (const CLI::ParseError& problem) {
        return app_.exit(problem) == 0 ? Exit::ok : Exit::usage;
    }
    return chosen_(session);
}

void add_yes(CLI::App* command, bool& yes) { command->add_flag("--yes,-y", yes, "Do it without asking"); }

}  // namespace zmfb::tool
