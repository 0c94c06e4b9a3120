// The orders of a table in a work area.
#include <algorithm>

#include "rdd/area_table.h"
#include "rdd/raising.h"
#include "rdd/record.h"

namespace zmfb::rdd {

using host::GenCode;
using host::Subcode;
using host::Value;

void AreaTable::ask_for_orders() {
    raising({GenCode::read, Subcode::table_read, "ORDLISTADD", table_}, [&] {
        orders_.clear();
        for (const AreaOrder& order : area_.orders()) orders_.push_back({order.name, order.expression});
    });
}

std::vector<host::TableOrder> AreaTable::orders() {
    ask_for_orders();
    return orders_;
}

std::size_t AreaTable::order() const {
    if (!area_.is_open() || area_.order().empty()) return 0;
    const auto found = std::ranges::find(orders_, area_.order(), &host::TableOrder::name);
    return found == orders_.end() ? 0 : static_cast<std::size_t>(found - orders_.begin()) + 1;
}

bool AreaTable::set_order(std::size_t order) {
    if (order > orders_.size()) return false;
    return move("ORDSETFOCUS", [&] { area_.order(order == 0 ? "" : orders_[order - 1].name); });
}

bool AreaTable::create_order(std::string_view name, std::string_view expression, bool unique) {
    const bool made = move("ORDCREATE", [&] {
        area_.create_order(name, expression, unique);
        area_.order(name);
    });
    ask_for_orders();
    return made;
}

bool AreaTable::destroy_order(std::size_t order) {
    if (order == 0 || order > orders_.size()) return false;
    const std::string name = orders_[order - 1].name;
    const bool dropped = move("ORDDESTROY", [&] {
        if (area_.order() == name) area_.order("");
        area_.drop_order(name);
    });
    ask_for_orders();
    return dropped;
}

bool AreaTable::rebuild_orders() {
    return move("ORDLISTREBUILD", [&] {
        for (const AreaOrder& order : area_.orders()) area_.rebuild_order(order.name);
    });
}

bool AreaTable::seek(const Value& key, host::SeekOptions options) {
    const std::optional<Parameter> value = parameter_of(key);
    if (!value) {
        host::argument_error(Subcode::structure, "DBSEEK", {key});
        return false;
    }
    bool found = false;
    return move("DBSEEK", [&] { found = area_.seek(*value, options); }) && found;
}

bool AreaTable::has_key(const Value& key) {
    const std::optional<Parameter> value = parameter_of(key);
    bool has = false;
    if (value)
        raising({GenCode::read, Subcode::table_read, "DBSEEK", table_}, [&] { has = area_.has_key(*value); });
    return has;
}

std::int64_t AreaTable::key_number() {
    std::int64_t place = 0;
    if (eof()) return place;
    raising({GenCode::read, Subcode::table_read, "ORDKEYNO", table_}, [&] { place = area_.place(); });
    return place;
}

}  // namespace zmfb::rdd
