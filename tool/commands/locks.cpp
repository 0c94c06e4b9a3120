#include <fmt/format.h>

#include <memory>

#include "host/text.h"
#include "tool/area_id.h"
#include "tool/catalog.h"
#include "tool/commands.h"
#include "tool/confirm.h"
#include "tool/encoding.h"
#include "tool/json.h"
#include "tool/say.h"
#include "tool/text_table.h"
#include "zmfbconn/database.h"
#include "zmfbconn/methods.h"

namespace zmfb::tool {
namespace {

std::string trimmed(const host::Value& value) { return host::trim(value).string(); }

// The rows of a question to the system tables, without the header. Throws Failure.
host::Value system_rows(zmFBConn& connection, std::string_view query) {
    const host::Value result = connection.call("executequery", query);
    if (result.size() == 0)
        throw Failure{Exit::failed, "cannot read the system tables", last_engine_message()};
    host::Value rows = host::Value::array_of_size(0);
    for (const host::Value& row : result.items().subspan(1)) rows.push(row);
    return rows;
}

// Who holds something, as columns of a table and as members of a JSON object.
struct Holder {
    AreaId id;
    Alive alive;

    Holder(zmFBConn& connection, const std::string& text)
        : id(split_area_id(text)), alive(is_alive(id, text, connection(m::gethostname))) {}

    [[nodiscard]] std::vector<std::string> cells() const {
        return {to_utf8(id.area), id.process ? std::to_string(*id.process) : "", to_utf8(id.host),
                std::string(alive_name(alive))};
    }
    void add_to(Json& object) const {
        object["holder"] = {{"table", to_utf8(id.table)},
                            {"area", to_utf8(id.area)},
                            {"process", id.process ? Json(*id.process) : Json(nullptr)},
                            {"host", to_utf8(id.host)},
                            {"state", alive_name(alive)}};
    }
};

const std::vector<TextTable::Column> holder_columns{{"area"}, {"process", true}, {"host"}, {"state"}};

// Rows on their way to the terminal, in both shapes.
class Listing {
  public:
    Listing(const Session& session, std::vector<TextTable::Column> columns)
        : json_(session.options().json), table_(with_holder(std::move(columns))) {}

    void add(std::vector<std::string> cells, Json object, const Holder& holder) {
        for (std::string& cell : holder.cells()) cells.push_back(std::move(cell));
        table_.add(std::move(cells));
        holder.add_to(object);
        list_.push_back(std::move(object));
    }
    void print(std::string_view when_empty) const {
        if (json_) {
            fmt::print("{}\n", json_lines(list_));
        } else if (list_.empty()) {
            fmt::print("{}\n", when_empty);
        } else {
            fmt::print("{}", table_.text());
        }
    }

  private:
    static std::vector<TextTable::Column> with_holder(std::vector<TextTable::Column> columns) {
        columns.insert(columns.end(), holder_columns.begin(), holder_columns.end());
        return columns;
    }

    bool json_;
    TextTable table_;
    Json list_ = Json::array();
};

Json whole_number(const std::string& text) { return static_cast<std::int64_t>(std::stod(text)); }

// "NULL" and scaled texts such as 12.0 become whole numbers, nothing becomes 0.
std::int64_t record_number(const host::Value& value) {
    const std::string text = trimmed(value);
    return text == "NULL" ? 0 : whole_number(text).get<std::int64_t>();
}

Exit locks_command(Session& session) {
    zmFBConn& connection = session.connection();
    Listing listing(session, {{"table"}, {"lock"}, {"record", true}});
    const host::Value tables =
        system_rows(connection, "SELECT FLK_TABLE, FLK_AREAID FROM RDDSYS_FLK ORDER BY FLK_TABLE");
    for (const host::Value& row : tables.items()) {
        const std::string table = to_utf8(trimmed(row[1]));
        listing.add({table, "table", ""}, {{"table", table}, {"lock", "table"}},
                    Holder(connection, trimmed(row[2])));
    }
    const host::Value records = system_rows(
        connection, "SELECT RLK_TABLE, RLK_AREAID, RLK_RECNO FROM RDDSYS_RLK ORDER BY RLK_TABLE, RLK_RECNO");
    for (const host::Value& row : records.items()) {
        const std::string table = to_utf8(trimmed(row[1]));
        const std::int64_t record = record_number(row[3]);
        listing.add({table, "record", std::to_string(record)},
                    {{"table", table}, {"lock", "record"}, {"record", record}},
                    Holder(connection, trimmed(row[2])));
    }
    listing.print("no locks");
    return Exit::ok;
}

Exit opens_command(Session& session) {
    zmFBConn& connection = session.connection();
    Listing listing(session, {{"table"}, {"mode"}, {"last append", true}});
    const host::Value rows =
        system_rows(connection,
                    "SELECT OPN_TABLE, OPN_AREAID, OPN_SHARED, OPN_APPRECNO FROM RDDSYS_OPN "
                    "ORDER BY OPN_TABLE, OPN_AREAID");
    for (const host::Value& row : rows.items()) {
        const std::string table = to_utf8(trimmed(row[1]));
        const std::string mode = trimmed(row[3]) == "F" ? "exclusive" : "shared";
        const std::int64_t last = record_number(row[4]);
        listing.add({table, mode, last == 0 ? "" : std::to_string(last)},
                    {{"table", table}, {"mode", mode}, {"last_append", last}},
                    Holder(connection, trimmed(row[2])));
    }
    listing.print("no tables are open");
    return Exit::ok;
}

Exit unlock_command(Session& session, const std::string& table, bool yes) {
    zmFBConn& connection = session.connection();
    const Name name = existing_name(connection, table);
    if (!name.is_plain()) {
        throw Failure{Exit::failed, fmt::format("{} has no locks: {}", name.shown(), plain_names_only)};
    }
    if (!yes && !confirm(fmt::format("Remove every lock on {}, whoever holds it?", table))) {
        throw Failure{Exit::failed, "nothing was unlocked"};
    }
    if (!connection(m::releaselocks, name.bytes())) {
        throw Failure{Exit::failed, fmt::format("the locks of {} could not all be removed", table),
                      last_engine_message()};
    }
    if (session.options().json) {
        fmt::print("{}\n", json_line(Json{{"unlocked", table}}));
    } else {
        fmt::print("{} has no locks now\n", table);
    }
    return Exit::ok;
}

Exit clear_command(Session& session, bool yes) {
    zmFBConn& connection = session.connection();
    if (!yes) {
        say("This forgets all open tables, table locks and record locks of everybody, at once.\n"
            "It is DANGEROUS while anyone works on the database: two programs may then change one "
            "record at the\n"
            "same time. Do it only after a crash, when you are the only one who uses the database.\n");
        if (!confirm("Clear the system tables?")) throw Failure{Exit::failed, "nothing was cleared"};
    }
    // The method answers for the registrations alone; a table of locks that it could not clear, it raises.
    const std::size_t raised_before = session.raised().size();
    if (!connection(m::clearsystemtables) || session.raised().size() != raised_before) {
        throw Failure{Exit::failed, "the system tables could not be cleared", last_engine_message()};
    }
    fmt::print("{}\n",
               session.options().json ? json_line(Json{{"cleared", true}}) : "the system tables are clear");
    return Exit::ok;
}

}  // namespace

void add_locks(CommandLine& line) {
    line.add(line.app(), "locks", "List record and table locks with their holders",
             "zmfb --db shop.fdb locks", locks_command);
    line.add(line.app(), "opens", "List which work areas have which tables open", "zmfb --db shop.fdb opens",
             opens_command);
    struct Given {
        std::string table;
        bool yes = false;
    };
    const auto given = std::make_shared<Given>();
    const Subcommand unlock = line.add(line.app(), "unlock", "Remove every lock on a table, whoever holds it",
                                       "zmfb --db shop.fdb unlock customers", [given](Session& session) {
                                           return unlock_command(session, given->table, given->yes);
                                       });
    unlock.option("TABLE", given->table, "Table").required();
    unlock.yes(given->yes);
    line.add(line.app(), "clear",
             "Forget all registrations and locks of everybody (after a crash; dangerous)",
             "zmfb --db shop.fdb clear",
             [given](Session& session) { return clear_command(session, given->yes); })
        .yes(given->yes);
}

}  // namespace zmfb::tool
