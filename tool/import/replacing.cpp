#include "tool/import/replacing.h"

#include <fmt/format.h>

#include "tool/catalog.h"
#include "tool/import/new_table.h"

namespace zmfb::tool {
namespace {

constexpr std::string_view is_added = ", to be added";
constexpr char between = '\x1e';

// The columns of a table beside, but for the driver's own: "A,B".
std::string columns_in(Transaction& work, const std::string& beside, std::string_view before = "") {
    std::string names;
    for (const auto& [name] : work.query<std::string>(
             "select trim(rdb$field_name) from rdb$relation_fields where rdb$relation_name = ? and "
             "rdb$field_name not in ('RECNO', 'RDD_AREAID') order by rdb$field_position",
             beside)) {
        names += fmt::format("{}{}{}", names.empty() ? "" : ",", before, name);
    }
    return names;
}

}  // namespace

void describe_loaded(Transaction& work, const std::string& beside, const Destination& destination) {
    std::string description(loaded_description);
    if (destination.added) description += is_added;
    for (const std::string& statement : destination.again) description += between + statement;
    work.execute(fmt::format("COMMENT ON TABLE {} IS {}", beside, sql_text(description)));
}

Destination destination_of(zmFBConn& connection, const std::string& beside) {
    Transaction work(connection, Access::read_only);
    const auto whole = work.one<std::string>(
        "select rdb$description from rdb$relations where rdb$relation_name = ?", beside);
    const std::string_view description = std::string_view(whole).substr(loaded_description.size());
    Destination destination{.added = description.starts_with(is_added), .again = {}};
    for (std::size_t at = description.find(between); at != std::string_view::npos;) {
        const std::size_t end = description.find(between, at + 1);
        destination.again.emplace_back(description.substr(at + 1, end - at - 1));
        at = end;
    }
    return destination;
}

void make_room(zmFBConn& connection, const std::string& table, std::span<const DriverColumn> columns,
               const std::vector<Name>& views) {
    begin_table(connection, table, columns, [&](Transaction& work) {
        for (const Name& view : views) work.execute("DROP VIEW " + view.quoted());
        drop_parts(work, table);
    });
}

namespace {

std::string not_again(const std::string& statement, const SqlError& error) {
    return fmt::format("not made again: {}\n  {}", statement, error.message());
}

std::vector<std::string> moved_in(zmFBConn& connection, ImportHold& hold, const std::string& table,
                                  const std::vector<std::string>& again) {
    const std::string beside = table_beside(table);
    std::vector<std::string> refused;
    Transaction work(connection);
    const std::int64_t rows = work.execute(fmt::format(
        "INSERT INTO {0} ({1},RECNO) SELECT {1},RECNO FROM {2}", table, columns_in(work, beside), beside));
    finish_table(work, table, static_cast<std::uint64_t>(rows));
    for (const std::string& statement : again) {
        try {
            work.execute(statement);
        } catch (const SqlError& error) {
            refused.push_back(not_again(statement, error));
        }
    }
    hold.release();
    drop_parts(work, beside);
    work.commit();
    return refused;
}

}  // namespace

// An index that cannot be made is refused when all is committed.
std::vector<std::string> move_in(zmFBConn& connection, ImportHold& hold, const std::string& table,
                                 const std::vector<std::string>& again) {
    std::vector<std::string> refused;
    const auto move = [&](const std::vector<std::string>& statements) {
        with_patience([&] { refused = moved_in(connection, hold, table, statements); });
    };
    try {
        move(again);
    } catch (const SqlError& error) {
        if (again.empty()) throw;
        move({});
        for (const std::string& statement : again) refused.push_back(not_again(statement, error));
    }
    return refused;
}

// Record numbers are the table's own to give. Those that rows took which do not stay count as deleted, so
// that the table is not said to have them.
void add_rows(zmFBConn& connection, ImportHold& hold, const std::string& table) {
    const std::string beside = table_beside(table);
    Transaction work(connection);
    work.execute(fmt::format(
        "EXECUTE BLOCK AS DECLARE K BIGINT = 0; BEGIN FOR SELECT {0} FROM {1} ORDER BY RECNO AS CURSOR C DO "
        "BEGIN INSERT INTO {2} ({0}) VALUES ({3}); K = K + 1; END WHEN ANY DO BEGIN IF (SQLSTATE NOT "
        "STARTING "
        "WITH '22') THEN K = K + 1; K = GEN_ID(G_{2}_D, K); EXCEPTION; END END",
        columns_in(work, beside), beside, table, columns_in(work, beside, ":C.")));
    hold.release();
    drop_parts(work, beside);
    work.commit();
}

bool recount(zmFBConn& connection, const std::string& table) {
    Transaction work(connection);
    const bool others = work.one<bool>(
        "select count(*) > 0 from mon$transactions where mon$attachment_id <> current_connection and "
        "mon$read_only = 0");
    const auto surplus = work.one<std::int64_t>(
        fmt::format("select gen_id(G_{0}_I, 0) - gen_id(G_{0}_D, 0) - (select count(*) from {0}) from "
                    "rdb$database",
                    table));
    if (surplus != 0 && !others) {
        work.one<std::int64_t>(
            fmt::format("select gen_id(G_{}_D, cast(? as bigint)) from rdb$database", table), surplus);
    }
    return surplus == 0 || !others;
}

}  // namespace zmfb::tool
