#include "tool/catalog.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <iterator>

#include "host/number.h"
#include "host/text.h"
#include "tool/column_type.h"
#include "tool/counted.h"
#include "tool/encoding.h"
#include "tool/session.h"
#include "zmfbconn/database.h"
#include "zmfbconn/exact.h"

namespace zmfb::tool {
namespace {

constexpr std::string_view driver_description = "Created by ZMRDDFIRE";
constexpr std::array<std::string_view, 3> system_tables{"RDDSYS_OPN", "RDDSYS_FLK", "RDDSYS_RLK"};

std::string text_of(const Value& value) { return host::trim(value).string(); }

int number_of(const Value& value) {
    return value.is_nil() ? 0 : std::atoi(std::string(value.text()).c_str());
}

std::string driver_use_of(std::string_view column) {
    if (column == "RECNO") return "record number";
    if (column == "RDD_AREAID") return "work area";
    if (column.starts_with("RDDIDX_") || column.starts_with("IDX_")) return "index key";
    if (column.starts_with("RDDLMB_")) return "limbo field";
    return "";
}

// The code of a trigger plus one: the lowest bit says when, each pair of bits above it one action.
std::string moment_of(int code) {
    constexpr std::array<std::string_view, 4> actions{"", "INSERT", "UPDATE", "DELETE"};
    const auto bits = static_cast<unsigned>(code + 1);
    std::string moment = (bits & 1U) == 0 ? "BEFORE" : "AFTER";
    std::string_view joint = " ";
    for (unsigned shift = 1; shift <= 5; shift += 2) {
        const std::string_view action = actions.at((bits >> shift) & 3U);
        if (action.empty()) continue;
        moment += std::string(joint) + std::string(action);
        joint = " OR ";
    }
    return moment;
}

}  // namespace

std::string_view kind_name(TableKind kind) {
    constexpr std::array<std::string_view, 4> names{"driver", "system", "foreign", "view"};
    return names.at(static_cast<std::size_t>(kind));
}

Value exact_rows(zmFBConn& connection, std::string_view query) {
    const ExactQueries exact;
    const Value result = connection.call("executequery", query);
    if (exact.sqlcode() != 0 || result.size() == 0) {
        throw Failure{Exit::failed, "cannot read the engine's tables", last_engine_message()};
    }
    Value rows = Value::array_of_size(0);
    for (const Value& row : result.items().subspan(1)) rows.push(row);
    return rows;
}

std::string engine_version(zmFBConn& connection) {
    const Value rows =
        exact_rows(connection, "select rdb$get_context('SYSTEM', 'ENGINE_VERSION') from rdb$database");
    return text_of(rows[1][1]);
}

std::vector<Name> names_of(zmFBConn& connection, std::string_view query) {
    std::vector<Name> names;
    const Value rows = exact_rows(connection, query);
    for (const Value& row : rows.items()) names.emplace_back(row[1].text());
    return names;
}

namespace {

bool are_free(zmFBConn& connection, std::span<const Name> names) {
    std::string columns;
    for (const Name& name : names) columns += (columns.empty() ? "1 as " : ", 1 as ") + name.bytes();
    return connection.call("executequery", "select " + columns + " from rdb$database").size() == 2;
}

}  // namespace

// Hardly ever one is, so many are asked for at once.
std::vector<Name> reserved_among(zmFBConn& connection, std::span<const Name> names) {
    constexpr std::size_t at_once = 100;
    std::vector<Name> reserved;
    while (!names.empty()) {
        const auto some = names.first(std::min(names.size(), at_once));
        names = names.subspan(some.size());
        if (are_free(connection, some)) continue;
        std::ranges::copy_if(some, std::back_inserter(reserved),
                             [&](const Name& name) { return !are_free(connection, std::span(&name, 1)); });
    }
    return reserved;
}

namespace {

// Whether it is a view, its description, and how many of the generators named after it were made by others
// than its owner. The function is the driver's: without it, or the right to call it, nothing is told.
constexpr std::string_view relations =
    "select r.rdb$relation_name, iif(r.rdb$view_blr is null, 0, 1), zmblobsubstr(r.rdb$description, 1, 255), "
    "(select count(*) from rdb$generators g "
    "where g.rdb$owner_name <> r.rdb$owner_name and g.rdb$generator_name in ("
    "'G_' || trim(trailing from r.rdb$relation_name) || '_I', "
    "'G_' || trim(trailing from r.rdb$relation_name) || '_D')) from rdb$relations r where ";

constexpr std::string_view columns_of_described =
    "select f.rdb$relation_name, f.rdb$field_name from rdb$relation_fields f join rdb$relations r on "
    "r.rdb$relation_name = f.rdb$relation_name where r.rdb$description is not null and ";

// Those with a column that the driver cannot name, when they have a description.
std::vector<Name> with_odd_columns(zmFBConn& connection, std::string_view condition) {
    std::vector<Name> found;
    const Value rows = exact_rows(connection, fmt::format("{}{}", columns_of_described, condition));
    for (const Value& row : rows.items()) {
        if (!Name(row[2].text()).is_plain()) found.emplace_back(row[1].text());
    }
    return found;
}

bool is_in(const std::vector<Name>& names, const Name& name) {
    return std::ranges::find(names, name) != names.end();
}

TableKind kind_by(const Value& row) {
    const Name name(row[1].text());
    if (number_of(row[2]) != 0) return TableKind::view;
    if (!name.is_plain()) return TableKind::foreign;
    if (std::ranges::find(system_tables, name.bytes()) != system_tables.end()) return TableKind::system;
    const bool described = !row[3].is_nil() && host::alltrim(row[3]).string() == driver_description;
    return described && number_of(row[4]) == 0 ? TableKind::driver : TableKind::foreign;
}

// The driver makes nothing but plain names, none of them reserved, and all parts of a table as one user; the
// description alone anybody can give a table.
std::vector<Table> tables_where(zmFBConn& connection, std::string_view condition) {
    std::vector<Table> tables;
    std::vector<Name> of_the_driver;
    const Value rows = exact_rows(connection, fmt::format("{}{} order by 1", relations, condition));
    for (const Value& row : rows.items()) {
        tables.push_back({Name(row[1].text()), kind_by(row)});
        if (tables.back().kind == TableKind::driver) of_the_driver.push_back(tables.back().name);
    }
    std::vector<Name> not_made_by_it = reserved_among(connection, of_the_driver);
    std::ranges::copy(with_odd_columns(connection, condition), std::back_inserter(not_made_by_it));
    for (Table& table : tables) {
        if (table.kind == TableKind::driver && is_in(not_made_by_it, table.name))
            table.kind = TableKind::foreign;
    }
    return tables;
}

}  // namespace

std::vector<Table> tables_of(zmFBConn& connection) {
    return tables_where(connection, "r.rdb$system_flag = 0");
}

namespace {

bool is_relation(zmFBConn& connection, const Name& name) {
    constexpr std::size_t longest = 63 * 4;
    if (name.bytes().size() > longest || !is_utf8(name.bytes())) return false;
    return !names_of(connection, "select rdb$relation_name from rdb$relations where rdb$relation_name = " +
                                     name.literal())
                .empty();
}

}  // namespace

Name existing_name(zmFBConn& connection, const std::string& typed) {
    const Name name = typed_name(typed);
    if (is_relation(connection, name)) return name;
    const Name exactly(typed);
    const std::string hint =
        is_relation(connection, exactly) ? "with its double quotes: " + shell_word(exactly.quoted()) : "";
    throw Failure{Exit::failed, fmt::format("there is no table {}", typed), "", hint};
}

TableKind kind_of(zmFBConn& connection, const Name& name) {
    const std::vector<Table> found = tables_where(connection, "r.rdb$relation_name = " + name.literal());
    if (found.empty()) throw Failure{Exit::failed, fmt::format("there is no table {}", name.shown())};
    return found.front().kind;
}

Table existing_table(zmFBConn& connection, const std::string& typed) {
    const Name name = existing_name(connection, typed);
    return {name, kind_of(connection, name)};
}

std::optional<std::uint64_t> records_of(zmFBConn& connection, const Table& table) {
    if (table.kind == TableKind::view) return std::nullopt;
    const bool counted = table.kind == TableKind::driver || table.kind == TableKind::system;
    const ExactQueries exact;
    const Value result = counted
                             ? connection.call("gettablereccount", table.name.bytes())
                             : connection.call("executequery", "select count(*) from " + table.name.quoted());
    if (exact.sqlcode() != 0) return std::nullopt;
    return static_cast<std::uint64_t>((counted ? result : host::val(result[2][1])).integer());
}

std::string records_in_words(std::optional<std::uint64_t> records) {
    return records ? counted(*records, "record", "records") : "records that this user may not count";
}

std::vector<Name> column_names_of(zmFBConn& connection, const Name& table) {
    return names_of(connection, "select rdb$field_name from rdb$relation_fields where rdb$relation_name = " +
                                    table.literal() + " order by rdb$field_position");
}

bool is_nameable(zmFBConn& connection, const Name& table) {
    return table.is_plain() && all_plain(column_names_of(connection, table));
}

std::vector<ColumnType> columns_of(zmFBConn& connection, const Name& table) {
    const Value rows =
        exact_rows(connection,
                   "select rf.rdb$field_name, f.rdb$field_type, f.rdb$field_sub_type, f.rdb$field_length, "
                   "f.rdb$field_scale, f.rdb$field_precision, f.rdb$character_length, "
                   "coalesce(rf.rdb$null_flag, f.rdb$null_flag, 0), f.rdb$computed_source "
                   "from rdb$relation_fields rf join rdb$fields f on f.rdb$field_name = rf.rdb$field_source "
                   "where rf.rdb$relation_name = " +
                       table.literal() + " order by rf.rdb$field_position");
    std::vector<ColumnType> columns;
    for (const Value& row : rows.items()) {
        const StoredType stored{.code = number_of(row[2]),
                                .sub_type = number_of(row[3]),
                                .bytes = number_of(row[4]),
                                .scale = number_of(row[5]),
                                .precision = number_of(row[6]),
                                .characters = number_of(row[7])};
        std::string type = type_name(stored);
        if (number_of(row[8]) != 0) type += " NOT NULL";
        if (!row[9].is_nil()) type += " COMPUTED";
        const Name name(row[1].text());
        columns.push_back({name, type, driver_use_of(name.bytes())});
    }
    return columns;
}

std::vector<Index> indexes_of(zmFBConn& connection, const Name& table) {
    const Value rows = exact_rows(
        connection,
        "select i.rdb$index_name, coalesce(i.rdb$unique_flag, 0), coalesce(i.rdb$index_type, 0), "
        "coalesce(i.rdb$index_inactive, 0), s.rdb$field_name, rc.rdb$constraint_type from rdb$indices i "
        "left join rdb$index_segments s on s.rdb$index_name = i.rdb$index_name "
        "left join rdb$relation_constraints rc on rc.rdb$index_name = i.rdb$index_name "
        "where i.rdb$relation_name = " +
            table.literal() + " order by i.rdb$index_name, s.rdb$field_position");
    std::vector<Index> indexes;
    for (const Value& row : rows.items()) {
        const Name name(row[1].text());
        if (indexes.empty() || indexes.back().name != name) {
            indexes.push_back({.name = name,
                               .fields = {},
                               .constraint = row[6].is_nil() ? "" : text_of(row[6]),
                               .unique = number_of(row[2]) != 0,
                               .descending = number_of(row[3]) != 0,
                               .active = number_of(row[4]) == 0});
        }
        if (!row[5].is_nil()) indexes.back().fields.emplace_back(row[5].text());
    }
    return indexes;
}

std::vector<Trigger> triggers_of(zmFBConn& connection, const Name& table) {
    const Value rows = exact_rows(
        connection,
        "select rdb$trigger_name, rdb$trigger_type, coalesce(rdb$trigger_inactive, 0) from rdb$triggers "
        "where coalesce(rdb$system_flag, 0) = 0 and rdb$relation_name = " +
            table.literal() + " order by rdb$trigger_type, rdb$trigger_sequence, rdb$trigger_name");
    std::vector<Trigger> triggers;
    for (const Value& row : rows.items()) {
        triggers.push_back({Name(row[1].text()), moment_of(number_of(row[2])), number_of(row[3]) == 0});
    }
    return triggers;
}

std::vector<Name> generator_names_of(zmFBConn& connection, const Name& table) {
    return names_of(connection, fmt::format("select rdb$generator_name from rdb$generators where "
                                            "rdb$generator_name in ({}, {}) order by 1 desc",
                                            Name("G_" + table.bytes() + "_I").literal(),
                                            Name("G_" + table.bytes() + "_D").literal()));
}

std::vector<Generator> generators_of(zmFBConn& connection, const Name& table) {
    std::vector<Generator> generators;
    for (const Name& name : generator_names_of(connection, table)) {
        const Value value =
            exact_rows(connection, fmt::format("select gen_id({}, 0) from rdb$database", name.quoted()));
        generators.push_back({name, std::atoll(std::string(value[1][1].text()).c_str())});
    }
    return generators;
}

std::vector<Name> views_on(zmFBConn& connection, const Name& table) {
    return names_of(connection,
                    "select distinct rdb$view_name from rdb$view_relations where "
                    "rdb$relation_name = " +
                        table.literal() + " order by 1");
}

std::string views_in_words(const std::vector<Name>& views) {
    return views.empty() ? "" : fmt::format(" and the views built on it ({})", joined(views));
}

}  // namespace zmfb::tool
