#include "tool/import/hold.h"

#include <fmt/format.h>

namespace zmfb::tool {
namespace {

// Found again among the statements of all that are at work.
std::string holding(const std::string& table) {
    return fmt::format("select 'import' from {} where RECNO is null", table);
}

}  // namespace

ImportHold::ImportHold(zmFBConn& connection, const std::string& table) {
    reading_.emplace(connection, Access::read_only);
    held_ = reading_->prepare(holding(table));
}

void ImportHold::release() {
    held_.reset();
    reading_.reset();
}

std::string who_fills(zmFBConn& connection, const std::string& table) {
    Transaction work(connection, Access::read_only);
    using Text = std::optional<std::string>;
    const auto found = work.maybe_one<std::string, std::optional<std::int64_t>, Text>(
        "select first 1 trim(a.mon$user), coalesce(a.mon$remote_pid, a.mon$server_pid), a.mon$remote_address "
        "from mon$statements s join mon$attachments a on a.mon$attachment_id = s.mon$attachment_id where "
        "a.mon$attachment_id <> current_connection and "
        "cast(substring(s.mon$sql_text from 1 for 99) as varchar(99)) = cast(? as varchar(99))",
        holding(table));
    if (!found) return "";
    const auto& [user, process, address] = *found;
    return fmt::format("process {} of user {}{}", process.value_or(0), user,
                       address ? " at " + *address : "");
}

std::string another_import(const std::string& table, const std::string& who) {
    return fmt::format("another import of {} is at work{}", table, who.empty() ? "" : ": " + who);
}

}  // namespace zmfb::tool
