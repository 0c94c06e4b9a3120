// The orders of an area.
#include <fmt/format.h>

#include "host/text.h"
#include "rdd/open_area.h"
#include "zmfbconn/area.h"

namespace zmfb {

namespace {

std::string upper(std::string_view name) { return std::string(host::upper(name).string()); }

// What changes an order must not be in the way of itself.
template <class Change>
void without_statements(const rdd::Desk& desk, const Change& change) {
    desk.release_statements();
    zmFBConn connection = desk.connection();
    change(connection);
}

rdd::KeyRange keys_of(rdd::Walk& walk, const Parameter& key) {
    const auto* text = std::get_if<std::string_view>(&key.content());
    const std::string kept = text == nullptr ? "" : walk.kept(*text);
    return rdd::range_of(walk.order(), text == nullptr ? key : Parameter(kept));
}

}  // namespace

std::vector<AreaOrder> Area::orders() {
    std::vector<AreaOrder> orders;
    for (const auto& [order, complete] : open().orders())
        orders.push_back({order.name, order.expression, !order.only.empty(), complete});
    return orders;
}

void Area::order(std::string_view name) {
    rdd::Walk& walk = open().moving();
    const std::string wanted = upper(name);
    if (wanted.empty()) return walk.set_order(rdd::natural_order());
    for (rdd::KeptOrder& kept : open().orders()) {
        if (kept.order.name == wanted) return walk.set_order(std::move(kept.order));
    }
    throw rdd::OrderError(fmt::format("{} has no order {}", table(), wanted));
}

const std::string& Area::order() const { return open().walk().order().name; }

bool Area::seek(const Parameter& key, SeekOptions options) {
    rdd::Walk& walk = open().moving();
    return walk.seek(keys_of(walk, key), options);
}

bool Area::has_key(const Parameter& key) {
    rdd::Walk& walk = open().walk();
    return walk.is_in(keys_of(walk, key));
}

std::int64_t Area::place() { return open().walk().place(); }

void Area::create_order(std::string_view name, std::string_view expression, bool unique) {
    rdd::OpenArea& area = open();
    zmFBConn connection = area.desk().connection();
    rdd::create_order(connection, table(), area.structure(),
                      {std::string(name), std::string(expression), unique, {table(), area.alias()}});
}

void Area::drop_order(std::string_view name) {
    rdd::Walk& walk = open().moving();
    const rdd::Order before = walk.order();
    if (before.name == upper(name)) walk.set_order(rdd::natural_order());
    try {
        without_statements(open().desk(),
                           [&](zmFBConn& connection) { rdd::drop_order(connection, table(), name); });
    } catch (...) {
        walk.set_order(before);
        throw;
    }
}

void Area::rebuild_order(std::string_view name) {
    rdd::OpenArea& area = open();
    without_statements(area.desk(), [&](zmFBConn& connection) {
        rdd::rebuild_order(connection, table(), area.structure(), name);
    });
}

}  // namespace zmfb
