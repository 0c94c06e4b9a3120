#include <fmt/format.h>

#include <algorithm>
#include <memory>

#include "tool/catalog.h"
#include "tool/commands.h"
#include "tool/confirm.h"
#include "tool/functions.h"
#include "tool/json.h"
#include "zmfbconn/methods.h"

namespace zmfb::tool {
namespace {

struct PrepareOptions {
    bool dry_run = false;
    bool yes = false;
};

// What a database lacks to be one the driver can use.
struct Lacking {
    bool functions = false;
    std::vector<std::string> tables;

    [[nodiscard]] bool nothing() const { return !functions && tables.empty(); }
    [[nodiscard]] std::string text() const {
        const std::string functions_text = functions ? "  the eleven functions ZM* and SKIPPAD\n" : "";
        const std::string tables_text =
            tables.empty() ? ""
                           : fmt::format("  {}, the tables of opens and locks, with what belongs to them\n",
                                         fmt::join(tables, ", "));
        return functions_text + tables_text;
    }
};

// Objects of the driver's names that are not its own would be changed, or taken for its own.
void require_none_of_others(zmFBConn& connection) {
    std::string names;
    for (const DriverFunction& function : driver_functions)
        names += fmt::format("{}'{}'", names.empty() ? "" : ", ", function.name);
    std::vector<Name> others = names_of(
        connection,
        fmt::format("select rdb$function_name from rdb$functions where rdb$function_name in ({}) and "
                    "coalesce(rdb$module_name, '') <> 'zmrddudfs' order by 1",
                    names));
    if (functions_of(connection)) others.clear();
    for (const Name& table : names_of(
             connection,
             "select r.rdb$relation_name from rdb$relations r where r.rdb$relation_name in ('RDDSYS_OPN', "
             "'RDDSYS_FLK', 'RDDSYS_RLK') and not exists(select 1 from rdb$relation_fields f where "
             "f.rdb$relation_name = r.rdb$relation_name and f.rdb$field_name = "
             "substring(r.rdb$relation_name from 8 for 3) || '_AREAID') order by 1"))
        others.push_back(table);
    if (others.empty()) return;
    throw Failure{Exit::failed,
                  fmt::format("nothing was made: {} {} there, and not the driver's", joined(others),
                              others.size() == 1 ? "is" : "are"),
                  "", "the driver needs these names; rename or drop what is called so"};
}

Lacking look(zmFBConn& connection) {
    require_none_of_others(connection);
    Lacking lacking{.functions = !functions_of(connection), .tables = {}};
    for (const char* table : {"RDDSYS_OPN", "RDDSYS_FLK", "RDDSYS_RLK"}) {
        if (!connection(m::istable, table)) lacking.tables.emplace_back(table);
    }
    return lacking;
}

void make(Session& session, const Lacking& lacking) {
    const Options& options = session.options();
    session.let_go();
    if (lacking.functions) {
        const Status installed = install_functions(options.database, options.user, options.password);
        if (!installed.ok())
            throw Failure{Exit::failed, "the functions could not be made", installed.message()};
    }
    session.connection();  // which makes the tables
}

Exit prepare_command(Session& session, const PrepareOptions& given) {
    session.require_database();
    const std::string& database = session.options().database;
    const Lacking lacking = look(session.connection_to_any());
    const bool json = session.options().json;
    const bool made = !given.dry_run && !lacking.nothing();
    if (!lacking.nothing() && !json)
        fmt::print("{} in {}:\n{}", given.dry_run ? "To be made" : "This is made", database, lacking.text());
    if (made) {
        std::fflush(stdout);
        if (!given.yes && !confirm("Go on?")) throw Failure{Exit::failed, "nothing was made"};
        make(session, lacking);
    }
    if (json) {
        fmt::print(
            "{}\n",
            json_line(Json{{"functions", lacking.functions}, {"tables", lacking.tables}, {"made", made}}));
    } else if (made || lacking.nothing()) {
        fmt::print("{} is ready{}\n", database, made ? "" : "; it lacked nothing");
    }
    return Exit::ok;
}

}  // namespace

void add_prepare(CommandLine& line) {
    const auto given = std::make_shared<PrepareOptions>();
    const Subcommand prepare =
        line.add(line.app(), "prepare", "Make a database of other programs one the driver can use",
                 "zmfb --db old.fdb prepare --dry-run",
                 [given](Session& session) { return prepare_command(session, *given); });
    prepare.flag("--dry-run", given->dry_run, "Say what would be made, and make nothing");
    prepare.yes(given->yes);
}

}  // namespace zmfb::tool
