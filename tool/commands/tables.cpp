#include <fmt/format.h>

#include <algorithm>
#include <memory>

#include "tool/catalog.h"
#include "tool/commands.h"
#include "tool/confirm.h"
#include "tool/encoding.h"
#include "tool/json.h"
#include "tool/text_table.h"
#include "zmfbconn/database.h"

namespace zmfb::tool {
namespace {

Json json_of(std::optional<std::uint64_t> records) { return records ? Json(*records) : Json(); }

Exit tables_command(Session& session) {
    zmFBConn& connection = session.connection();
    TextTable shown({{"table"}, {"kind"}, {"records", true}});
    Json list = Json::array();
    const Value names = connection.call("gettablesname");
    for (const Value& name : names.items()) {
        const TableKind kind = kind_of(connection, name);
        const auto records = records_of(connection, kind, name);
        shown.add(
            {to_utf8(name.text()), std::string(kind_name(kind)), records ? std::to_string(*records) : "?"});
        list.push_back(
            {{"table", to_utf8(name.text())}, {"kind", kind_name(kind)}, {"records", json_of(records)}});
    }
    fmt::print("{}", session.options().json ? json_lines(list) + "\n" : shown.text());
    return Exit::ok;
}

/// Everything that "struct" shows of a table.
struct Structure {
    std::string table;
    TableKind kind;
    std::optional<std::uint64_t> records;  ///< none when this user may not count them
    Value fields;                          ///< as the object has them
    std::vector<ColumnType> columns;
    std::vector<Index> indexes;
    std::vector<Trigger> triggers;
    std::vector<Generator> generators;
};

Structure structure_of(zmFBConn& connection, const std::string& table) {
    Structure all{};
    all.table = existing_table(connection, table);
    all.kind = kind_of(connection, all.table);
    all.records = records_of(connection, all.kind, all.table);
    all.fields = connection.call("gettablestruct", all.table);
    all.columns = columns_of(connection, all.table);
    all.indexes = indexes_of(connection, all.table);
    all.triggers = triggers_of(connection, all.table);
    all.generators = generators_of(connection, all.table);
    return all;
}

std::string index_kind(const Index& index) {
    std::string kind = index.unique ? "unique" : "";
    const auto add = [&](const std::string& word) { kind += (kind.empty() ? "" : ", ") + word; };
    if (index.descending) add("descending");
    if (!index.constraint.empty()) add(index.constraint);
    if (!index.active) add("inactive");
    return kind;
}

void print_fields(const Structure& all) {
    TextTable shown({{"field"},
                     {"type"},
                     {"length", true},
                     {"decimals", true},
                     {"in the database"},
                     {"kept by the driver"}});
    for (std::size_t i = 0; i < all.columns.size() && i < all.fields.size(); ++i) {
        const Value& field = all.fields.items()[i];
        shown.add({to_utf8(field[1].text()), to_utf8(field[2].text()), std::to_string(field[3].integer()),
                   std::to_string(field[4].integer()), all.columns[i].type, all.columns[i].driver_use});
    }
    fmt::print("{}", shown.text());
}

void print_structure(const Structure& all) {
    fmt::print("{}: {} table, {}\n\n", to_utf8(all.table), kind_name(all.kind),
               records_in_words(all.records));
    print_fields(all);
    if (!all.indexes.empty()) {
        TextTable shown({{"index"}, {"fields"}, {"kind"}});
        for (const Index& index : all.indexes) {
            shown.add({to_utf8(index.name), joined(index.fields), index_kind(index)});
        }
        fmt::print("\n{}", shown.text());
    }
    if (!all.triggers.empty()) {
        TextTable shown({{"trigger"}, {"fires"}});
        for (const Trigger& trigger : all.triggers) {
            shown.add({to_utf8(trigger.name), trigger.moment + (trigger.active ? "" : " (inactive)")});
        }
        fmt::print("\n{}", shown.text());
    }
    if (!all.generators.empty()) {
        TextTable shown({{"generator"}, {"value", true}});
        for (const Generator& one : all.generators) {
            shown.add({to_utf8(one.name), std::to_string(one.value)});
        }
        fmt::print("\n{}", shown.text());
    }
}

Json structure_json(const Structure& all) {
    Json json{{"table", to_utf8(all.table)}, {"kind", kind_name(all.kind)}, {"records", json_of(all.records)},
              {"fields", Json::array()},     {"indexes", Json::array()},    {"triggers", Json::array()},
              {"generators", Json::array()}};
    for (std::size_t i = 0; i < all.columns.size() && i < all.fields.size(); ++i) {
        const Value& field = all.fields.items()[i];
        json["fields"].push_back({{"field", to_json(field[1])},
                                  {"type", to_json(field[2])},
                                  {"length", to_json(field[3])},
                                  {"decimals", to_json(field[4])},
                                  {"sql_type", all.columns[i].type},
                                  {"driver", !all.columns[i].driver_use.empty()}});
    }
    for (const Index& index : all.indexes) {
        Json fields = Json::array();
        for (const std::string& field : index.fields) fields.push_back(to_utf8(field));
        json["indexes"].push_back({{"name", to_utf8(index.name)},
                                   {"fields", fields},
                                   {"unique", index.unique},
                                   {"descending", index.descending},
                                   {"active", index.active},
                                   {"constraint", index.constraint}});
    }
    for (const Trigger& trigger : all.triggers) {
        json["triggers"].push_back(
            {{"name", to_utf8(trigger.name)}, {"fires", trigger.moment}, {"active", trigger.active}});
    }
    for (const Generator& one : all.generators) {
        json["generators"].push_back({{"name", to_utf8(one.name)}, {"value", one.value}});
    }
    return json;
}

Exit struct_command(Session& session, const std::string& table) {
    const Structure all = structure_of(session.connection(), table);
    if (session.options().json) {
        fmt::print("{}\n", json_lines(structure_json(all)));
    } else {
        print_structure(all);
    }
    return Exit::ok;
}

void require_droppable(zmFBConn& connection, const std::string& name) {
    const std::string shown = to_utf8(name);
    switch (kind_of(connection, name)) {
        case TableKind::driver:
            return;
        case TableKind::system:
            throw Failure{Exit::failed, fmt::format("{} is the driver's own and stays", shown), "",
                          "zmfb clear empties the tables of locks and registrations"};
        case TableKind::view:
            throw Failure{Exit::failed, fmt::format("{} is a view, not a table", shown), "",
                          fmt::format("zmfb exec \"drop view {}\"", shown)};
        case TableKind::foreign:
            throw Failure{Exit::failed, fmt::format("{} was not made by the driver", shown), "",
                          fmt::format("zmfb exec \"drop table {}\"", shown)};
    }
}

Exit drop_command(Session& session, const std::string& table, bool yes) {
    zmFBConn& connection = session.connection();
    const std::string name = existing_table(connection, table);
    require_droppable(connection, name);
    const std::vector<std::string> views = views_on(connection, name);
    const std::string records = records_in_words(records_of(connection, TableKind::driver, name));
    const std::string question =
        fmt::format("Drop {} with its {}{}?", to_utf8(name), records, views_in_words(views));
    if (!yes && !confirm(question)) throw Failure{Exit::failed, "nothing was dropped"};
    if (!connection.call("droptable", name).logical()) {
        const std::string said = last_engine_message();
        const bool stands = connection.call("istable", name).logical();
        throw Failure{Exit::failed,
                      to_utf8(name) + (stands ? " was not dropped" : " was dropped, but not its generators"),
                      said};
    }
    if (session.options().json) {
        Json gone = Json::array();
        for (const std::string& view : views) gone.push_back(to_utf8(view));
        fmt::print("{}\n", json_line(Json{{"dropped", to_utf8(name)}, {"views", gone}}));
    } else {
        fmt::print("{}{} dropped\n", to_utf8(name),
                   views.empty() ? "" : fmt::format(" and {}", joined(views)));
    }
    return Exit::ok;
}

}  // namespace

void add_tables(CommandLine& line) {
    line.add(line.app(), "tables", "List the tables", "zmfb --db shop.fdb tables", tables_command);
    struct Given {
        std::string table;
        bool yes = false;
    };
    const auto given = std::make_shared<Given>();
    line.add(line.app(), "struct", "Show the fields, indexes, triggers and generators of a table",
             "zmfb --db shop.fdb struct customers",
             [given](Session& session) { return struct_command(session, given->table); })
        .option("TABLE", given->table, "Table")
        .required();
    const Subcommand drop =
        line.add(line.app(), "drop", "Drop a table of the driver and the views built on it",
                 "zmfb --db shop.fdb drop customers",
                 [given](Session& session) { return drop_command(session, given->table, given->yes); });
    drop.option("TABLE", given->table, "Table").required();
    drop.yes(given->yes);
}

}  // namespace zmfb::tool
