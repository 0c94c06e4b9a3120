#include "tool/import/rehearsal.h"

#include <fmt/format.h>

#include "tool/catalog.h"
#include "tool/drop.h"

namespace zmfb::tool {
namespace {

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

std::string rehearse(zmFBConn& connection, const ImportPlan& plan, const Rehearsed& rehearsed) try {
    const std::vector<std::string> drops = drops_of_leftovers(connection, Name(rehearsed.made));
    Transaction work(connection);
    if (!rehearsed.replaced.empty()) {
        work.execute("DROP TABLE " + rehearsed.replaced);  // who may not is told that first
        if (const auto use = use_by_others(connection, Name(rehearsed.replaced))) return use->message;
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
