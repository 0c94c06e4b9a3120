#include <CLI/CLI.hpp>
#include <exception>
#include <functional>
#include <string>
#include <vector>

#include "tool/commands.h"

namespace {

using namespace zmfb::tool;

using Command = std::function<Exit(Session&)>;

void add_options(CLI::App& app, Options& options) {
    app.add_option("--db", options.database,
                   "Database: a file (embedded engine), or host:/path, host/port:/path")
        ->envname("ZMFB_DB");
    app.add_option("--user", options.user, "User name")->envname("ISC_USER");
    app.add_option("--password", options.password, "Password")->envname("ISC_PASSWORD");
    app.add_option("--role", options.role, "SQL role");
    app.add_option("--log-level", options.log_level,
                   "Log level: -1 nothing, 0 connections, 1 SQL errors, 7 updates, 8 queries")
        ->capture_default_str();
    app.add_flag("--json", options.json, "Print results as JSON");
}

/// The arguments of the commands, filled while the command line is read.
struct Arguments {
    std::vector<std::string> list;
    std::string text;
};

void add_commands(CLI::App& app, Arguments& given, Command& chosen) {
    const auto add = [&](const char* name, const char* help, Command run) {
        CLI::App* command = app.add_subcommand(name, help);
        command->callback([&chosen, run] { chosen = run; });
        command->fallthrough();
        return command;
    };
    add("create", "Make a database the driver can use", create_command);
    add("methods", "List the methods of the object", methods_command);
    add("call", "Call methods: call 'istable(\"CUSTOMER\")'",
        [&given](Session& session) { return call_command(session, given.list); })
        ->add_option("EXPR", given.list,
                     "Calls with xBase literals as arguments; - reads one a line from standard input")
        ->required();
    add("import", "Bring DBF files in as tables",
        [&given](Session& session) { return import_command(session, given.list); })
        ->add_option("FILE", given.list, "DBF files")
        ->required();
    add("tables", "List the tables", tables_command);
    add("struct", "Show the structure of a table",
        [&given](Session& session) { return struct_command(session, given.text); })
        ->add_option("TABLE", given.text, "Table")
        ->required();
    add("query", "Run a SELECT and show its rows",
        [&given](Session& session) { return query_command(session, given.text); })
        ->add_option("SQL", given.text, "Statement")
        ->required();
    add("exec", "Run a statement that returns no rows",
        [&given](Session& session) { return exec_command(session, given.text); })
        ->add_option("SQL", given.text, "Statement")
        ->required();
}

Exit run(const Options& options, const Command& command) {
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

int main(int argc, char** argv) {
    CLI::App app("xBase tables in a Firebird database", "zmfb");
    Options options;
    Arguments given;
    Command chosen;
    app.set_version_flag("--version", std::string(zmfb::library_version()));
    app.require_subcommand(1);
    app.footer("Exit status: 0 done, 1 something failed or was raised, 2 wrong usage, 3 the attach failed.");
    add_options(app, options);
    add_commands(app, given, chosen);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& problem) {
        return app.exit(problem) == 0 ? static_cast<int>(Exit::ok) : static_cast<int>(Exit::usage);
    }
    return static_cast<int>(run(options, chosen));
}
