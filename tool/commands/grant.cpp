#include <fmt/format.h>

#include <algorithm>
#include <memory>

#include "tool/commands.h"
#include "tool/json.h"
#include "tool/reading.h"
#include "tool/rights.h"
#include "zmfbconn/transaction.h"

namespace zmfb::tool {
namespace {

struct GrantOptions {
    std::string user;
    std::vector<std::string> tables;
    std::string level{level_names.front()};
};

Level level_of(std::string_view name) {
    return static_cast<Level>(std::ranges::find(level_names, name) - level_names.begin());
}

// Those that were named, or all that the driver has made.
std::vector<Table> tables_meant(zmFBConn& connection, const std::vector<std::string>& typed) {
    std::vector<Table> tables;
    for (const std::string& one : typed) tables.push_back(existing_table(connection, one));
    if (!typed.empty()) return tables;
    tables = tables_of(connection);
    std::erase_if(tables, [](const Table& table) { return table.kind != TableKind::driver; });
    return tables;
}

void give(zmFBConn& connection, const std::vector<Right>& rights, const Name& user) try {
    Transaction work(connection);
    for (const Right& right : rights) work.execute(right.statement());
    work.commit();
} catch (const SqlError& error) {
    throw_failure(connection, error, fmt::format("{} was given nothing", user.shown()));
}

Exit grant_command(Session& session, const GrantOptions& given) {
    zmFBConn& connection = session.connection();
    const Name user = typed_name(given.user);
    const std::vector<Right> rights =
        rights_for(level_of(given.level), user, tables_meant(connection, given.tables));
    give(connection, rights, user);
    Json list = Json::array();
    for (const Right& right : rights) {
        list.push_back(right.text());
        if (!session.options().json) fmt::print("{}\n", right.text());
    }
    if (session.options().json) fmt::print("{}\n", json_lines(Json{{"given", list}}));
    return Exit::ok;
}

}  // namespace

void add_grant(CommandLine& line) {
    const auto given = std::make_shared<GrantOptions>();
    const Subcommand grant =
        line.add(line.app(), "grant", "Give a user the rights to work with tables, and say which",
                 "zmfb --db shop.fdb grant anna --level write",
                 [given](Session& session) { return grant_command(session, *given); });
    grant.option("USER", given->user, "User of the server").required();
    grant.option("TABLE", given->tables, "Tables or views; all of the driver's when none is given");
    grant.option("--level,-l", given->level, "What for")
        .one_of({level_names.begin(), level_names.end()})
        .with_default();
}

}  // namespace zmfb::tool
