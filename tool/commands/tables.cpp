#include <fmt/format.h>

#include <memory>

#include "tool/commands.h"
#include "tool/encoding.h"
#include "tool/json.h"
#include "tool/text_table.h"

namespace zmfb::tool {
namespace {

constexpr std::string_view system_prefix = "RDDSYS_";

std::string_view kind_of(zmFBConn& connection, const Value& table) {
    if (table.text().starts_with(system_prefix)) return "system";
    if (connection.call("isview", table).logical()) return "view";
    return connection.call("iszmrddtable", table).logical() ? "driver" : "foreign";
}

Exit tables_command(Session& session) {
    zmFBConn& connection = session.connection();
    TextTable shown({{"table"}, {"kind"}, {"records", true}});
    Json list = Json::array();
    const Value names = connection.call("gettablesname");
    for (const Value& name : names.items()) {
        const std::string_view kind = kind_of(connection, name);
        const bool counted = kind == "driver" || kind == "system";
        const Value records = connection.call(counted ? "gettablereccount" : "counttablerecords", name);
        shown.add({to_utf8(name.text()), std::string(kind), std::to_string(records.integer())});
        list.push_back({{"table", to_utf8(name.text())}, {"kind", kind}, {"records", to_json(records)}});
    }
    fmt::print("{}", session.options().json ? list.dump(2) + "\n" : shown.text());
    return Exit::ok;
}

Exit struct_command(Session& session, const std::string& table) {
    zmFBConn& connection = session.connection();
    const auto name = to_latin1(table);
    if (!name || !connection.call("istable", *name).logical()) {
        throw Failure{Exit::failed, fmt::format("there is no table {}", table)};
    }
    TextTable shown({{"field"}, {"type"}, {"length", true}, {"decimals", true}});
    Json list = Json::array();
    const Value fields = connection.call("gettablestruct", *name);
    for (const Value& field : fields.items()) {
        shown.add({to_utf8(field[1].text()), to_utf8(field[2].text()), std::to_string(field[3].integer()),
                   std::to_string(field[4].integer())});
        list.push_back({{"field", to_json(field[1])},
                        {"type", to_json(field[2])},
                        {"length", to_json(field[3])},
                        {"decimals", to_json(field[4])}});
    }
    fmt::print("{}", session.options().json ? list.dump(2) + "\n" : shown.text());
    return Exit::ok;
}

}  // namespace

void add_tables(CommandLine& line) {
    line.add(line.app(), "tables", "List the tables", "zmfb --db shop.fdb tables", tables_command);
    const auto table = std::make_shared<std::string>();
    line.add(line.app(), "struct", "Show the structure of a table", "zmfb --db shop.fdb struct customers",
             [table](Session& session) { return struct_command(session, *table); })
        ->add_option("TABLE", *table, "Table")
        ->required();
}

}  // namespace zmfb::tool
