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

// Of the application.
bool has_rows_to_keep(const Table& table) {
    const bool is_kept = table.kind == TableKind::driver || table.kind == TableKind::foreign;
    return is_kept && !table.is_temporary;
}

ExportTable as_table(const Table& table) { return {table, table.name.text()}; }

bool is_pattern(const std::string& given) { return given.find_first_of("*?[") != std::string::npos; }

std::vector<ExportTable> fitting(zmFBConn& connection, const std::string& given) {
    const std::string pattern = typed_name(given).text();
    std::vector<ExportTable> tables;
    for (const Table& one : tables_of(connection)) {
        const bool is_meant = has_rows_to_keep(one) || one.kind == TableKind::view;
        if (is_meant && fnmatch(pattern.c_str(), one.name.text().c_str(), 0) == 0)
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
    const bool is_of_driver = table.kind == TableKind::driver;
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
        columns.push_back({Name(name), {precision.value_or(0), is_of_driver, is_logical}});
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
        return table.kind != TableKind::driver || !is_driver_column(column.name.bytes());
    });
    return columns;
}

}  // namespace

std::vector<ExportTable> all_tables(zmFBConn& connection) {
    std::vector<ExportTable> tables;
    for (const Table& one : tables_of(connection)) {
        if (has_rows_to_keep(one)) tables.push_back(as_table(one));
    }
    return tables;
}

std::vector<ExportTable> tables_meant_by(zmFBConn& connection, const std::string& given) {
    if (is_pattern(given)) return fitting(connection, given);
    const Table table = existing_table(connection, given);
    return {{table, table.name.is_plain() ? given : table.name.text()}};
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
