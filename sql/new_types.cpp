#include "sql/new_types.h"

#include <fmt/format.h>

#include <array>
#include <string>

#include "sql/state.h"
#include "sql/transaction.h"

namespace zmfb::sql {

Status set_new_types(isc_db_handle database, NewTypes as) {
    constexpr std::pair<std::string_view, unsigned> types[] = {
        {"INT128", whole_number_length}, {"DECFLOAT", float_length}, {"TIME ZONE", zoned_time_length}};
    Transaction transaction(database, query_block);
    Status done = transaction.started();
    for (const auto& [type, length] : types) {
        const std::string to =
            as == NewTypes::as_before ? "LEGACY" : fmt::format("VARCHAR({}) CHARACTER SET ASCII", length);
        if (done.ok()) done = transaction.execute(fmt::format("SET BIND OF {} TO {}", type, to).c_str());
    }
    return done.ok() ? transaction.commit() : done;
}

Status ask_structure(isc_db_handle database, int& major) {
    constexpr char items[] = {isc_info_ods_version, isc_info_end};
    constexpr std::size_t value_at = 3;
    std::array<char, 16> answer{};
    client().database_info(state().status, &database, sizeof items, items, answer.size(), answer.data());
    major = static_cast<unsigned char>(answer[value_at]);
    return outcome();
}

}  // namespace zmfb::sql
