#include "tool/browse/table_list.h"

namespace zmfb::tool::browse {

TableList::TableList(zmFBConn& connection) : connection_(connection) {
    constexpr int name_width = 31, kind_width = 10;
    columns_ = {{"TABLE", SqlType::text, "", name_width}, {"KIND", SqlType::text, "", kind_width}};
    read_anew();
}

void TableList::read_anew() { tables_ = tables_of(connection_); }

std::vector<Cell> TableList::cells(std::int64_t number) {
    const Table& table = table_at(number);
    return {table.name.shown(), std::string(kind_name(table.kind))};
}

}  // namespace zmfb::tool::browse
