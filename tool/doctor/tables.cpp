#include <fmt/format.h>

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "tool/catalog.h"
#include "tool/doctor/checks.h"

namespace zmfb::tool {
namespace {

// A table counts as one of the driver's, finished or not, when it has the driver's two columns.
constexpr std::string_view parts_of_tables =
    "SELECT R.RDB$RELATION_NAME, IIF(R.RDB$DESCRIPTION IS NULL, 0, 1), (SELECT COUNT(*) FROM RDB$INDICES I "
    "WHERE I.RDB$RELATION_NAME = R.RDB$RELATION_NAME AND "
    "I.RDB$INDEX_NAME = TRIM(R.RDB$RELATION_NAME) || '_RECNO_DESC'), (SELECT COUNT(*) FROM RDB$GENERATORS "
    "WHERE "
    "RDB$GENERATOR_NAME IN ('G_' || TRIM(R.RDB$RELATION_NAME) || '_I', 'G_' || TRIM(R.RDB$RELATION_NAME) || "
    "'_D')), (SELECT COUNT(*) FROM RDB$TRIGGERS T WHERE T.RDB$RELATION_NAME = R.RDB$RELATION_NAME AND "
    "T.RDB$TRIGGER_NAME IN ('T_' || TRIM(R.RDB$RELATION_NAME) || '_RECNO', 'T_' || "
    "TRIM(R.RDB$RELATION_NAME) || '_DELETES')), IIF(R.RDB$DESCRIPTION = ?, 1, 0) FROM RDB$RELATIONS R "
    "WHERE "
    "R.RDB$SYSTEM_FLAG = 0 AND R.RDB$VIEW_BLR IS NULL AND (SELECT COUNT(*) FROM RDB$RELATION_FIELDS F WHERE "
    "F.RDB$RELATION_NAME = R.RDB$RELATION_NAME AND F.RDB$FIELD_NAME IN ('RECNO', 'RDD_AREAID')) = 2 ORDER BY "
    "1";

/// A part that a table of the driver has, how many of it there have to be, and how many there are.
struct Part {
    std::string_view name;
    std::int64_t wanted;
    std::int64_t count;
};

/// What it lacks; empty for a whole table.
std::string missing_in(std::span<const Part> parts) {
    std::string missing;
    for (const Part& part : parts) {
        if (part.count != part.wanted)
            missing += fmt::format("{}{}", missing.empty() ? "lacks " : ", ", part.name);
    }
    return missing;
}

}  // namespace

Finding check_tables(Session& session) {
    std::string text;
    std::string calls;
    const auto rows = rows_of<std::string, int, std::int64_t, std::int64_t, std::int64_t, int>(
        session.connection_to_any(), parts_of_tables, unfinished_description);
    for (const auto& [table, descriptions, indexes, generators, triggers, is_unfinished] : rows) {
        const Name name(table);
        const std::string problem =
            is_unfinished != 0 ? "is an import that runs, or did not come to its end"
                               : missing_in(std::array{
                                     Part{"its description", 1, descriptions}, Part{"its index", 1, indexes},
                                     Part{"a generator", 2, generators}, Part{"a trigger", 2, triggers}});
        if (!name.is_plain() || problem.empty()) continue;
        text += fmt::format("{}{} {}", text.empty() ? "" : "; ", name.bytes(), problem);
        calls += fmt::format("{}zmfb call 'droptable(\"{}\")'", calls.empty() ? "" : ", ", name.bytes());
    }
    if (text.empty()) return {"tables", State::ok, "none of the driver's is half made"};
    return {"tables", State::bad, text, fmt::format("when a table has no rows: {}, and make it anew", calls)};
}

}  // namespace zmfb::tool
