#include "tool/locks.h"

#include <fmt/format.h>

#include "host/number.h"
#include "host/text.h"
#include "tool/encoding.h"
#include "tool/session.h"
#include "zmfbconn/database.h"
#include "zmfbconn/methods.h"

namespace zmfb::tool {
namespace {

std::string text_of(const host::Value& value) { return to_utf8(host::trim(value).string()); }

// Nothing counts as 0, and so does NULL.
std::int64_t number_of(const host::Value& value) { return host::val(value).integer(); }

// The rows of a question to the system tables; the first one is the header.
host::Value system_rows(zmFBConn& connection, std::string_view query) {
    host::Value rows = connection.call("executequery", query);
    if (rows.size() == 0) throw Failure{Exit::failed, "cannot read the system tables", last_engine_message()};
    return rows;
}

Owner owner_of(const host::Value& area_id, std::string_view this_host) {
    const Holder holder(text_of(area_id));
    return {holder, is_alive(holder, this_host)};
}

// Adds what a question finds: table, area, number of the record, 0 for the whole table.
void add_locks(zmFBConn& connection, std::string_view query, std::vector<Lock>& locks) {
    const host::Value rows = system_rows(connection, query);
    const std::string host = connection(m::gethostname);
    for (const host::Value& row : rows.items().subspan(1)) {
        const std::int64_t record = number_of(row[3]);
        locks.push_back(
            {text_of(row[1]), record == 0 ? std::nullopt : std::optional(record), owner_of(row[2], host)});
    }
}

}  // namespace

std::vector<Lock> locks_of(zmFBConn& connection) {
    std::vector<Lock> locks;
    add_locks(connection, "SELECT FLK_TABLE, FLK_AREAID, 0 FROM RDDSYS_FLK ORDER BY FLK_TABLE", locks);
    add_locks(connection,
              "SELECT RLK_TABLE, RLK_AREAID, RLK_RECNO FROM RDDSYS_RLK ORDER BY RLK_TABLE, RLK_RECNO", locks);
    return locks;
}

std::vector<Lock> locks_of(zmFBConn& connection, const std::string& table,
                           std::span<const std::int64_t> records) {
    std::vector<Lock> locks;
    add_locks(connection,
              fmt::format("SELECT FLK_TABLE, FLK_AREAID, CAST(0 AS NUMERIC(18, 0)) FROM RDDSYS_FLK "
                          "WHERE FLK_TABLE = '{0}' UNION ALL SELECT RLK_TABLE, RLK_AREAID, RLK_RECNO "
                          "FROM RDDSYS_RLK WHERE RLK_TABLE = '{0}' AND RLK_RECNO IN (0{1}{2})",
                          table, records.empty() ? "" : ", ", fmt::join(records, ", ")),
              locks);
    return locks;
}

std::vector<Registration> registrations_of(zmFBConn& connection) {
    const host::Value rows =
        system_rows(connection,
                    "SELECT OPN_TABLE, OPN_AREAID, OPN_SHARED, OPN_APPRECNO FROM RDDSYS_OPN "
                    "ORDER BY OPN_TABLE, OPN_AREAID");
    const std::string host = connection(m::gethostname);
    std::vector<Registration> registrations;
    for (const host::Value& row : rows.items().subspan(1)) {
        registrations.push_back(
            {text_of(row[1]), text_of(row[3]) != "F", number_of(row[4]), owner_of(row[2], host)});
    }
    return registrations;
}

std::string when_dead(zmFBConn& connection, const Holder& holder, std::string_view command) {
    const std::string host = connection(m::gethostname);
    if (is_alive(holder, host) != Alive::no) return "";
    return fmt::format("; that process is dead, and \"zmfb {}\" frees it", command);
}

std::vector<TextTable::Column> with_owner(std::vector<TextTable::Column> columns) {
    columns.insert(columns.end(), {{"area"}, {"process", true}, {"host"}, {"state"}});
    return columns;
}

std::vector<std::string> with_owner(std::vector<std::string> cells, const Owner& owner) {
    cells.insert(cells.end(), {owner.holder.area, owner.holder.process, owner.holder.host,
                               std::string(alive_name(owner.alive))});
    return cells;
}

}  // namespace zmfb::tool
