#include "tool/export/source.h"

#include <fmt/format.h>
#include <fnmatch.h>

#include <algorithm>
#include <optional>

#include "tool/catalog.h"
#include "tool/reading.h"
#include "tool/session.h"

namespace zmfb::tool {
namespace {

constexpr std::string_view record_number = "RECNO";

struct Relation {
    Name name;
    bool is_view = false;
    std::string description;

    [[nodiscard]] bool is_of_driver() const { return description == "Created by ZMRDDFIRE"; }
    // Of the application.
    [[nodiscard]] bool has_rows() const {
        return description != unfinished_description && !name.bytes().starts_with("RDDSYS_");
    }
};

// Without temporary tables, whose rows nobody else sees.
std::vector<Relation> relations_of(zmFBConn& connection) {
    std::vector<Relation> all;
    for (auto& [name, view, description] : rows_of<std::string, int, std::optional<std::string>>(
             connection,
             "select r.rdb$relation_name, iif(r.rdb$view_blr is null, 0, 1), r.rdb$description "
             "from rdb$relations r where coalesce(r.rdb$system_flag, 0) = 0 and "
             "coalesce(r.rdb$relation_type, 0) not in (4, 5) order by 1")) {
        all.push_back({Name(name), view != 0, description.value_or("")});
    }
    return all;
}

ExportTable as_table(const Relation& relation) {
    return {relation.name, relation.name.text(), relation.is_of_driver()};
}

bool is_pattern(const std::string& given) { return given.find_first_of("*?[") != std::string::npos; }

std::vector<ExportTable> fitting(const std::vector<Relation>& relations, const std::string& given) {
    const std::string pattern = typed_name(given).text();
    std::vector<ExportTable> tables;
    for (const Relation& one : relations) {
        if (one.has_rows() && fnmatch(pattern.c_str(), one.name.text().c_str(), 0) == 0)
            tables.push_back(as_table(one));
    }
    if (tables.empty()) throw Failure{Exit::failed, fmt::format("no table fits {}", given)};
    return tables;
}

struct TableColumn {
    Name name;
    Declared declared;
};

std::vector<TableColumn> columns_of(zmFBConn& connection, const ExportTable& table) {
    std::vector<TableColumn> columns;
    // Only a column of one letter can be a logical: so few descriptions are read.
    for (auto& [name, precision, description] :
         rows_of<std::string, std::optional<int>, std::optional<std::string>>(
             connection,
             "select rf.rdb$field_name, f.rdb$field_precision, "
             "iif(f.rdb$field_type = 14 and f.rdb$field_length = 1, rf.rdb$description, null) "
             "from rdb$relation_fields rf join rdb$fields f on f.rdb$field_name = rf.rdb$field_source "
             "where rf.rdb$relation_name = ? order by rf.rdb$field_position",
             table.name.bytes())) {
        const bool is_logical = description && description->find("LOGICAL") != std::string::npos;
        columns.push_back({Name(name), {precision.value_or(0), table.of_driver, is_logical}});
    }
    return columns;
}

std::vector<TableColumn> chosen(const std::vector<TableColumn>& all, const ExportTable& table,
                                const std::vector<std::string>& wanted) {
    std::vector<TableColumn> columns;
    for (const std::string& typed : wanted) {
        const auto found = std::ranges::find(all, typed_name(typed), &TableColumn::name);
        if (found == all.end())
            throw Failure{Exit::failed, fmt::format("{} has no column {}", table.name.shown(), typed)};
        columns.push_back(*found);
    }
    if (!wanted.empty()) return columns;
    std::ranges::copy_if(all, std::back_inserter(columns), [&](const TableColumn& column) {
        return !table.of_driver || !is_driver_column(column.name.bytes());
    });
    return columns;
}

}  // namespace

std::vector<ExportTable> all_tables(zmFBConn& connection) {
    std::vector<ExportTable> tables;
    for (const Relation& one : relations_of(connection)) {
        if (one.has_rows() && !one.is_view) tables.push_back(as_table(one));
    }
    return tables;
}

std::vector<ExportTable> tables_meant_by(zmFBConn& connection, const std::string& given) {
    const std::vector<Relation> relations = relations_of(connection);
    if (is_pattern(given)) return fitting(relations, given);
    const Name name = existing_name(connection, given);
    const auto found = std::ranges::find(relations, name, &Relation::name);
    const bool is_of_driver = found != relations.end() && found->is_of_driver();
    return {{name, name.is_plain() ? given : name.text(), is_of_driver}};
}

ExportSource export_source(zmFBConn& connection, const ExportTable& table, const WantedRows& wanted) {
    const std::vector<TableColumn> all = columns_of(connection, table);
    const std::vector<TableColumn> columns = chosen(all, table, wanted.columns);
    if (columns.empty())
        throw Failure{Exit::failed, fmt::format("{} has no columns of its own", table.name.shown())};
    ExportSource source{
        .shown = table.name.shown(), .file_name = table.file_name, .query = {}, .declared = {}};
    std::string names;
    for (const TableColumn& column : columns) {
        names += fmt::format("{}{}", names.empty() ? "" : ", ", column.name.quoted());
        source.declared.push_back(column.declared);
    }
    // What a person wrote may end with a comment.
    source.query = fmt::format("select {} from {}", names, table.name.quoted());
    if (!wanted.where.empty()) source.query += fmt::format(" where ({}\n)", wanted.where);
    const bool has_numbers = std::ranges::find(all, Name(record_number), &TableColumn::name) != all.end();
    if (!wanted.order.empty()) {
        source.query += fmt::format(" order by {}", wanted.order);
    } else if (has_numbers) {
        source.query += fmt::format(" order by {}", Name(record_number).quoted());
    }
    return source;
}

}  // namespace zmfb::tool
