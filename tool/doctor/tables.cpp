#include <fmt/format.h>

#include <array>
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
    "TRIM(R.RDB$RELATION_NAME) || '_DELETES')) FROM RDB$RELATIONS R WHERE "
    "R.RDB$SYSTEM_FLAG = 0 AND R.RDB$VIEW_BLR IS NULL AND (SELECT COUNT(*) FROM RDB$RELATION_FIELDS F WHERE "
    "F.RDB$RELATION_NAME = R.RDB$RELATION_NAME AND F.RDB$FIELD_NAME IN ('RECNO', 'RDD_AREAID')) = 2 ORDER BY "
    "1";

/// A part that a table of the driver has, and how many of it.
struct Part {
    std::string_view name;
    std::string_view count;
};
constexpr std::array parts{Part{"its description", "1"}, Part{"its index", "1"}, Part{"a generator", "2"},
                           Part{"a trigger", "2"}};

/// What a row of the query lacks; empty for a whole table.
std::string missing_in(const Value& row) {
    std::string missing;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        if (row[i + 2].text() == parts[i].count) continue;
        missing += fmt::format("{}{}", missing.empty() ? "" : ", ", parts[i].name);
    }
    return missing;
}

}  // namespace

Finding check_tables(Session& session) {
    std::string text;
    std::string calls;
    const Value rows = exact_rows(session.connection_to_any(), parts_of_tables);
    for (const Value& row : rows.items()) {
        const Name name(row[1].text());
        const std::string missing = missing_in(row);
        if (!name.is_plain() || missing.empty()) continue;
        text += fmt::format("{}{} lacks {}", text.empty() ? "" : "; ", name.bytes(), missing);
        calls += fmt::format("{}zmfb call 'droptable(\"{}\")'", calls.empty() ? "" : ", ", name.bytes());
    }
    if (text.empty()) return {"tables", State::ok, "none of the driver's is half made"};
    return {"tables", State::bad, text, fmt::format("when a table has no rows: {}, and make it anew", calls)};
}

}  // namespace zmfb::tool
