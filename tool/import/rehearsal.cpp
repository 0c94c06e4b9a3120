#include "tool/import/rehearsal.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>

#include "host/text.h"
#include "tool/catalog.h"

namespace zmfb::tool {
namespace {

bool is_of_a_name(char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_' || c == '$'; }

bool names(const std::string& statement, const std::string& table) {
    const std::string text = " " + host::upper(statement).string() + " ";
    for (std::size_t at = text.find(table); at != std::string::npos; at = text.find(table, at + 1)) {
        if (!is_of_a_name(text[at - 1]) && !is_of_a_name(text[at + table.size()])) return true;
    }
    return false;
}

void prepare_adding(Transaction& work, const ImportPlan& plan, const std::string& table) {
    std::string columns, values;
    for (const PlannedColumn& column : plan.columns) {
        columns += (columns.empty() ? "" : ",") + column.column.name;
        values += values.empty() ? "?" : ",?";
    }
    work.prepare(fmt::format("INSERT INTO {} ({}) VALUES ({})", table, columns, values));
}

// What an import that was cut off, or a table that is gone, has left under the name.
std::vector<std::string> drops_of_leftovers(zmFBConn& connection, const Name& table) {
    std::vector<std::string> drops;
    if (is_there(connection, ObjectKind::relation, table)) drops.push_back("DROP TABLE " + table.bytes());
    for (const Name& generator : generator_names_of(connection, table))
        drops.push_back("DROP GENERATOR " + generator.bytes());
    return drops;
}

}  // namespace

bool is_in_use(Transaction& work, const std::string& table) {
    auto statements = work.rows(
        "select mon$sql_text from mon$statements where mon$attachment_id <> current_connection and "
        "mon$sql_text is not null");
    return std::ranges::any_of(statements,
                               [&](const Row& row) { return names(row[0].text().value_or(""), table); });
}

std::string rehearse(zmFBConn& connection, const ImportPlan& plan, const Rehearsed& rehearsed) try {
    const std::vector<std::string> drops = drops_of_leftovers(connection, Name(rehearsed.made));
    Transaction work(connection);
    if (!rehearsed.replaced.empty()) {
        if (is_in_use(work, rehearsed.replaced))
            return fmt::format("the table {} is in use by another program", rehearsed.replaced);
        work.execute("DROP TABLE " + rehearsed.replaced);
    }
    if (!rehearsed.added_to.empty()) prepare_adding(work, plan, rehearsed.added_to);
    for (const std::string& drop : drops) work.execute(drop);
    std::vector<DriverColumn> columns;
    for (const PlannedColumn& column : plan.columns) columns.push_back(column.column);
    for (const std::string& statement :
         statements_to_begin_table(rehearsed.made, columns, unfinished_description))
        work.execute(statement);
    return "";
} catch (const SqlError& error) {
    return error.message();
}

}  // namespace zmfb::tool
