#include "tool/locks.h"

#include <fmt/format.h>
#include <unistd.h>

#include <memory>

#include "tool/browse/lock_view.h"
#include "tool/catalog.h"
#include "tool/commands.h"
#include "tool/confirm.h"
#include "tool/json.h"
#include "tool/say.h"
#include "tool/terminal.h"
#include "tool/text_table.h"
#include "zmfbconn/database.h"
#include "zmfbconn/methods.h"

namespace zmfb::tool {
namespace {

// Rows on their way to the terminal, in both shapes.
class Listing {
  public:
    Listing(const Session& session, std::vector<TextTable::Column> columns)
        : json_(session.options().json), table_(with_owner(std::move(columns))) {}

    void add(std::vector<std::string> cells, Json object, const Owner& owner) {
        const auto process = process_of(owner.holder);
        table_.add(with_owner(std::move(cells), owner));
        object["holder"] = {{"table", owner.holder.table},
                            {"area", owner.holder.area},
                            {"process", process ? Json(*process) : Json(nullptr)},
                            {"host", owner.holder.host},
                            {"state", alive_name(owner.alive)}};
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
    bool json_;
    TextTable table_;
    Json list_ = Json::array();
};

Exit locks_command(Session& session) {
    Listing listing(session, {{"table"}, {"lock"}, {"record", true}});
    for (const Lock& lock : locks_of(session.connection())) {
        if (lock.record) {
            listing.add({lock.table, "record", std::to_string(*lock.record)},
                        {{"table", lock.table}, {"lock", "record"}, {"record", *lock.record}}, lock.owner);
        } else {
            listing.add({lock.table, "table", ""}, {{"table", lock.table}, {"lock", "table"}}, lock.owner);
        }
    }
    listing.print("no locks");
    return Exit::ok;
}

Exit watch_command(Session& session, std::size_t refresh) {
    if (::isatty(STDIN_FILENO) == 0 || !output_is_terminal()) {
        throw Failure{Exit::usage,
                      "--watch shows locks on a terminal, which standard input and output are not", "",
                      "zmfb locks lists them once"};
    }
    zmFBConn& connection = session.connection();
    (void)locks_of(connection);  // what is wrong is said before the screen is taken
    browse::Screen screen;
    browse::show_locks(screen, connection, std::chrono::seconds(refresh));
    return Exit::ok;
}

Exit opens_command(Session& session) {
    Listing listing(session, {{"table"}, {"mode"}, {"last append", true}});
    for (const Registration& open : registrations_of(session.connection())) {
        const std::string mode = open.shared ? "shared" : "exclusive";
        listing.add({open.table, mode, open.last_append == 0 ? "" : std::to_string(open.last_append)},
                    {{"table", open.table}, {"mode", mode}, {"last_append", open.last_append}}, open.owner);
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
    struct Watched {
        bool watch = false;
        std::size_t refresh = 2;
    };
    const auto watched = std::make_shared<Watched>();
    const Subcommand locks = line.add(line.app(), "locks", "List record and table locks with their holders",
                                      "zmfb --db shop.fdb locks", [watched](Session& session) {
                                          return watched->watch ? watch_command(session, watched->refresh)
                                                                : locks_command(session);
                                      });
    locks.flag("--watch", watched->watch, "Show them, and the open tables, on the whole screen, live");
    locks
        .option("--refresh", watched->refresh, {.least = 1, .most = 86400, .of = "seconds"},
                "With --watch, read them again every so many seconds")
        .type_name("SECONDS")
        .with_default();
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
