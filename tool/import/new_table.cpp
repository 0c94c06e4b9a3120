#include "tool/import/new_table.h"

#include <fmt/format.h>

#include "tool/catalog.h"
#include "tool/drop.h"
#include "tool/import/turn.h"
#include "tool/session.h"

namespace zmfb::tool {
namespace {

bool is_unfinished(Transaction& work, const std::string& table) {
    return work
        .maybe_one<int>(
            "select 1 from rdb$relations where rdb$relation_name = ? and rdb$description starting with "
            "cast(? as varchar(99))",
            table, unfinished_description)
        .has_value();
}

void drop_generators(Transaction& work, const std::string& table) {
    for (const char* end : {"_I", "_D"}) {
        const std::string name = "G_" + table + end;
        if (work.maybe_one<int>("select 1 from rdb$generators where rdb$generator_name = ?", name))
            work.execute("DROP GENERATOR " + name);
    }
}

std::string keyless_beside(const std::string& table) { return "Z$$" + table; }

}  // namespace

void take_number_away(zmFBConn& connection, const std::string& keyless) {
    with_patience([&] {
        Transaction work(connection);
        work.execute(fmt::format("CREATE TABLE {} (A INTEGER)", keyless));
        work.execute(fmt::format("COMMENT ON TABLE {} IS '{}'", keyless, unfinished_description));
        work.commit();
    });
    drop_unfinished_table(connection, keyless);
}

void with_patience(const std::function<void()>& step) {
    for (int attempt = 1;; ++attempt) {
        try {
            return step();
        } catch (const SqlError& error) {
            if (!wait_for_others(error.message(), attempt)) throw;
        }
    }
}

namespace {

// Of a table that is made by its transaction, and by no other.
std::string own_description(Transaction& work) {
    return fmt::format("{} {}", unfinished_description,
                       work.one<std::int64_t>("select current_transaction from rdb$database"));
}

// Again with the next number when the one of the table is stuck.
void make_table(zmFBConn& connection, const std::string& table, const std::function<void()>& make) {
    constexpr int numbers = 3;
    for (int number = 1;; ++number) {
        try {
            return with_patience(make);
        } catch (const SqlError& error) {
            const bool is_stuck =
                error.message().find("cannot create index RDB$PRIMARY") != std::string::npos;
            if (!is_stuck || number == numbers) throw;
        }
        take_number_away(connection, keyless_beside(table));
    }
}

[[noreturn]] void refuse_another(zmFBConn& connection, const std::string& table) {
    throw Failure{Exit::failed, another_import(table, who_fills(connection, table))};
}

}  // namespace

ImportHold begin_table(zmFBConn& connection, const std::string& table, std::span<const DriverColumn> columns,
                       const std::function<void(Transaction&)>& drop) {
    const Turn turn;
    std::string description;
    drop_unfinished_table(connection, keyless_beside(table));
    make_table(connection, table, [&] {
        Transaction work(connection);
        description = own_description(work);
        if (drop) drop(work);
        if (is_unfinished(work, table)) work.execute("DROP TABLE " + table);
        drop_generators(work, table);
        for (const std::string& statement : statements_to_begin_table(table, columns, description))
            work.execute(statement);
        work.commit();
    });
    // Another import can have dropped it before it was held.
    try {
        ImportHold hold(connection, table);
        Transaction work(connection, Access::read_only);
        const bool is_own =
            work.maybe_one<int>(
                    "select 1 from rdb$relations where rdb$relation_name = ? and rdb$description = ?", table,
                    description)
                .has_value();
        if (is_own) return hold;
    } catch (const SqlError& error) {
        constexpr std::string_view table_unknown = "42S02";
        if (error.sqlstate() != table_unknown) throw;
    }
    refuse_another(connection, table);
}

void finish_table(Transaction& work, const std::string& table, std::uint64_t rows) {
    work.one<std::int64_t>(
        fmt::format("select gen_id(G_{0}_I, cast(? as bigint) - gen_id(G_{0}_I, 0)) from rdb$database",
                    table),
        rows);
    for (const std::string& statement : statements_to_finish_table(table)) work.execute(statement);
}

void drop_parts(Transaction& work, const std::string& table) {
    work.execute("DROP TABLE " + table);
    drop_generators(work, table);
}

bool drop_unfinished_table(zmFBConn& connection, const std::string& table) {
    bool was_there = false;
    with_patience([&] {
        Transaction work(connection);
        was_there = is_unfinished(work, table);
        if (!was_there) return;
        drop_parts(work, table);
        work.commit();
    });
    return was_there;
}

}  // namespace zmfb::tool
