#include "tool/import/new_table.h"

#include <fmt/format.h>

#include <set>

#include "tool/catalog.h"
#include "tool/drop.h"
#include "tool/import/turn.h"
#include "tool/name.h"
#include "tool/session.h"

namespace zmfb::tool {
namespace {

// Those of the tables that call themselves unfinished.
std::set<std::string> unfinished_of(Transaction& work, const std::string& table, const std::string& other) {
    std::set<std::string> found;
    for (const auto& [name] : work.query<std::string>(
             "select trim(rdb$relation_name) from rdb$relations where rdb$relation_name in (?, ?) and "
             "rdb$description starting with cast(? as varchar(99))",
             table, other, unfinished_description))
        found.insert(name);
    return found;
}

void drop_generators(Transaction& work, const std::string& table) {
    std::vector<std::string> names;
    for (const auto& [name] : work.query<std::string>(
             "select trim(rdb$generator_name) from rdb$generators where rdb$generator_name in (?, ?)",
             "G_" + table + "_I", "G_" + table + "_D"))
        names.push_back(name);
    for (const std::string& name : names) work.execute("DROP GENERATOR " + name);
}

std::string keyless_beside(const std::string& table) { return "Z$$" + table; }

}  // namespace

void drop_keys(Transaction& work, const std::string& table) {
    std::vector<std::string> drops;
    for (const auto& [index, constraint] : work.query<std::string, std::optional<std::string>>(
             "select i.rdb$index_name, c.rdb$constraint_name from rdb$indices i left join "
             "rdb$relation_constraints c on c.rdb$index_name = i.rdb$index_name where i.rdb$relation_name = "
             "? "
             "order by iif(c.rdb$constraint_type = 'FOREIGN KEY', 0, 1)",
             table)) {
        drops.push_back(
            constraint ? fmt::format("ALTER TABLE {} DROP CONSTRAINT {}", table, Name(*constraint).quoted())
                       : "DROP INDEX " + Name(index).quoted());
    }
    for (const std::string& drop : drops) work.execute(drop);
}

void take_number_away(zmFBConn& connection, const std::string& keyless) {
    drop_unfinished_table(connection, keyless);
    with_patience([&] {
        Transaction work(connection);
        work.execute(fmt::format("CREATE TABLE {} (A INTEGER)", keyless));
        work.execute(fmt::format("COMMENT ON TABLE {} IS '{}'", keyless, unfinished_description));
        work.commit();
    });
    drop_unfinished_table(connection, keyless);
}

std::string sql_text(std::string text) {
    for (std::size_t at = 0; (at = text.find('\'', at)) != std::string::npos; at += 2)
        text.insert(at, 1, '\'');
    return "'" + text + "'";
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

// Descriptions of columns go to the server many at a time.
void execute_all(Transaction& work, const std::vector<std::string>& statements) {
    std::string descriptions;
    const auto describe = [&] {
        if (!descriptions.empty()) work.execute("EXECUTE BLOCK AS BEGIN " + descriptions + "END");
        descriptions.clear();
    };
    for (const std::string& statement : statements) {
        constexpr std::size_t enough = 32000;
        if (descriptions.size() > enough) describe();
        if (statement.starts_with("COMMENT ON COLUMN ")) {
            descriptions += fmt::format("EXECUTE STATEMENT {}; ", sql_text(statement));
        } else {
            describe();
            work.execute(statement);
        }
    }
    describe();
}

bool is_unfinished_there(zmFBConn& connection, const std::string& table) {
    Transaction work(connection, Access::read_only);
    return !unfinished_of(work, table, table).empty();
}

bool has_mark(Transaction& work, const std::string& table, const std::string& mark) {
    return work
        .maybe_one<int>("select 1 from rdb$relations where rdb$relation_name = ? and rdb$description = ?",
                        table, mark)
        .has_value();
}

[[noreturn]] void refuse_another(zmFBConn& connection, const std::string& table) {
    throw Failure{Exit::failed, another_import(table, who_fills(connection, table))};
}

}  // namespace

NewTable begin_table(zmFBConn& connection, const std::string& table, std::span<const DriverColumn> columns,
                     std::string& mark) {
    const Turn turn;
    const std::string keyless = keyless_beside(table);
    make_table(connection, table, [&] {
        std::optional<Transaction> work(std::in_place, connection);
        std::set<std::string> unfinished = unfinished_of(*work, table, keyless);
        if (!unfinished.empty()) {
            for (const std::string& one : unfinished) drop_keys(*work, one);
            work->commit();
            work.emplace(connection);
            unfinished = unfinished_of(*work, table, keyless);
        }
        mark = own_description(*work);
        if (unfinished.contains(keyless)) drop_parts(*work, keyless);
        if (unfinished.contains(table)) work->execute("DROP TABLE " + table);
        drop_generators(*work, table);
        execute_all(*work, statements_to_begin_table(table, columns, mark));
        work->commit();
    });
    // Another import can have dropped it before it was held.
    try {
        ImportHold hold(connection, table);
        Transaction work(connection);
        if (has_mark(work, table, mark)) return {std::move(hold), std::move(work)};
    } catch (const SqlError& error) {
        constexpr std::string_view table_unknown = "42S02";
        if (error.sqlstate() != table_unknown) throw;
    }
    refuse_another(connection, table);
}

bool is_marked(zmFBConn& connection, const std::string& table, const std::string& mark) {
    Transaction work(connection, Access::read_only);
    return has_mark(work, table, mark);
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

void drop_table(zmFBConn& connection, const std::string& table) {
    with_patience([&] {
        Transaction work(connection);
        drop_keys(work, table);
        work.commit();
    });
    with_patience([&] {
        Transaction work(connection);
        drop_parts(work, table);
        work.commit();
    });
}

bool drop_unfinished_table(zmFBConn& connection, const std::string& table) {
    if (!is_unfinished_there(connection, table)) return false;
    drop_table(connection, table);
    return true;
}

}  // namespace zmfb::tool
