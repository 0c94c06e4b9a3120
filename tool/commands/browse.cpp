#include "tool/browse/browse.h"

#include <fmt/format.h>

#include <memory>

#include "tool/browse/area_source.h"
#include "tool/catalog.h"
#include "tool/commands.h"
#include "tool/encoding.h"
#include "zmfbconn/methods.h"
#include "zmfbconn/transaction.h"

namespace zmfb::tool {
namespace {

struct Given {
    std::string table;
    bool read_only = false;
};

Exit browse_command(Session& session, const Given& given) {
    zmFBConn& connection = session.connection();
    set_database_encoding(connection, encoding_name());
    connection(m::setrddactive, true);  // an object that was made before it was attached has it off
    const Table table = existing_table(connection, given.table);
    browse::AreaSource source(connection, table.name.text(),
                              given.read_only ? OpenMode::read_only : OpenMode::shared);
    browse::Screen screen;
    browse::Browse(screen, session, source, table.name.shown()).run();
    return Exit::ok;
}

}  // namespace

void add_browse(CommandLine& line) {
    const auto given = std::make_shared<Given>();
    const Subcommand command = line.add(line.app(), "browse", "Look through a table on the whole screen",
                                        "zmfb --db shop.fdb browse customers", [given](Session& session) {
                                            return browse_command(session, *given);
                                        });
    command.option("TABLE", given->table, "Table").required();
    command.flag("--readonly", given->read_only, "Change nothing");
}

}  // namespace zmfb::tool
