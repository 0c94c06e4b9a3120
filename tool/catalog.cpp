#include "tool/catalog.h"

#include <fmt/format.h>

#include <array>
#include <cstdlib>

#include "host/text.h"
#include "tool/column_type.h"
#include "tool/counted.h"
#include "tool/encoding.h"
#include "tool/session.h"
#include "zmfbconn/database.h"
#include "zmfbconn/exact.h"

namespace zmfb::tool {
namespace {

constexpr std::string_view system_prefix = "RDDSYS_";

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

std::string sql_text(std::string_view text) {
    std::string literal = "'";
    for (const char c : text) literal.append(c == '\'' ? 2 : 1, c);
    return literal + "'";
}

std::string existing_table(zmFBConn& connection, const std::string& table) {
    const auto bytes = to_latin1(table);
    const Value name = host::alltrim(host::upper(bytes.value_or("")));
    const bool quoted = name.text().find('\'') != std::string_view::npos;
    if (!bytes || quoted || !connection.call("istable", name).logical()) {
        throw Failure{Exit::failed, fmt::format("there is no table {}", table)};
    }
    return std::string(name.text());
}

TableKind kind_of(zmFBConn& connection, const Value& table) {
    if (table.text().starts_with(system_prefix)) return TableKind::system;
    if (connection.call("isview", table).logical()) return TableKind::view;
    if (connection.call("iszmrddtable", table).logical()) return TableKind::driver;
    // The object answers .F. for a refused question, too: its function must be one that this user may call.
    exact_rows(connection, "select zmblobsubstr(rdb$description, 1, 1) from rdb$database");
    return TableKind::foreign;
}

std::optional<std::uint64_t> records_of(zmFBConn& connection, TableKind kind, const Value& table) {
    const bool counted = kind == TableKind::driver || kind == TableKind::system;
    const ExactQueries exact;
    const Value records = connection.call(counted ? "gettablereccount" : "counttablerecords", table);
    if (exact.sqlcode() != 0) return std::nullopt;
    return static_cast<std::uint64_t>(records.integer());
}

std::string records_in_words(std::optional<std::uint64_t> records) {
    return records ? counted(*records, "record", "records") : "records that this user may not count";
}

std::vector<ColumnType> columns_of(zmFBConn& connection, const std::string& table) {
    const Value rows =
        exact_rows(connection,
                   "select rf.rdb$field_name, f.rdb$field_type, f.rdb$field_sub_type, f.rdb$field_length, "
                   "f.rdb$field_scale, f.rdb$field_precision, f.rdb$character_length, "
                   "coalesce(rf.rdb$null_flag, f.rdb$null_flag, 0), f.rdb$computed_source "
                   "from rdb$relation_fields rf join rdb$fields f on f.rdb$field_name = rf.rdb$field_source "
                   "where rf.rdb$relation_name = " +
                       sql_text(table) + " order by rf.rdb$field_position");
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
        const std::string name = text_of(row[1]);
        columns.push_back({name, type, driver_use_of(name)});
    }
    return columns;
}

std::vector<Index> indexes_of(zmFBConn& connection, const std::string& table) {
    const Value rows = exact_rows(
        connection,
        "select i.rdb$index_name, coalesce(i.rdb$unique_flag, 0), coalesce(i.rdb$index_type, 0), "
        "coalesce(i.rdb$index_inactive, 0), s.rdb$field_name, rc.rdb$constraint_type from rdb$indices i "
        "left join rdb$index_segments s on s.rdb$index_name = i.rdb$index_name "
        "left join rdb$relation_constraints rc on rc.rdb$index_name = i.rdb$index_name "
        "where i.rdb$relation_name = " +
            sql_text(table) + " order by i.rdb$index_name, s.rdb$field_position");
    std::vector<Index> indexes;
    for (const Value& row : rows.items()) {
        const std::string name = text_of(row[1]);
        if (indexes.empty() || indexes.back().name != name) {
            indexes.push_back({.name = name,
                               .fields = {},
                               .constraint = row[6].is_nil() ? "" : text_of(row[6]),
                               .unique = number_of(row[2]) != 0,
                               .descending = number_of(row[3]) != 0,
                               .active = number_of(row[4]) == 0});
        }
        indexes.back().fields.push_back(row[5].is_nil() ? "(expression)" : text_of(row[5]));
    }
    return indexes;
}

std::vector<Trigger> triggers_of(zmFBConn& connection, const std::string& table) {
    const Value rows = exact_rows(
        connection,
        "select rdb$trigger_name, rdb$trigger_type, coalesce(rdb$trigger_inactive, 0) from rdb$triggers "
        "where coalesce(rdb$system_flag, 0) = 0 and rdb$relation_name = " +
            sql_text(table) + " order by rdb$trigger_type, rdb$trigger_sequence, rdb$trigger_name");
    std::vector<Trigger> triggers;
    for (const Value& row : rows.items()) {
        triggers.push_back({text_of(row[1]), moment_of(number_of(row[2])), number_of(row[3]) == 0});
    }
    return triggers;
}

std::vector<Generator> generators_of(zmFBConn& connection, const std::string& table) {
    const Value rows =
        exact_rows(connection, fmt::format("select rdb$generator_name from rdb$generators where "
                                           "rdb$generator_name in ({}, {}) order by 1 desc",
                                           sql_text("G_" + table + "_I"), sql_text("G_" + table + "_D")));
    std::vector<Generator> generators;
    for (const Value& row : rows.items()) {
        const std::string name = text_of(row[1]);
        const Value value =
            exact_rows(connection, fmt::format("select gen_id(\"{}\", 0) from rdb$database", name));
        generators.push_back({name, std::atoll(std::string(value[1][1].text()).c_str())});
    }
    return generators;
}

std::vector<std::string> views_on(zmFBConn& connection, const std::string& table) {
    const Value rows = exact_rows(
        connection, "select distinct rdb$view_name from rdb$view_relations where rdb$relation_name = " +
                        sql_text(table) + " order by 1");
    std::vector<std::string> views;
    for (const Value& row : rows.items()) views.push_back(text_of(row[1]));
    return views;
}

std::string joined(const std::vector<std::string>& names) {
    std::string all;
    for (const std::string& name : names) all += (all.empty() ? "" : ", ") + to_utf8(name);
    return all;
}

std::string views_in_words(const std::vector<std::string>& views) {
    return views.empty() ? "" : fmt::format(" and the views built on it ({})", joined(views));
}

}  // namespace zmfb::tool
