#include <fmt/format.h>

#include <algorithm>
#include <memory>

#include "tool/catalog.h"
#include "tool/commands.h"
#include "tool/confirm.h"
#include "tool/dependents.h"
#include "tool/drop.h"
#include "tool/encoding.h"
#include "tool/json.h"
#include "tool/locks.h"
#include "tool/rows/shown_text.h"
#include "tool/suggest.h"
#include "tool/text_table.h"
#include "tool/unknown_name.h"
#include "zmfbconn/methods.h"

namespace zmfb::tool {
namespace {

Json json_of(std::optional<std::uint64_t> records) { return records ? Json(*records) : Json(); }

Exit tables_command(Session& session) {
    zmFBConn& connection = session.connection();
    TextTable shown({{"table"}, {"kind"}, {"records", true}});
    Json list = Json::array();
    for (const Table& table : tables_of(connection)) {
        const auto records = records_of(connection, table);
        const std::string_view uncounted = table.kind == TableKind::view ? "" : "?";
        shown.add({table.name.shown(), std::string(kind_name(table.kind)),
                   records ? std::to_string(*records) : std::string(uncounted)});
        list.push_back(
            {{"table", table.name.text()}, {"kind", kind_name(table.kind)}, {"records", json_of(records)}});
    }
    fmt::print("{}", session.options().json ? json_lines(list) + "\n" : shown.text());
    return Exit::ok;
}

// For the completion of command lines: the names of tables as they go on from what was typed.
Exit names_command(Session& session, const std::string& typed) {
    for (const std::string& name : completions(typed, plain_tables(session.connection_to_any())))
        fmt::print("{}\n", name);
    return Exit::ok;
}

// Everything that "struct" shows of a table.
struct Structure {
    Table table;
    std::optional<std::uint64_t> records;  ///< none when they were not counted
    zmfb::Structure fields;                ///< as the object has them; none when it cannot name them all
    std::vector<ColumnType> columns;
    std::vector<Index> indexes;
    std::vector<Trigger> triggers;
    std::vector<Generator> generators;
};

Structure structure_of(zmFBConn& connection, const std::string& typed) {
    const Table table = existing_table(connection, typed);
    const bool nameable = is_nameable(connection, table.name);
    return {.table = table,
            .records = records_of(connection, table),
            .fields = nameable ? connection(m::gettablestruct, table.name.bytes()) : zmfb::Structure(),
            .columns = columns_of(connection, table.name),
            .indexes = indexes_of(connection, table.name),
            .triggers = triggers_of(connection, table.name),
            .generators = generators_of(connection, table.name)};
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
    for (std::size_t i = 0; i < all.columns.size(); ++i) {
        const ColumnType& column = all.columns[i];
        std::vector<std::string> cells{column.name.shown(), "", "", "", column.type, column.driver_use};
        if (i < all.fields.size()) {
            const FieldDescriptor& field = all.fields[i];
            cells[1] = to_utf8(field.type);
            cells[2] = std::to_string(field.length);
            cells[3] = std::to_string(field.decimals);
        }
        shown.add(std::move(cells));
    }
    fmt::print("{}", shown.text());
}

void print_structure(const Structure& all) {
    const std::string name = without_controls(all.table.name.shown());
    if (all.table.kind == TableKind::view) {
        fmt::print("{}: view\n\n", name);
    } else {
        fmt::print("{}: {} table, {}\n\n", name, kind_name(all.table.kind), records_in_words(all.records));
    }
    print_fields(all);
    if (!all.indexes.empty()) {
        TextTable shown({{"index"}, {"fields"}, {"kind"}});
        for (const Index& index : all.indexes) {
            const std::string fields = index.fields.empty() ? "(expression)" : joined(index.fields);
            shown.add({index.name.shown(), fields, index_kind(index)});
        }
        fmt::print("\n{}", shown.text());
    }
    if (!all.triggers.empty()) {
        TextTable shown({{"trigger"}, {"fires"}});
        for (const Trigger& trigger : all.triggers) {
            shown.add({trigger.name.shown(), trigger.moment + (trigger.active ? "" : " (inactive)")});
        }
        fmt::print("\n{}", shown.text());
    }
    if (!all.generators.empty()) {
        TextTable shown({{"generator"}, {"value", true}});
        for (const Generator& one : all.generators) {
            shown.add({one.name.shown(), std::to_string(one.value)});
        }
        fmt::print("\n{}", shown.text());
    }
}

Json structure_json(const Structure& all) {
    Json json{{"table", all.table.name.text()},  {"kind", kind_name(all.table.kind)},
              {"records", json_of(all.records)}, {"fields", Json::array()},
              {"indexes", Json::array()},        {"triggers", Json::array()},
              {"generators", Json::array()}};
    for (std::size_t i = 0; i < all.columns.size(); ++i) {
        const ColumnType& column = all.columns[i];
        const FieldDescriptor* const field = i < all.fields.size() ? &all.fields[i] : nullptr;
        json["fields"].push_back({{"field", column.name.text()},
                                  {"type", field != nullptr ? Json(to_utf8(field->type)) : Json()},
                                  {"length", field != nullptr ? Json(field->length) : Json()},
                                  {"decimals", field != nullptr ? Json(field->decimals) : Json()},
                                  {"sql_type", column.type},
                                  {"driver", !column.driver_use.empty()}});
    }
    for (const Index& index : all.indexes) {
        Json fields = Json::array();
        for (const Name& field : index.fields) fields.push_back(field.text());
        if (index.fields.empty()) fields.push_back("(expression)");
        json["indexes"].push_back({{"name", index.name.text()},
                                   {"fields", fields},
                                   {"unique", index.unique},
                                   {"descending", index.descending},
                                   {"active", index.active},
                                   {"constraint", index.constraint}});
    }
    for (const Trigger& trigger : all.triggers) {
        json["triggers"].push_back(
            {{"name", trigger.name.text()}, {"fires", trigger.moment}, {"active", trigger.active}});
    }
    for (const Generator& one : all.generators) {
        json["generators"].push_back({{"name", one.name.text()}, {"value", one.value}});
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

void require_driver_table(const Table& table) {
    const std::string shown = table.name.shown();
    switch (table.kind) {
        case TableKind::driver:
        case TableKind::unfinished:
        case TableKind::loaded:
            return;
        case TableKind::system:
            throw Failure{Exit::failed, fmt::format("{} is the driver's own and stays", shown), "",
                          "zmfb clear empties the tables of locks and registrations"};
        case TableKind::view:
            throw Failure{Exit::failed, fmt::format("{} is a view, not a table", shown), "",
                          exec_command_line("drop view " + table.name.quoted())};
        case TableKind::foreign:
            throw Failure{Exit::failed, fmt::format("{} was not made by the driver", shown), "",
                          exec_command_line("drop table " + table.name.quoted())};
    }
}

void require_unused(const Name& table, const std::vector<Dependent>& in_the_way) {
    if (in_the_way.empty()) return;
    const Dependent& first = in_the_way.front();
    throw Failure{Exit::failed,
                  fmt::format("{} was not dropped: in use by {}", table.shown(), in_words(in_the_way)), "",
                  first.kind == "view" ? exec_command_line("drop view " + first.name.quoted()) : ""};
}

Exit drop_command(Session& session, const std::string& typed, bool yes) {
    zmFBConn& connection = session.connection();
    const Table table = existing_table(connection, typed);
    require_driver_table(table);
    const Dependents dependents = dependents_of_table(connection, table.name);
    require_unused(table.name, dependents.in_the_way);
    require_unused_by_others(connection, table.name);
    const std::vector<Name> views = names_in(dependents.taken);
    const std::string question =
        fmt::format("Drop {} with its {}{}?", table.name.shown(),
                    records_in_words(records_of(connection, table)), views_in_words(views));
    if (!yes && !confirm(question)) throw Failure{Exit::failed, "nothing was dropped"};
    drop_with_views(connection, table.name, views);
    if (session.options().json) {
        Json gone = Json::array();
        for (const Name& view : views) gone.push_back(view.text());
        fmt::print("{}\n", json_line(Json{{"dropped", table.name.text()}, {"views", gone}}));
    } else {
        fmt::print("{}{} dropped\n", table.name.shown(),
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
    const Subcommand names = line.add(
        line.app(), "names", "Show the names of tables that begin so", "zmfb --db shop.fdb names cus",
        [given](Session& session) { return names_command(session, given->table); });
    names.option("PREFIX", given->table, "Beginning of a name");
    names.hide();
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
