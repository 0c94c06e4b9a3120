#include "tool/import/replacing.h"

#include <fmt/format.h>

#include "tool/catalog.h"
#include "tool/column_type.h"
#include "tool/drop.h"
#include "tool/import/new_table.h"
#include "tool/interrupt.h"
#include "tool/reading.h"
#include "tool/say.h"
#include "tool/session.h"

namespace zmfb::tool {
namespace {

constexpr std::string_view is_added = ", to be added";
constexpr char between = '\x1e';

std::string description_of(Transaction& work, const std::string& table) {
    return work.one<std::string>("select rdb$description from rdb$relations where rdb$relation_name = ?",
                                 table);
}

void describe(Transaction& work, const std::string& table, const std::string& description) {
    work.execute(fmt::format("COMMENT ON TABLE {} IS {}", table, sql_text(description)));
}

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
    describe(work, beside, description);
}

Destination destination_of(zmFBConn& connection, const std::string& beside) {
    Transaction work(connection, Access::read_only);
    const std::string whole = description_of(work, beside);
    const std::string_view description = std::string_view(whole).substr(loaded_description.size());
    Destination destination{.added = description.starts_with(is_added), .again = {}};
    for (std::size_t at = description.find(between); at != std::string_view::npos;) {
        const std::size_t end = description.find(between, at + 1);
        destination.again.emplace_back(description.substr(at + 1, end - at - 1));
        at = end;
    }
    return destination;
}

namespace {

// Returns the description that the table has had.
std::string give_up(zmFBConn& connection, const std::string& table) {
    std::string before;
    with_patience([&] {
        Transaction work(connection);
        before = description_of(work, table);
        describe(work, table, std::string(unfinished_description));
        work.commit();
    });
    return before;
}

void drop_views(Transaction& work, const std::vector<Name>& views) {
    for (const Name& view : views) work.execute("DROP VIEW " + view.quoted());
}

// What speaks against it shows before anything is changed.
void rehearse_drop(zmFBConn& connection, const std::string& table, const std::vector<Name>& views) {
    require_unused_by_others(connection, Name(table));
    Transaction work(connection);
    drop_views(work, views);
    drop_parts(work, table);
}

void drop_views_and_keys(zmFBConn& connection, const std::string& table, const std::vector<Name>& views) {
    with_patience([&] {
        Transaction work(connection);
        drop_views(work, views);
        drop_keys(work, table);
        work.commit();
    });
}

// Of a table that is still the one that was given up. One that cannot be taken again stays so, and the rows
// beside it come in with the next import.
void take_again(zmFBConn& connection, const std::string& table, const std::string& description,
                const std::vector<std::string>& dropped) try {
    if (interrupted()) begin_undoing();
    with_patience([&] {
        Transaction work(connection);
        if (description_of(work, table) != unfinished_description) return;
        for (const std::string& statement : dropped) {
            try {
                work.execute(statement);
            } catch (const SqlError&) {
                // One of a trigger or a right, which have not gone.
            }
        }
        describe(work, table, description);
        work.commit();
    });
} catch (const SqlError&) {
}

}  // namespace

void make_room(zmFBConn& connection, const std::string& table, std::span<const DriverColumn> columns,
               const std::vector<Name>& views, const std::vector<std::string>& again) {
    rehearse_drop(connection, table, views);
    const std::string before = give_up(connection, table);
    std::vector<std::string> dropped;
    try {
        drop_views_and_keys(connection, table, views);
        dropped = {"ALTER TABLE " + table + " ADD PRIMARY KEY (RECNO)",
                   statements_to_finish_table(table).front()};
        dropped.insert(dropped.end(), again.begin(), again.end());
        std::string mark;
        begin_table(connection, table, columns, mark);
    } catch (...) {
        if (!before.starts_with(unfinished_description)) take_again(connection, table, before, dropped);
        throw;
    }
}

std::vector<DriverColumn> made_columns_of(zmFBConn& connection, const std::string& beside) {
    constexpr int octets = 1;
    std::vector<DriverColumn> columns;
    for (const auto& [name, code, sub_type, bytes, scale, precision, characters, set, default_value, not_null,
                      description] :
         rows_of<std::string, int, int, int, int, int, int, int, std::string, int, std::string>(
             connection,
             "select trim(rf.rdb$field_name), f.rdb$field_type, coalesce(f.rdb$field_sub_type, 0), "
             "coalesce(f.rdb$field_length, 0), coalesce(f.rdb$field_scale, 0), "
             "coalesce(f.rdb$field_precision, "
             "0), coalesce(f.rdb$character_length, 0), coalesce(f.rdb$character_set_id, 0), "
             "coalesce(rf.rdb$default_source, ''), coalesce(rf.rdb$null_flag, 0), "
             "coalesce(rf.rdb$description, '') from rdb$relation_fields rf join rdb$fields f on "
             "f.rdb$field_name = rf.rdb$field_source where rf.rdb$relation_name = ? and rf.rdb$field_name "
             "not "
             "in ('RECNO', 'RDD_AREAID') order by rf.rdb$field_position",
             beside)) {
        std::string definition = type_name({.code = code,
                                            .sub_type = sub_type,
                                            .bytes = bytes,
                                            .scale = scale,
                                            .precision = precision,
                                            .characters = characters});
        if (characters != 0 && set == octets) definition += " CHARACTER SET OCTETS";
        if (!default_value.empty()) definition += " " + default_value;
        if (not_null != 0) definition += " NOT NULL";
        columns.push_back({name, definition, description});
    }
    return columns;
}

namespace {

std::string not_again(const std::string& statement, const SqlError& error) {
    return fmt::format("not made again: {}\n  {}", statement, error.message());
}

std::vector<std::string> moved_in(zmFBConn& connection, const std::string& table,
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
    describe(work, beside, std::string(unfinished_description));
    work.commit();
    return refused;
}

// Its rows are in, and it calls itself unfinished.
void drop_emptied(zmFBConn& connection, ImportHold& hold, const std::string& beside) try {
    hold.release();
    drop_unfinished_table(connection, beside);
} catch (const std::exception&) {
    say("note: the table {} could not be dropped; the next import of that name does it\n", beside);
}

}  // namespace

// An index that cannot be made is refused when all is committed.
std::vector<std::string> move_in(zmFBConn& connection, ImportHold& hold, const std::string& table,
                                 const std::vector<std::string>& again) {
    std::vector<std::string> refused;
    const auto move = [&](const std::vector<std::string>& statements) {
        with_patience([&] { refused = moved_in(connection, table, statements); });
    };
    try {
        move(again);
    } catch (const SqlError& error) {
        if (again.empty()) throw;
        move({});
        for (const std::string& statement : again) refused.push_back(not_again(statement, error));
    }
    drop_emptied(connection, hold, table_beside(table));
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
    describe(work, beside, std::string(unfinished_description));
    work.commit();
    drop_emptied(connection, hold, beside);
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
