#include "tool/import/verify.h"

#include <fmt/format.h>

#include "tool/counted.h"
#include "tool/reading.h"
#include "tool/transfer/progress.h"
#include "tool/transfer/value_sum.h"

namespace zmfb::tool {
namespace {

struct Found {
    std::uint64_t records = 0;
    std::string values;
};

Found sum_of(zmFBConn& connection, const std::string& query, const std::vector<dbf::Kind>& kinds,
             std::uint64_t expected) try {
    constexpr std::uint64_t often = 256;
    Progress progress("verifying", expected);
    Found found;
    ValueSum sum;
    Transaction work = begin_reading(connection, query);
    for (const Row& row : work.rows(query)) {
        for (std::size_t i = 0; i < kinds.size(); ++i) sum.add(row[i], kinds[i]);
        if (++found.records % often == 0) progress.at(found.records);
    }
    found.values = sum.digits();
    return found;
} catch (const SqlError& error) {
    throw_failure(connection, error, "cannot read what was imported");
}

}  // namespace

std::string difference(zmFBConn& connection, const std::string& table,
                       const std::vector<PlannedColumn>& columns, const dbf::Header& header,
                       const ManifestFile& entry) {
    std::string names;
    std::vector<dbf::Kind> kinds;
    for (const PlannedColumn& column : columns) {
        if (column.field == PlannedColumn::deletion_mark) continue;
        names += (names.empty() ? "" : ", ") + column.column.name;
        kinds.push_back(header.fields[column.field].kind);
    }
    const Found found = sum_of(connection, fmt::format("select {} from {} order by RECNO", names, table),
                               kinds, entry.records);
    if (found.records != entry.records) {
        return fmt::format("{} has {}, and {} were exported", table,
                           counted(found.records, "record", "records"), entry.records);
    }
    if (entry.values.empty() || found.values == entry.values) return "";
    return fmt::format("{} has other values than were exported", table);
}

}  // namespace zmfb::tool
