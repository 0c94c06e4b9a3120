#include "tool/catalog.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <iterator>

#include "tool/column_type.h"
#include "tool/counted.h"
#include "tool/encoding.h"
#include "tool/reading.h"
#include "tool/session.h"
#include "tool/suggest.h"
#include "tool/unknown_name.h"
#include "zmfbconn/methods.h"

namespace zmfb::tool {
namespace {

constexpr std::string_view record_number = "RECNO", work_area = "RDD_AREAID";
constexpr std::array<std::string_view, 3> system_tables{"RDDSYS_OPN", "RDDSYS_FLK", "RDDSYS_RLK"};

// A column of the engine's tables, most of which may be NULL.
using Text = std::optional<std::string>;
using Number = std::optional<int>;

std::string driver_use_of(std::string_view column) {
    if (column == record_number) return "record number";
    if (column == work_area) return "work area";
    if (is_driver_column(column)) return "index key";
    return is_limbo_column(column) ? "limbo field" : "";
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

bool is_driver_column(std::string_view name) {
    return name == record_number || name == work_area || name.starts_with("RDDIDX_") ||
           name.starts_with("IDX_");
}

bool is_limbo_column(std::string_view name) { return name.starts_with("RDDLMB_"); }

std::string_view kind_name(TableKind kind) {
    constexpr std::array<std::string_view, 6> names{"driver", "system",  "unfinished",
                                                    "loaded", "foreign", "view"};
    return names.at(static_cast<std::size_t>(kind));
}

std::string description_of(std::string_view row) {
    return fmt::format(
        "cast(substring(cast({}.rdb$description as blob sub_type binary) from 1 for 255) "
        "as varchar(255) character set iso8859_1)",
        row);
}

std::string table_beside(const std::string& table) { return "Z$" + table; }

std::string engine_version(zmFBConn& connection) {
    constexpr const char* query = "select rdb$get_context('SYSTEM', 'ENGINE_VERSION') from rdb$database";
    return std::get<0>(rows_of<std::string>(connection, query).at(0));
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
    constexpr std::size_t at_once = 300;
    if (names.empty() || (names.size() <= at_once && are_free(connection, names))) return {};
    if (names.size() == 1) return {names.front()};
    const std::size_t half = names.size() / 2;
    std::vector<Name> reserved = reserved_among(connection, names.first(half));
    std::ranges::move(reserved_among(connection, names.subspan(half)), std::back_inserter(reserved));
    return reserved;
}

namespace {

// Whether it is a view, whether its rows are seen by one program only, how its description begins, and how
// many of the generators named after it were made by others than its owner.
using Relation = std::tuple<std::string, int, int, Text, std::int64_t>;
constexpr std::string_view relations =
    "select r.rdb$relation_name, iif(r.rdb$view_blr is null, 0, 1), "
    "iif(r.rdb$relation_type in (4, 5), 1, 0), {}, "
    "(select count(*) from rdb$generators g "
    "where g.rdb$owner_name <> r.rdb$owner_name and g.rdb$generator_name in ("
    "'G_' || trim(trailing from r.rdb$relation_name) || '_I', "
    "'G_' || trim(trailing from r.rdb$relation_name) || '_D')) from rdb$relations r where ";

bool is_created_by_driver(std::string_view description) {
    const std::size_t begin = std::min(description.find_first_not_of(' '), description.size());
    const std::size_t end = description.find_last_not_of(' ') + 1;
    return description.substr(begin, end - std::min(begin, end)) == "Created by ZMRDDFIRE";
}

constexpr std::string_view columns_of_described =
    "select f.rdb$relation_name, f.rdb$field_name from rdb$relation_fields f join rdb$relations r on "
    "r.rdb$relation_name = f.rdb$relation_name where r.rdb$description is not null and ";

// Those with a column that the driver cannot name, when they have a description.
template <class... Values>
std::vector<Name> with_odd_columns(zmFBConn& connection, std::string_view condition,
                                   const Values&... values) {
    std::vector<Name> found;
    const std::string query = fmt::format("{}{}", columns_of_described, condition);
    for (const auto& [table, column] : rows_of<std::string, std::string>(connection, query, values...)) {
        if (!Name(column).is_plain()) found.emplace_back(table);
    }
    return found;
}

bool is_in(const std::vector<Name>& names, const Name& name) {
    return std::ranges::find(names, name) != names.end();
}

TableKind kind_by(const Relation& relation) {
    const auto& [text, is_view, is_temporary, described, generators_of_others] = relation;
    const std::string description = described.value_or("");
    const Name name(text);
    if (is_view != 0) return TableKind::view;
    if (!name.is_plain()) return TableKind::foreign;
    if (std::ranges::find(system_tables, name.bytes()) != system_tables.end()) return TableKind::system;
    if (description.starts_with(unfinished_description)) return TableKind::unfinished;
    if (description.starts_with(loaded_description)) return TableKind::loaded;
    const bool is_of_driver = is_created_by_driver(description) && generators_of_others == 0;
    return is_of_driver ? TableKind::driver : TableKind::foreign;
}

// The driver makes nothing but plain names, none of them reserved, and all parts of a table as one user; the
// description alone anybody can give a table.
template <class... Values>
std::vector<Table> tables_where(zmFBConn& connection, std::string_view condition, const Values&... values) {
    std::vector<Table> tables;
    std::vector<Name> of_the_driver;
    const std::string query =
        fmt::format(relations, description_of("r")) + fmt::format("{} order by 1", condition);
    for (const Relation& relation :
         rows_of<std::string, int, int, Text, std::int64_t>(connection, query, values...)) {
        tables.push_back({Name(std::get<0>(relation)), kind_by(relation), std::get<2>(relation) != 0});
        if (tables.back().kind == TableKind::driver) of_the_driver.push_back(tables.back().name);
    }
    std::vector<Name> not_made_by_it = reserved_among(connection, of_the_driver);
    std::ranges::copy(with_odd_columns(connection, condition, values...), std::back_inserter(not_made_by_it));
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

bool is_there(zmFBConn& connection, ObjectKind kind, const Name& name) {
    constexpr std::size_t longest = 63 * 4;
    if (name.bytes().size() > longest || !is_utf8(name.bytes())) return false;
    constexpr std::array queries{"select 1 from rdb$relations where rdb$relation_name = {}",
                                 "select 1 from rdb$generators where rdb$generator_name = {}"};
    const std::string query = fmt::format(fmt::runtime(queries.at(static_cast<std::size_t>(kind))), any_name);
    return !rows_of<int>(connection, query, name.bytes()).empty();
}

Name existing_name(zmFBConn& connection, const std::string& typed) {
    const Name name = typed_name(typed);
    if (is_there(connection, ObjectKind::relation, name)) return name;
    const Name exactly(typed);
    const std::string nearest = nearest_name(typed, plain_tables(connection));
    const std::string hint = is_there(connection, ObjectKind::relation, exactly)
                                 ? "with its double quotes: " + shell_word(exactly.quoted())
                             : nearest.empty() ? ""
                                               : fmt::format("did you mean {}?", nearest);
    throw Failure{Exit::failed, fmt::format("there is no table {}", typed), "", hint};
}

TableKind kind_of(zmFBConn& connection, const Name& name) {
    const std::vector<Table> found = tables_where(connection, "r.rdb$relation_name = ?", name.bytes());
    if (found.empty()) throw Failure{Exit::failed, fmt::format("there is no table {}", name.shown())};
    return found.front().kind;
}

Table existing_table(zmFBConn& connection, const std::string& typed) {
    const Name name = existing_name(connection, typed);
    return {name, kind_of(connection, name)};
}

namespace {

// Nothing more can be asked then. The file of an external table is not the database's.
bool has_lost_its_database(zmFBConn& connection, std::string_view message) {
    const std::string name = connection(m::getdatabasename);
    return tells_of_a_lost_connection(message) ||
           (tells_of_a_failing_disk(message) &&
            message.find(std::filesystem::path(name).filename().string()) != std::string_view::npos);
}

// Nothing when it may not be asked.
std::optional<std::uint64_t> number_from(zmFBConn& connection, std::string_view query) try {
    const auto rows = rows_of<std::int64_t>(connection, query);
    if (rows.empty()) return std::nullopt;
    return static_cast<std::uint64_t>(std::get<0>(rows.front()));
} catch (const Failure& failure) {
    if (has_lost_its_database(connection, failure.detail)) throw;
    return std::nullopt;
}

}  // namespace

std::optional<std::uint64_t> records_of(zmFBConn& connection, const Table& table) {
    if (table.kind == TableKind::view) return std::nullopt;
    if (table.kind == TableKind::unfinished) return 0;
    std::optional<std::uint64_t> records;
    if (table.kind == TableKind::driver) {
        records = number_from(
            connection,
            fmt::format("select gen_id(G_{0}_I, 0) - gen_id(G_{0}_D, 0) from rdb$database where not "
                        "exists(select 1 from rdb$relations where rdb$relation_name = '{1}')",
                        table.name.bytes(), table_beside(table.name.bytes())));
    }
    if (!records) records = number_from(connection, "select count(*) from " + table.name.quoted());
    return records;
}

std::string records_in_words(std::optional<std::uint64_t> records) {
    return records ? counted(*records, "record", "records") : "records that this user may not count";
}

std::vector<Name> column_names_of(zmFBConn& connection, const Name& table) {
    return names_of(connection,
                    "select rdb$field_name from rdb$relation_fields where rdb$relation_name = ? "
                    "order by rdb$field_position",
                    table.bytes());
}

bool is_nameable(zmFBConn& connection, const Name& table) {
    return table.is_plain() && all_plain(column_names_of(connection, table));
}

std::vector<ColumnType> columns_of(zmFBConn& connection, const Name& table) {
    const auto rows = rows_of<std::string, int, Number, Number, Number, Number, Number, int, int>(
        connection,
        "select rf.rdb$field_name, f.rdb$field_type, f.rdb$field_sub_type, f.rdb$field_length, "
        "f.rdb$field_scale, f.rdb$field_precision, f.rdb$character_length, "
        "coalesce(rf.rdb$null_flag, f.rdb$null_flag, 0), iif(f.rdb$computed_source is null, 0, 1) "
        "from rdb$relation_fields rf join rdb$fields f on f.rdb$field_name = rf.rdb$field_source "
        "where rf.rdb$relation_name = ? order by rf.rdb$field_position",
        table.bytes());
    std::vector<ColumnType> columns;
    for (const auto& [text, code, sub_type, bytes, scale, precision, characters, not_null, computed] : rows) {
        std::string type = type_name({.code = code,
                                      .sub_type = sub_type.value_or(0),
                                      .bytes = bytes.value_or(0),
                                      .scale = scale.value_or(0),
                                      .precision = precision.value_or(0),
                                      .characters = characters.value_or(0)});
        if (not_null != 0) type += " NOT NULL";
        if (computed != 0) type += " COMPUTED";
        const Name name(text);
        columns.push_back({name, type, driver_use_of(name.bytes())});
    }
    return columns;
}

std::vector<Index> indexes_of(zmFBConn& connection, const Name& table) {
    const auto rows = rows_of<std::string, int, int, int, Text, Text>(
        connection,
        "select i.rdb$index_name, coalesce(i.rdb$unique_flag, 0), coalesce(i.rdb$index_type, 0), "
        "coalesce(i.rdb$index_inactive, 0), s.rdb$field_name, rc.rdb$constraint_type from rdb$indices i "
        "left join rdb$index_segments s on s.rdb$index_name = i.rdb$index_name "
        "left join rdb$relation_constraints rc on rc.rdb$index_name = i.rdb$index_name "
        "where i.rdb$relation_name = ? order by i.rdb$index_name, s.rdb$field_position",
        table.bytes());
    std::vector<Index> indexes;
    for (const auto& [text, unique, descending, inactive, field, constraint] : rows) {
        const Name name(text);
        if (indexes.empty() || indexes.back().name != name) {
            indexes.push_back({.name = name,
                               .fields = {},
                               .constraint = constraint.value_or(""),
                               .unique = unique != 0,
                               .descending = descending != 0,
                               .active = inactive == 0});
        }
        if (field) indexes.back().fields.emplace_back(*field);
    }
    return indexes;
}

std::vector<Trigger> triggers_of(zmFBConn& connection, const Name& table) {
    const auto rows = rows_of<std::string, int, int>(
        connection,
        "select rdb$trigger_name, rdb$trigger_type, coalesce(rdb$trigger_inactive, 0) from rdb$triggers "
        "where coalesce(rdb$system_flag, 0) = 0 and rdb$relation_name = ? "
        "order by rdb$trigger_type, rdb$trigger_sequence, rdb$trigger_name",
        table.bytes());
    std::vector<Trigger> triggers;
    for (const auto& [name, type, inactive] : rows) {
        triggers.push_back({Name(name), moment_of(type), inactive == 0});
    }
    return triggers;
}

std::vector<Name> generator_names_of(zmFBConn& connection, const Name& table) {
    return names_of(connection,
                    fmt::format("select rdb$generator_name from rdb$generators where "
                                "rdb$generator_name in ({0}, {0}) order by 1 desc",
                                any_name),
                    "G_" + table.bytes() + "_I", "G_" + table.bytes() + "_D");
}

std::vector<Generator> generators_of(zmFBConn& connection, const Name& table) {
    std::vector<Generator> generators;
    for (const Name& name : generator_names_of(connection, table)) {
        const auto rows = rows_of<std::int64_t>(
            connection, fmt::format("select gen_id({}, 0) from rdb$database", name.quoted()));
        generators.push_back({name, std::get<0>(rows.at(0))});
    }
    return generators;
}

std::vector<Name> views_on(zmFBConn& connection, const Name& table) {
    return names_of(connection,
                    "select distinct rdb$view_name from rdb$view_relations where rdb$relation_name = ? "
                    "order by 1",
                    table.bytes());
}

std::string views_in_words(const std::vector<Name>& views) {
    return views.empty() ? "" : fmt::format(" and the views built on it ({})", joined(views));
}

}  // namespace zmfb::tool
