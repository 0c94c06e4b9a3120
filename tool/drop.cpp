#include "tool/drop.h"

#include <fmt/format.h>

#include <algorithm>

#include "tool/session.h"
#include "zmfbconn/database.h"

namespace zmfb::tool {

// The method drops a view once for each time that it names the table, and gives up at the second.
void drop_with_views(zmFBConn& connection, const Name& table, const std::vector<Name>& views) {
    const auto dropped = [&](const Name& view) {
        return connection.call("dropview", view.bytes()).logical();
    };
    if (std::ranges::all_of(views, dropped) && connection.call("droptable", table.bytes()).logical()) return;
    const std::string said = last_engine_message();
    const bool stands = connection.call("istable", table.bytes()).logical();
    throw Failure{
        Exit::failed,
        fmt::format("{} was {}", table.shown(), stands ? "not dropped" : "dropped, but not its generators"),
        said};
}

}  // namespace zmfb::tool
