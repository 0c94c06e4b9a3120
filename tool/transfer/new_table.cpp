#include "tool/transfer/new_table.h"

#include <fmt/format.h>

#include "tool/catalog.h"
#include "tool/drop.h"
#include "tool/transfer/turn.h"

namespace zmfb::tool {
namespace {

void drop_generators(Transaction& work, const std::string& table) {
    for (const char* end : {"_I", "_D"}) {
        const std::string name = "G_" + table + end;
        if (work.maybe_one<int>("select 1 from rdb$generators where rdb$generator_name = ?", name))
            work.execute("DROP GENERATOR " + name);
    }
}

bool is_unfinished(Transaction& work, const std::string& table) {
    return work
        .maybe_one<int>("select 1 from rdb$relations where rdb$relation_name = ? and rdb$description = ?",
                        table, unfinished_description)
        .has_value();
}

}  // namespace

void begin_table(zmFBConn& connection, const std::string& table, std::span<const DriverColumn> columns) {
    const Turn turn;
    drop_unfinished_table(connection, table);
    Transaction before(connection);
    drop_generators(before, table);
    before.commit();
    Transaction work(connection);
    for (const std::string& statement : statements_to_begin_table(table, columns, unfinished_description))
        work.execute(statement);
    work.commit();
}

void finish_table(Transaction& work, const std::string& table, std::uint64_t rows) {
    work.one<std::int64_t>(fmt::format("select gen_id(G_{}_I, cast(? as bigint)) from rdb$database", table),
                           rows);
    for (const std::string& statement : statements_to_finish_table(table)) work.execute(statement);
}

bool drop_unfinished_table(zmFBConn& connection, const std::string& table) {
    for (int attempt = 1;; ++attempt) {
        try {
            Transaction work(connection);
            if (!is_unfinished(work, table)) return false;
            work.execute("DROP TABLE " + table);
            work.commit();
            break;
        } catch (const SqlError& error) {
            if (!wait_while_in_use(error.message(), attempt)) throw;
        }
    }
    Transaction work(connection);
    drop_generators(work, table);
    work.commit();
    return true;
}

}  // namespace zmfb::tool
