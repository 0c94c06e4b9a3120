#include "tool/in_the_way.h"

#include <fmt/format.h>

#include <charconv>
#include <cstdint>
#include <optional>

#include "tool/encoding.h"
#include "tool/interrupt.h"
#include "zmfbconn/transaction.h"

namespace zmfb::tool {
namespace {

// What the engine tells of a conflict, also of a deadlock.
std::optional<std::int64_t> number_in(std::string_view engine_message) {
    constexpr std::string_view words = "concurrent transaction number is ";
    const std::size_t at = engine_message.find(words);
    if (at == std::string_view::npos) return std::nullopt;
    const std::string_view digits = engine_message.substr(at + words.size());
    std::int64_t number = 0;
    const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    return read.ec == std::errc() ? std::optional(number) : std::nullopt;
}

using Text = std::optional<std::string>;

struct OpenTransaction {
    std::int64_t number = 0;
    bool own = false;
    std::string user;
    std::string since;
    std::int64_t process = 0;
    Text address;
    std::string tables;  // that it has changed rows of
};

std::string line_of(const OpenTransaction& one) {
    if (one.own) {
        return fmt::format(
            "transaction {} is the open one of this session: a call of a method has one of its own",
            one.number);
    }
    return fmt::format("transaction {} of {}, process {}{}, since {}{}{}", one.number, one.user, one.process,
                       one.address ? " at " + *one.address : "", one.since,
                       one.tables.empty() ? "" : ": has changed ", one.tables);
}

// A row for each table that one has changed rows of.
constexpr std::string_view transactions =
    "select t.mon$transaction_id, t.mon$attachment_id = current_connection, trim(a.mon$user), "
    "substring(cast(t.mon$timestamp as varchar(60)) from 1 for 19), "
    "coalesce(a.mon$remote_pid, a.mon$server_pid), trim(a.mon$remote_address), changed.name "
    "from mon$transactions t join mon$attachments a on a.mon$attachment_id = t.mon$attachment_id left join "
    "(select s.mon$stat_id as stat_id, trim(s.mon$table_name) as name from mon$table_stats s join "
    "mon$record_stats r on r.mon$stat_id = s.mon$record_stat_id where "
    "r.mon$record_inserts + r.mon$record_updates + r.mon$record_deletes > 0) changed "
    "on changed.stat_id = t.mon$stat_id where t.mon$transaction_id = ? or (cast(? as bigint) is null and "
    "changed.name is not null and t.mon$attachment_id <> current_connection) order by 1, 7";

std::vector<OpenTransaction> find(zmFBConn& connection, std::optional<std::int64_t> number) {
    Transaction work(connection, Access::read_only);
    std::vector<OpenTransaction> found;
    using Process = std::optional<std::int64_t>;
    for (const auto& [id, own, user, since, process, address, table] :
         work.query<std::int64_t, bool, std::string, std::string, Process, Text, Text>(transactions, number,
                                                                                       number)) {
        if (found.empty() || found.back().number != id)
            found.push_back({id, own, user, since, process.value_or(0), address, ""});
        std::string& tables = found.back().tables;
        if (table) tables += (tables.empty() ? "" : ", ") + *table;
    }
    return found;
}

bool sees_all(zmFBConn& connection) {
    return Transaction(connection, Access::read_only)
        .one<bool>("select current_user in ('SYSDBA', mon$owner) from mon$database");
}

}  // namespace

std::string who_is_in_the_way(Session& session, std::string_view engine_message) {
    const auto number = number_in(engine_message);
    if (!number && !interrupted()) return "";
    zmFBConn& connection = session.connection();
    if (interrupted()) begin_undoing();
    std::string text;
    try {
        set_database_encoding(connection, encoding_name());
        for (const OpenTransaction& one : find(connection, number)) text += line_of(one) + "\n";
        if (number && !text.empty()) return text.substr(0, text.size() - 1);
        if (!text.empty()) text = "if it waited, then for one of these to end:\n" + text;
        if (!sees_all(connection))
            text += "transactions of other users are shown to SYSDBA and the owner of the database\n";
    } catch (const SqlError&) {
        return "";  // what failed first is told
    }
    if (!text.empty()) text.pop_back();
    return text;
}

}  // namespace zmfb::tool
