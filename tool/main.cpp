#include <CLI/CLI.hpp>
#include <exception>
#include <functional>
#include <string>
#include <utility>
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
    std::string file;
    bool yes = false;
};

/// Adds commands to the application; the one that is given on the command line becomes `chosen`.
class Commands {
  public:
    Commands(Arguments& given, Command& chosen) : given_(given), chosen_(chosen) {}

    CLI::App* add(CLI::App& parent, const char* name, const char* help, Command run) const {
        CLI::App* command = parent.add_subcommand(name, help);
        command->callback([&chosen = chosen_, run = std::move(run)] { chosen = run; });
        command->fallthrough();
        return command;
    }
    /// One whose last word is a text.
    CLI::App* add(CLI::App& parent, const char* name, const char* help, const char* word,
                  const char* word_help, Exit (*run)(Session&, const std::string&)) const {
        CLI::App* command =
            add(parent, name, help, [&given = given_, run](Session& s) { return run(s, given.text); });
        command->add_option(word, given_.text, word_help)->required();
        return command;
    }
    void add_yes(CLI::App* command) const {
        command->add_flag("--yes,-y", given_.yes, "Do it without asking");
    }

    void add_basic(CLI::App& app) const;
    void add_locks(CLI::App& app) const;
    void add_matrix(CLI::App& app) const;

  private:
    Arguments& given_;
    Command& chosen_;
};

void Commands::add_basic(CLI::App& app) const {
    add(app, "create", "Make a database the driver can use", create_command);
    add(app, "methods", "List the methods of the object", methods_command);
    add(app, "call", "Call methods: call 'istable(\"CUSTOMER\")'",
        [&given = given_](Session& session) { return call_command(session, given.list); })
        ->add_option("EXPR", given_.list,
                     "Calls with xBase literals as arguments; - reads one a line from standard input")
        ->required();
    add(app, "import", "Bring DBF files in as tables",
        [&given = given_](Session& session) { return import_command(session, given.list); })
        ->add_option("FILE", given_.list, "DBF files")
        ->required();
    add(app, "tables", "List the tables", tables_command);
    add(app, "struct", "Show the structure of a table", "TABLE", "Table", struct_command);
    add(app, "query", "Run a SELECT and show its rows", "SQL", "Statement", query_command);
    add(app, "exec", "Run a statement that returns no rows", "SQL", "Statement", exec_command);
}

void Commands::add_locks(CLI::App& app) const {
    add(app, "locks", "List record and table locks with their holders", locks_command);
    add(app, "opens", "List which work areas have which tables open", opens_command);
    CLI::App* unlock =
        add(app, "unlock", "Remove every lock on a table, whoever holds it",
            [&given = given_](Session& s) { return unlock_command(s, given.text, given.yes); });
    unlock->add_option("TABLE", given_.text, "Table")->required();
    add_yes(unlock);
    add_yes(add(app, "clear", "Forget all registrations and locks of everybody (after a crash; dangerous)",
                [&given = given_](Session& s) { return clear_command(s, given.yes); }));
}

void Commands::add_matrix(CLI::App& app) const {
    CLI::App* matrix = app.add_subcommand("matrix", "Change table structures through a text file");
    matrix->require_subcommand(1);
    matrix->fallthrough();
    CLI::App* extract =
        add(*matrix, "extract", "Write out the structures of tables, all of them without names",
            [&given = given_](Session& s) { return matrix_extract_command(s, given.list, given.file); });
    extract->add_option("TABLE", given_.list, "Tables");
    extract->add_option("-o,--output", given_.file, "File to write (.tf is added when it is not there)");
    add(*matrix, "check", "Tell what applying a matrix would do", "FILE", "Matrix file",
        matrix_check_command);
    CLI::App* apply =
        add(*matrix, "apply", "Change the tables to what the right-hand column of a matrix says",
            [&given = given_](Session& s) { return matrix_apply_command(s, given.text, given.yes); });
    apply->add_option("FILE", given_.text, "Matrix file")->required();
    add_yes(apply);
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
    const Commands commands(given, chosen);
    commands.add_basic(app);
    commands.add_locks(app);
    commands.add_matrix(app);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& problem) {
        return app.exit(problem) == 0 ? static_cast<int>(Exit::ok) : static_cast<int>(Exit::usage);
    }
    return static_cast<int>(run(options, chosen));
}
