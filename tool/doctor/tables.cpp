#include <fmt/format.h>

#include <array>
#include <cstdint>
#include <optional>
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
    "TRIM(R.RDB$RELATION_NAME) || '_DELETES')) FROM RDB$RELATIONS R WHERE "
    "(R.RDB$DESCRIPTION IS NULL OR R.RDB$DESCRIPTION NOT STARTING WITH CAST(? AS VARCHAR(99)) AND "
    "R.RDB$DESCRIPTION NOT STARTING WITH CAST(? AS VARCHAR(99))) AND "
    "R.RDB$SYSTEM_FLAG = 0 AND R.RDB$VIEW_BLR IS NULL AND (SELECT COUNT(*) FROM RDB$RELATION_FIELDS F WHERE "
    "F.RDB$RELATION_NAME = R.RDB$RELATION_NAME AND F.RDB$FIELD_NAME IN ('RECNO', 'RDD_AREAID')) = 2 ORDER BY "
    "1";

// A part that a table of the driver has, how many of it there have to be, and how many there are.
struct Part {
    std::string_view name;
    std::int64_t wanted;
    std::int64_t count;
};

// What it lacks; empty for a whole table.
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
    const auto rows = rows_of<std::string, int, std::int64_t, std::int64_t, std::int64_t>(
        session.connection_to_any(), parts_of_tables, unfinished_description, loaded_description);
    for (const auto& [table, descriptions, indexes, generators, triggers] : rows) {
        const Name name(table);
        const std::string problem =
            missing_in(std::array{Part{"its description", 1, descriptions}, Part{"its index", 1, indexes},
                                  Part{"a generator", 2, generators}, Part{"a trigger", 2, triggers}});
        if (!name.is_plain() || problem.empty()) continue;
        text += fmt::format("{}{} {}", text.empty() ? "" : "; ", name.bytes(), problem);
        calls += fmt::format("{}zmfb call 'droptable(\"{}\")'", calls.empty() ? "" : ", ", name.bytes());
    }
    if (text.empty()) return {"tables", State::ok, "none of the driver's is half made"};
    return {"tables", State::bad, text, fmt::format("when a table has no rows: {}, and make it anew", calls)};
}

namespace {

std::string joined(const std::string& all, const std::string& one) {
    return all + (all.empty() ? "" : "; ") + one;
}

// How many records a table has, and how many its generators say.
using Counted = std::tuple<std::int64_t, std::int64_t>;

// Nothing when this user may not count them.
std::optional<Counted> counts_of(zmFBConn& connection, const std::string& table) try {
    return rows_of<std::int64_t, std::int64_t>(
               connection,
               fmt::format("SELECT COUNT(*), GEN_ID(G_{0}_I, 0) - GEN_ID(G_{0}_D, 0) FROM {0}", table))
        .at(0);
} catch (const Failure&) {
    return std::nullopt;
}

}  // namespace

Finding check_imports(Session& session) {
    std::string text;
    for (const Table& table : tables_of(session.connection_to_any())) {
        const std::string& name = table.name.bytes();
        if (table.kind == TableKind::unfinished) {
            text = joined(text, name + " is an import that runs, or did not come to its end");
        } else if (table.kind == TableKind::loaded) {
            text = joined(text, fmt::format("{} has the records of an import of {} that was cut off", name,
                                            name.substr(table_beside("").size())));
        }
    }
    if (text.empty()) return {"imports", State::ok, "none runs, or was cut off"};
    return {"imports", State::bad, text, "the next import of that name sees to what was cut off"};
}

Finding check_record_counts(Session& session) {
    zmFBConn& connection = session.connection_to_any();
    std::string text, advice;
    for (const Table& table : tables_of(connection)) {
        if (table.kind != TableKind::driver) continue;
        const std::string& name = table.name.bytes();
        const auto counts = counts_of(connection, name);
        if (!counts) continue;
        const auto [records, counted] = *counts;
        if (records == counted) continue;
        text = joined(text, fmt::format("{} is counted as {} records and has {}", name, counted, records));
        advice = joined(advice, fmt::format("zmfb query \"select gen_id(G_{}_D, {}) from rdb\\$database\"",
                                            name, counted - records));
    }
    if (text.empty()) return {"record counts", State::ok, "each table has as many as its generators say"};
    return {"record counts", State::bad, text, "when nobody writes to it: " + advice};
}

}  // namespace zmfb::tool
