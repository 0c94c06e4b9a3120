#include "host/driver.h"

#include <map>

#include "host/date.h"
#include "host/dbf_driver.h"
#include "host/dbf_format.h"
#include "host/number.h"
#include "host/table_error.h"
#include "host/text.h"

namespace zmfb::host {
namespace {

// Never destroyed, as tables may be open until the very end of the program.
std::map<std::string, std::shared_ptr<Driver>, std::less<>>& drivers() {
    static auto& registry = *new std::map<std::string, std::shared_ptr<Driver>, std::less<>>{
        {std::string(dbf_driver_name), make_dbf_driver()}};
    return registry;
}

constexpr std::string_view no_orders = "This driver has no orders";

bool unsupported(std::string_view operation, std::string_view description,
                 Subcode subcode = Subcode::unsupported, std::string_view file = {}) {
    raise_table_error({.gencode = GenCode::unsupported,
                       .subcode = subcode,
                       .description = description,
                       .operation = operation,
                       .file = file});
    return false;
}

}  // namespace

bool Table::put_columns(std::size_t index, std::string_view columns) {
    if (index >= fields().size()) return false;
    switch (fields()[index].type) {
        case 'N':
            return put(index, val(columns));
        case 'D':
            return put(index, stod(columns));
        case 'L':
            return put(index, is_true(columns));
        default:
            return put(index, columns);
    }
}

bool Table::set_filter(std::string_view condition) {
    return condition.empty() ||
           unsupported("DBSETFILTER", "This driver takes no conditions as a text: give a block");
}

bool Table::zap() { return unsupported("ZAP", "This driver removes no records"); }

bool Table::pack() { return unsupported("PACK", "This driver removes no records"); }

bool Table::lock_record(std::int64_t, std::chrono::milliseconds) {
    return unsupported("RLOCK", "This driver has no locks");
}

bool Table::lock_table(std::chrono::milliseconds) { return unsupported("FLOCK", "This driver has no locks"); }

bool Table::set_order(std::size_t order) { return order == 0 || unsupported("ORDSETFOCUS", no_orders); }

bool Table::create_order(std::string_view, std::string_view, bool) {
    return unsupported("ORDCREATE", no_orders);
}

bool Table::destroy_order(std::size_t) { return unsupported("ORDDESTROY", no_orders); }

bool Table::rebuild_orders() { return unsupported("ORDLISTREBUILD", no_orders); }

bool Table::seek(const Value&, SeekOptions) { return unsupported("DBSEEK", no_orders); }

bool Driver::create(std::string_view file, std::span<const Field>) {
    return unsupported("DBCREATE", "This driver creates no tables", Subcode::table_create, file);
}

void register_driver(std::string_view name, std::shared_ptr<Driver> driver) {
    drivers()[upper(name).string()] = std::move(driver);
}

std::shared_ptr<Driver> find_driver(std::string_view name) {
    const auto found = drivers().find(upper(name).string());
    return found == drivers().end() ? nullptr : found->second;
}

}  // namespace zmfb::host
