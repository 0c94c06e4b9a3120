#include "tool/drop.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <thread>

#include "tool/catalog.h"
#include "tool/interrupt.h"
#include "zmfbconn/cancel.h"
#include "zmfbconn/database.h"
#include "zmfbconn/methods.h"

namespace zmfb::tool {

namespace {

std::string what_was_dropped(zmFBConn& connection, const Name& table, std::vector<Name> objects) {
    objects.push_back(table);
    std::erase_if(objects, [&](const Name& one) { return is_there(connection, ObjectKind::relation, one); });
    return objects.empty() ? "nothing was dropped" : fmt::format("{} dropped by then", joined(objects));
}

}  // namespace

// The method drops a view once for each time that it names the table, and gives up at the second.
void drop_with_views(zmFBConn& connection, const Name& table, const std::vector<Name>& views) try {
    const auto dropped = [&](const Name& view) { return connection(m::dropview, view.bytes()); };
    if (std::ranges::all_of(views, dropped) && connection(m::droptable, table.bytes())) return;
    const std::string said = last_engine_message();
    const bool stands = connection(m::istable, table.bytes());
    throw Failure{
        Exit::failed,
        fmt::format("{} was {}", table.shown(), stands ? "not dropped" : "dropped, but not its generators"),
        said};
} catch (const Cancelled&) {
    begin_undoing();
    throw Failure{ending_status(), what_was_dropped(connection, table, views)};
}

bool wait_for_others(std::string_view message, int attempt) {
    constexpr int attempts = 20;
    constexpr auto pause = std::chrono::milliseconds(250);
    const auto says = [&](std::string_view words) { return message.find(words) != std::string_view::npos; };
    if (attempt == attempts || !(says("is in use") || says("concurrent transaction"))) return false;
    std::this_thread::sleep_for(pause);
    return true;
}

}  // namespace zmfb::tool
