#include <fmt/format.h>

#include <filesystem>
#include <memory>

#include "tool/commands.h"
#include "tool/database_encoding.h"
#include "tool/functions.h"
#include "tool/hints.h"
#include "tool/output_file.h"
#include "zmfbconn/database.h"
#include "zmfbconn/methods.h"

namespace zmfb::tool {
namespace {

Exit create_command(Session& session, const std::string& functions) {
    session.require_database();
    const Options& options = session.options();
    const bool local = !names_a_server(options.database);
    std::error_code ignored;
    if (local && std::filesystem::exists(options.database, ignored)) {
        throw Failure{Exit::failed, fmt::format("{} exists already and is left alone", options.database), "",
                      hint_for("File exists")};
    }
    // A link that leads nowhere yet is followed when this user or root has made it.
    const std::string place = local ? place_of_file(options.database) : options.database;
    session.prepare_client();
    // One for all objects of the process.
    if (options.log_level != 0) zmFBConn()(m::setloglevel, options.log_level);
    if (const Status created =
            create_database(place, options.user, options.password, functions_named(functions));
        !created.ok())
        throw Failure{Exit::failed, fmt::format("cannot create {}", options.database), created.message()};
    if (options.encoding_given) keep_encoding(session.connection());
    fmt::print("{} is ready\n", options.database);
    return Exit::ok;
}

}  // namespace

void add_create(CommandLine& line) {
    const auto functions = std::make_shared<std::string>();
    line.add(line.app(), "create", "Make a database the driver can use",
             "zmfb --db shop.fdb create --encoding CP866",
             [functions](Session& session) { return create_command(session, *functions); })
        .option("--functions", *functions,
                "The driver's functions: stored, which need nothing on the server (the default from Firebird "
                "3.0 on), or module, those of zmrddudfs")
        .type_name("KIND")
        .one_of({std::string(stored_word), std::string(module_word)});
}

}  // namespace zmfb::tool
