#include "tool/functions.h"

#include <fmt/format.h>

#include <memory>

#include "tool/commands.h"
#include "tool/json.h"

namespace zmfb::tool {
namespace {

std::string_view word_for(Functions functions) {
    return functions == Functions::stored ? stored_word : module_word;
}

void print_functions(const Session& session, Functions functions) {
    if (session.options().json) {
        fmt::print("{}\n", json_line(Json{{"functions", word_for(functions)}}));
    } else if (functions == Functions::stored) {
        fmt::print("stored: the eleven functions are stored ones, which need nothing on the server\n");
    } else {
        fmt::print("module: the eleven functions are those of zmrddudfs, which the server has to run\n");
    }
}

// The engine lets no function of a module take the place of one that is used.
void require_unused(zmFBConn& connection) {
    const std::vector<Dependent> users = dependents_of_functions(connection);
    if (users.empty()) return;
    throw Failure{Exit::failed, "the functions stay stored ones", in_words(users) + " would lose them",
                  "where the module has to be: drop these, change the functions, make these anew"};
}

void change(Session& session, std::optional<Functions> had, Functions wanted) {
    const Options& options = session.options();
    const auto install = [&options](Functions functions) {
        return install_functions(options.database, options.user, options.password, functions);
    };
    const Status done = install(wanted);
    if (done.ok()) return;
    const bool back = had == Functions::stored && install(Functions::stored).ok();
    throw Failure{Exit::failed,
                  back ? "the functions stay stored ones" : "the functions could not be changed",
                  done.message()};
}

Exit functions_command(Session& session, const std::string& word) {
    session.require_database();
    session.show_raised(Raised::silent);
    zmFBConn& connection = session.connection_to_any();
    session.forget_raised();
    const std::optional<Functions> had = functions_of(connection);
    if (word.empty()) {
        if (!had) {
            throw Failure{Exit::failed, "the functions are not complete", functions_problem(connection),
                          "\"zmfb functions stored\" makes them"};
        }
        print_functions(session, *had);
        return Exit::ok;
    }
    const Functions wanted = functions_named(word);
    if (wanted == Functions::module && had != Functions::module) require_unused(connection);
    if (wanted != had) change(session, had, wanted);
    print_functions(session, wanted);
    return Exit::ok;
}

}  // namespace

void add_functions(CommandLine& line) {
    const auto word = std::make_shared<std::string>();
    const Subcommand functions =
        line.add(line.app(), "functions",
                 "Say what the driver's functions are in a database, or put others in their place",
                 "zmfb --db shop.fdb functions stored",
                 [word](Session& session) { return functions_command(session, *word); });
    functions.option("KIND", *word, "stored (functions of the database) or module (those of zmrddudfs)")
        .one_of({std::string(stored_word), std::string(module_word)});
}

}  // namespace zmfb::tool
