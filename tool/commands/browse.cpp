#include "tool/browse/browse.h"

#include <fmt/format.h>

#include <memory>

#include "tool/browse/area_source.h"
#include "tool/browse/query_source.h"
#include "tool/browse/table_list.h"
#include "tool/catalog.h"
#include "tool/commands.h"
#include "tool/encoding.h"
#include "tool/locks.h"
#include "tool/reading.h"
#include "zmfbconn/methods.h"
#include "zmfbconn/transaction.h"

namespace zmfb::tool {
namespace {

using browse::Browse;
using browse::Screen;

struct Given {
    std::string table, query;
    bool read_only = false;
    std::size_t refresh = 2;
};

// Only tables of the driver have record numbers to move by.
std::unique_ptr<browse::Source> source_of(zmFBConn& connection, const Table& table, bool read_only) try {
    if (table.kind == TableKind::driver) {
        const OpenMode mode = read_only ? OpenMode::read_only : OpenMode::shared;
        return std::make_unique<browse::AreaSource>(connection, table.name.text(), mode);
    }
    return std::make_unique<browse::QuerySource>(connection, table.name);
} catch (const InUse& error) {
    throw Failure{Exit::failed, error.what() + when_dead(connection, error.holder(), "clear")};
}

std::string title_of(const browse::Source& source, const std::string& name, bool read_only) {
    return name + (read_only || !source.query().empty() ? "   read-only" : "");
}

class Command {
  public:
    Command(Session& session, const Given& given)
        : session_(session), given_(given), connection_(session.connection()) {
        set_database_encoding(connection_, encoding_name());
        connection_(m::setrddactive, true);  // an object that was made before it was attached has it off
    }

    // The screen is begun when there is something to show, so that what cannot be shown is told as usual.
    void run() {
        if (!given_.query.empty()) {
            browse::QuerySource source(connection_, given_.query);
            Screen screen;
            Browse(screen, session_, source, title_of(source, "query", true), every()).run();
        } else if (!given_.table.empty()) {
            const Table table = existing_table(connection_, given_.table);
            const auto source = source_of(connection_, table, given_.read_only);
            Screen screen;
            show(screen, table, *source);
        } else {
            choose();
        }
    }

  private:
    Browse::Left show(Screen& screen, const Table& table, browse::Source& source) {
        return Browse(screen, session_, source, title_of(source, table.name.shown(), given_.read_only),
                      every())
            .run();
    }
    void choose() {
        browse::TableList list(connection_);
        Screen screen;
        Browse(screen, session_, list, session_.options().database, every(), [&](std::int64_t number) {
            const Table table = list.table_at(number);
            const auto source = source_of(connection_, table, given_.read_only);
            return show(screen, table, *source);
        }).run();
    }

    [[nodiscard]] std::chrono::seconds every() const { return std::chrono::seconds(given_.refresh); }

    Session& session_;
    const Given& given_;
    zmFBConn& connection_;
};

Exit browse_command(Session& session, const Given& given) {
    if (!given.query.empty() && !given.table.empty())
        throw Failure{Exit::usage, "--query goes without a table"};
    session.require_database();
    Screen::require_terminal();
    Command command(session, given);
    try {
        command.run();
    } catch (const SqlError& error) {
        throw_failure(session.connection(), error, "the rows cannot be shown");
    }
    return Exit::ok;
}

}  // namespace

void add_browse(CommandLine& line) {
    const auto given = std::make_shared<Given>();
    const Subcommand command = line.add(line.app(), "browse", "Look through tables on the whole screen",
                                        "zmfb --db shop.fdb browse customers", [given](Session& session) {
                                            return browse_command(session, *given);
                                        });
    command.option("TABLE", given->table, "Table or view, else all are listed");
    command.option("--query", given->query, "Show the rows of a SELECT instead").type_name("SQL").not_empty();
    command
        .option("--refresh", given->refresh, {.least = 0, .most = 86400, .of = "seconds"},
                "Read the rows again every so many seconds; 0 for never")
        .type_name("SECONDS")
        .with_default();
    command.flag("--readonly", given->read_only, "Change nothing");
}

}  // namespace zmfb::tool
