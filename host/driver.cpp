#include "host/driver.h"

#include <map>

#include "host/date.h"
#include "host/dbf_driver.h"
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

}  // namespace

bool Table::put_columns(std::size_t index, std::string_view columns) {
    if (index >= fields().size()) return false;
    switch (fields()[index].type) {
        case 'N':
            return put(index, val(columns));
        case 'D':
            return put(index, stod(columns));
        case 'L':
            return put(index, !columns.empty() &&
                                  std::string_view("TtYy").find(columns[0]) != std::string_view::npos);
        default:
            return put(index, columns);
    }
}

bool Driver::create(std::string_view file, std::span<const Field>) {
    raise_table_error({.gencode = GenCode::unsupported,
                       .subcode = Subcode::table_create,
                       .description = "This driver creates no tables",
                       .operation = "DBCREATE",
                       .file = file});
    return false;
}

void register_driver(std::string_view name, std::shared_ptr<Driver> driver) {
    drivers()[upper(name).string()] = std::move(driver);
}

std::shared_ptr<Driver> find_driver(std::string_view name) {
    const auto found = drivers().find(upper(name).string());
    return found == drivers().end() ? nullptr : found->second;
}

}  // namespace zmfb::host
