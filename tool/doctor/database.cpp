#include "zmfbconn/database.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <map>

#include "tool/alive.h"
#include "tool/catalog.h"
#include "tool/doctor/checks.h"
#include "zmfbconn/methods.h"

namespace zmfb::tool {
namespace {

// A system table, with the columns of the unique index that makes its locks exclusive.
struct SystemTable {
    std::string_view name;
    std::string_view area_column;
    std::vector<Name> unique;
};

const std::array<SystemTable, 3>& system_tables() {
    static const std::array<SystemTable, 3> tables{
        SystemTable{"RDDSYS_OPN", "OPN_AREAID", {Name("OPN_TABLE"), Name("OPN_AREAID")}},
        SystemTable{"RDDSYS_FLK", "FLK_AREAID", {Name("FLK_TABLE")}},
        SystemTable{"RDDSYS_RLK", "RLK_AREAID", {Name("RLK_TABLE"), Name("RLK_RECNO")}},
    };
    return tables;
}

bool has_unique_index(zmFBConn& connection, const SystemTable& table) {
    const std::vector<Index> indexes = indexes_of(connection, Name(table.name));
    return std::ranges::any_of(indexes, [&](const Index& index) {
        return index.unique && index.active && index.fields == table.unique;
    });
}

// What an interrupted run leaves. The names that make a row of the query, up to three, go into the statement
// that clears it up; a row with another name than a plain one is not the driver's.
struct Leftover {
    std::string_view query;
    std::string_view clears;
};

constexpr std::array leftovers{
    Leftover{"SELECT RDB$RELATION_NAME, NULL, NULL FROM RDB$RELATIONS WHERE RDB$EXTERNAL_FILE IS NOT NULL "
             "AND RDB$RELATION_NAME STARTING WITH 'EXT_' ORDER BY 1",
             "drop table {}"},
    Leftover{"SELECT RDB$TRIGGER_NAME, NULL, NULL FROM RDB$TRIGGERS WHERE TRIM(RDB$TRIGGER_NAME) LIKE "
             "'%\\_NULLDATES' ESCAPE '\\' AND COALESCE(RDB$SYSTEM_FLAG, 0) = 0 ORDER BY 1",
             "drop trigger {}"},
    // A changed field's values are copied into one of this name, which takes the field's name when the field
    // is gone: from then on it is the only one that has them.
    Leftover{"SELECT F.RDB$RELATION_NAME, F.RDB$FIELD_NAME, SUBSTRING(F.RDB$FIELD_NAME FROM 8) FROM "
             "RDB$RELATION_FIELDS F WHERE F.RDB$FIELD_NAME STARTING WITH 'RDDAUX_' AND NOT EXISTS(SELECT 1 "
             "FROM RDB$RELATION_FIELDS O WHERE O.RDB$RELATION_NAME = F.RDB$RELATION_NAME AND "
             "O.RDB$FIELD_NAME = SUBSTRING(F.RDB$FIELD_NAME FROM 8)) ORDER BY 1, 2",
             "alter table {} alter {} to {}"},
    Leftover{"SELECT F.RDB$RELATION_NAME, F.RDB$FIELD_NAME, NULL FROM RDB$RELATION_FIELDS F WHERE "
             "F.RDB$FIELD_NAME STARTING WITH 'RDDAUX_' AND EXISTS(SELECT 1 FROM RDB$RELATION_FIELDS O WHERE "
             "O.RDB$RELATION_NAME = F.RDB$RELATION_NAME AND O.RDB$FIELD_NAME = SUBSTRING(F.RDB$FIELD_NAME "
             "FROM 8)) ORDER BY 1, 2",
             "alter table {} drop {}"},
};

// The commands that clear up what there is of a kind.
std::vector<std::string> commands_against(zmFBConn& connection, const Leftover& kind) {
    std::vector<std::string> commands;
    using Text = std::optional<std::string>;
    for (const auto& [first, second, third] : rows_of<Text, Text, Text>(connection, kind.query)) {
        std::vector<Name> names;
        for (const Text& text : {first, second, third}) {
            if (text) names.emplace_back(*text);
        }
        if (!all_plain(names)) continue;
        names.resize(3, Name(""));
        commands.push_back(exec_command_line(
            fmt::format(fmt::runtime(kind.clears), names[0].bytes(), names[1].bytes(), names[2].bytes())));
    }
    return commands;
}

// Those of the driver's shape without their table. Whether a program of its own uses one, nothing tells.
constexpr std::string_view lone_generators =
    "SELECT G.RDB$GENERATOR_NAME FROM RDB$GENERATORS G WHERE COALESCE(G.RDB$SYSTEM_FLAG, 0) = 0 AND "
    "G.RDB$GENERATOR_NAME STARTING WITH 'G_' AND RIGHT(TRIM(G.RDB$GENERATOR_NAME), 2) IN ('_I', '_D') AND "
    "CHAR_LENGTH(TRIM(G.RDB$GENERATOR_NAME)) > 4 AND NOT EXISTS(SELECT 1 FROM RDB$RELATIONS R WHERE "
    "R.RDB$RELATION_NAME = SUBSTRING(TRIM(G.RDB$GENERATOR_NAME) FROM 3 FOR "
    "CHAR_LENGTH(TRIM(G.RDB$GENERATOR_NAME)) - 4)) AND NOT EXISTS(SELECT 1 FROM RDB$DEPENDENCIES D WHERE "
    "D.RDB$DEPENDED_ON_NAME = G.RDB$GENERATOR_NAME AND D.RDB$DEPENDED_ON_TYPE = 14) ORDER BY 1";

}  // namespace

Finding check_system_tables(Session& session) {
    zmFBConn& connection = session.connection_to_any();
    std::string text;
    std::string advice;
    const auto add = [](std::string& all, const std::string& one) { all += (all.empty() ? "" : "; ") + one; };
    for (const SystemTable& table : system_tables()) {
        if (!connection(m::istable, table.name)) {
            add(text, fmt::format("{} is missing", table.name));
            add(advice, "zmfb prepare");
        } else if (!has_unique_index(connection, table)) {
            add(text, fmt::format("{} has no unique index on {}: its locks lock nobody out", table.name,
                                  joined(table.unique)));
            add(advice, fmt::format("zmfb exec \"create unique index I_{0} on {0} ({1})\"", table.name,
                                    joined(table.unique)));
        }
    }
    if (text.empty()) return {"system tables", State::ok, "all three, with their unique indexes"};
    return {"system tables", State::bad, text, advice};
}

Finding check_dead_processes(Session& session) {
    zmFBConn& connection = session.connection_to_any();
    const std::string host = connection(m::gethostname);
    std::map<long, int> dead;
    for (const SystemTable& table : system_tables()) {
        if (!connection(m::istable, table.name)) continue;
        const std::string query =
            fmt::format("SELECT TRIM(TRAILING FROM {}) FROM {}", table.area_column, table.name);
        for (const auto& [owner] : rows_of<std::optional<std::string>>(connection, query)) {
            const Holder holder(owner.value_or(""));
            if (is_alive(holder, host) == Alive::no) ++dead[process_of(holder).value_or(0)];
        }
    }
    if (dead.empty()) return {"dead processes", State::ok, "none of this host left locks or registrations"};
    std::string text;
    for (const auto& [process, rows] : dead) {
        text += fmt::format("{}process {} left {} {}", text.empty() ? "" : "; ", process, rows,
                            rows == 1 ? "row" : "rows");
    }
    return {"dead processes", State::bad, text,
            "zmfb locks and zmfb opens show them; zmfb unlock TABLE frees one table, zmfb clear all of them"};
}

Finding check_leftovers(Session& session) {
    zmFBConn& connection = session.connection_to_any();
    std::string text;
    for (const Leftover& kind : leftovers) {
        for (const std::string& command : commands_against(connection, kind)) {
            text += (text.empty() ? "" : "; ") + command;
        }
    }
    if (text.empty()) return {"leftovers", State::ok, "none of an import, export or change that was cut off"};
    return {"leftovers", State::bad, "an import, export or change was cut off, or is at work right now",
            "when nobody is at work: " + text};
}

Finding check_generators(Session& session) {
    std::vector<Name> lone = names_of(session.connection_to_any(), lone_generators);
    std::erase_if(lone, [](const Name& name) { return !name.is_plain(); });
    if (lone.empty()) return {"generators", State::ok, "none of the driver's is without its table"};
    std::string calls;
    for (const Name& name : lone) {
        calls += fmt::format("{}zmfb call 'dropgenerator(\"{}\")'", calls.empty() ? "" : "; ", name.bytes());
    }
    return {"generators", State::note,
            fmt::format("without a table: {}; a new table of that name is refused", joined(lone)),
            "unless a program of your own uses them: " + calls};
}

Finding check_validity(Session& session) {
    const char* const locks = std::getenv("FIREBIRD_LOCK");
    const bool local = !names_a_server(session.options().database);
    return {"validity", State::note, "not looked at",
            fmt::format("while nobody uses the database: {}gfix -v -full -user {} {}",
                        local && locks != nullptr ? fmt::format("FIREBIRD_LOCK={} ", locks) : "",
                        session.options().user, session.options().database)};
}

}  // namespace zmfb::tool
