// The orders of the current area's table.
#include <algorithm>
#include <string>

#include "host/error.h"
#include "host/moves.h"
#include "host/number.h"
#include "host/settings.h"
#include "host/table_error.h"
#include "host/text.h"
#include "host/workarea_list.h"

namespace zmfb::host {
namespace {

bool raise_no_order(std::string_view operation, std::string_view description) {
    raise_table_error({.gencode = GenCode::no_order,
                       .subcode = Subcode::no_order,
                       .description = description,
                       .operation = operation});
    return false;
}

// The number of an order given by number or name; 0 when the table has none such.
std::size_t number_of(Table& table, const Value& order) {
    const auto orders = table.orders();
    if (order.is(Kind::numeric)) {
        const std::int64_t number = order.integer();
        return number < 1 || number > static_cast<std::int64_t>(orders.size())
                   ? 0
                   : static_cast<std::size_t>(number);
    }
    if (!order.is(Kind::character)) return 0;
    const auto found = std::ranges::find(orders, name_key(order), &TableOrder::name);
    return found == orders.end() ? 0 : static_cast<std::size_t>(found - orders.begin()) + 1;
}

// The same; one that the table does not have is raised.
std::size_t needed_order(Table& table, const Value& order, std::string_view operation) {
    const std::size_t number = number_of(table, order);
    if (number == 0) {
        const std::string name = order.is(Kind::character) ? order.string() : str(order).string();
        raise_no_order(operation, "No order " + alltrim(name).string() + " of this table");
    }
    return number;
}

bool means_record_numbers(const Value& order) {
    if (order.is(Kind::numeric)) return order.integer() == 0;
    return order.is(Kind::character) && alltrim(order).string().empty();
}

// What an order is, of the present one for 0; an empty one for one that is none.
TableOrder order_at(Table& table, std::int64_t number) {
    if (number == 0) number = static_cast<std::int64_t>(table.order());
    const auto orders = table.orders();
    if (number < 1 || number > static_cast<std::int64_t>(orders.size())) return {};
    return orders[static_cast<std::size_t>(number - 1)];
}

bool soft_seek(const Value& soft) {
    constexpr int set_softseek = 9;
    if (soft.is(Kind::logical)) return soft.logical();
    return switched_on(set(set_softseek), false);
}

// A seek where a block filters: to the first or last of the records with the key that it lets through.
bool seek_passing(WorkArea& area, const Value& key, SeekOptions options) {
    bool found = area.table->seek(key, options);
    while (found && !passes(area)) {
        if (area.table == nullptr) return false;
        found = area.table->skip(options.last ? -1 : 1) && !area.table->bof() && area.table->has_key(key);
    }
    if (found || area.table == nullptr) return found;
    constexpr std::int64_t no_record = 0;
    if (options.soft) {
        area.table->seek(key, {.soft = true});
        on_to_passing(area);
    } else {
        area.table->go_to(no_record);
    }
    return false;
}

}  // namespace

bool ordcreate(const Value& name, const Value& expression, const Value& unique) {
    const auto area = needed_workarea("ORDCREATE");
    if (area == nullptr) return false;
    if (name_key(name).empty() || !expression.is(Kind::character)) {
        argument_error(Subcode::structure, "ORDCREATE", {name, expression});
        return false;
    }
    const bool is_unique = unique.is(Kind::logical) && unique.logical();
    if (!area->table->create_order(name_key(name), alltrim(expression).string(), is_unique)) return false;
    dbgotop();
    return true;
}

Value ordsetfocus(const Value& order) {
    const auto area = current_workarea();
    if (area == nullptr) return "";
    Value before = order_at(*area->table, 0).name;
    if (means_record_numbers(order)) {
        area->table->set_order(0);
    } else if (!order.is_nil()) {
        const std::size_t number = needed_order(*area->table, order, "ORDSETFOCUS");
        if (number != 0) area->table->set_order(number);
    }
    return before;
}

void dbsetindex(const Value& files) {
    if (name_key(files).empty()) return;
    const auto area = current_workarea();
    if (area != nullptr && !area->table->orders().empty()) {
        ordlistadd(files);
        return;
    }
    raise_table_error({.gencode = GenCode::unsupported,
                       .subcode = Subcode::index_files,
                       .description = "No index files in this driver",
                       .operation = "DBSETINDEX",
                       .file = files.text()});
}

bool ordlistadd(const Value& name) {
    const auto area = needed_workarea("ORDLISTADD");
    if (area == nullptr) return false;
    const std::size_t number = needed_order(*area->table, name, "ORDLISTADD");
    return number != 0 && (area->table->order() != 0 || area->table->set_order(number));
}

void ordlistclear() {
    if (const auto area = current_workarea()) area->table->set_order(0);
}

bool ordlistrebuild() {
    const auto area = needed_workarea("ORDLISTREBUILD");
    return area != nullptr && area->table->rebuild_orders();
}

bool orddestroy(const Value& order) {
    const auto area = needed_workarea("ORDDESTROY");
    if (area == nullptr) return false;
    const std::size_t number = needed_order(*area->table, order, "ORDDESTROY");
    return number != 0 && area->table->destroy_order(number);
}

Value ordname(const Value& order) {
    const auto area = current_workarea();
    const std::int64_t number = order.is(Kind::numeric) ? order.integer() : 0;
    return area == nullptr ? "" : Value(order_at(*area->table, number).name);
}

std::int64_t ordnumber(const Value& name) {
    const auto area = current_workarea();
    if (area == nullptr) return 0;
    return static_cast<std::int64_t>(name.is_nil() ? area->table->order() : number_of(*area->table, name));
}

std::int64_t indexord() { return ordnumber(); }

Value indexkey(const Value& order) {
    const auto area = current_workarea();
    return area == nullptr || !order.is(Kind::numeric)
               ? ""
               : Value(order_at(*area->table, order.integer()).expression);
}

std::int64_t ordkeyno() {
    const auto area = current_workarea();
    return area == nullptr ? 0 : area->table->key_number();
}

bool dbseek(const Value& key, const Value& soft, const Value& last) {
    const auto area = needed_workarea("DBSEEK");
    if (area == nullptr) return false;
    area->found = area->before_first = false;
    if (area->table->order() == 0) return raise_no_order("DBSEEK", "The table follows no order");
    const SeekOptions options{.soft = soft_seek(soft), .last = last.is(Kind::logical) && last.logical()};
    return area->found =
               area->filter.is_nil() ? area->table->seek(key, options) : seek_passing(*area, key, options);
}

}  // namespace zmfb::host
