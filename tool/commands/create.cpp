#include <fmt/format.h>

#include <filesystem>

#include "tool/commands.h"
#include "tool/hints.h"
#include "tool/output_file.h"
#include "zmfbconn/database.h"

namespace zmfb::tool {
namespace {

Exit create_command(Session& session) {
    session.require_database();
    const Options& options = session.options();
    const bool local = !names_a_server(options.database);
    std::error_code ignored;
    if (local && std::filesystem::exists(options.database, ignored)) {
        throw Failure{Exit::failed, fmt::format("{} exists already and is left alone", options.database), "",
                      std::string(hint_for("File exists"))};
    }
    // The engine follows a link that leads nowhere yet, whoever made it.
    if (local) place_of_file(options.database);
    session.prepare_client();
    std::string problem = create_database(options.database, options.user, options.password);
    if (!problem.empty())
        throw Failure{Exit::failed, fmt::format("cannot create {}", options.database), problem};
    try {
        problem = declare_functions(options.database, options.user, options.password);
        if (!problem.empty()) throw Failure{Exit::failed, "cannot declare the driver's functions", problem};
        session.connection();
    } catch (const Failure&) {
        // A half-made file of our own would only stand in the way of the next try.
        if (local) std::filesystem::remove(options.database, ignored);
        throw;
    }
    fmt::print("{} is ready\n", options.database);
    return Exit::ok;
}

}  // namespace

void add_create(CommandLine& line) {
    line.add(line.app(), "create", "Make a database the driver can use", "zmfb --db shop.fdb create",
             create_command);
}

}  // namespace zmfb::tool
