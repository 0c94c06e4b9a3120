#include "rdd/columns.h"

#include <fmt/format.h>
#include <strings.h>

#include <algorithm>

#include "zmfbconn/area_error.h"

namespace zmfb::rdd {

namespace {

constexpr std::string_view own_columns[] = {"RDD_AREAID", "RECNO"};

bool same_name(const std::string& a, std::string_view b) {
    return a.size() == b.size() && strncasecmp(a.data(), b.data(), b.size()) == 0;
}

}  // namespace

// A number of more digits than an integer holds is a decimal without decimals.
CellKind cell_kind(const Column& column) {
    switch (column.type) {
        case SqlType::integer:
            return CellKind::whole;
        case SqlType::decimal:
            return column.decimals > 0 ? CellKind::decimal : CellKind::none;
        case SqlType::real:
            return CellKind::real;
        case SqlType::boolean:
            return CellKind::boolean;
        case SqlType::text:
        case SqlType::text_blob:
            return CellKind::text;
        case SqlType::bytes:
            return CellKind::bytes;
        case SqlType::date:
            return CellKind::day;
        case SqlType::time:
            return CellKind::time;
        case SqlType::timestamp:
            return CellKind::moment;
        case SqlType::blob:
        case SqlType::other:
            break;
    }
    return CellKind::none;
}

std::string quoted(std::string_view name) {
    std::string text = "\"";
    for (const char c : name) text.append(c == '"' ? 2 : 1, c);
    return text + '"';
}

Columns::Columns(Transaction& work, std::string table) : table_(std::move(table)) {
    std::size_t own = 0;
    const Statement all = work.prepare("select * from " + quoted(table_));
    for (const Column& column : all.columns()) {
        if (std::ranges::find(own_columns, column.name) != std::end(own_columns)) {
            ++own;
        } else if (const CellKind kind = cell_kind(column); kind != CellKind::none) {
            fields_.push_back(column);
            kinds_.push_back(kind);
            list_ += ", " + quoted(column.name);
        }
    }
    if (own == std::size(own_columns)) return;
    throw AreaError(
        AreaError::Reason::no_table,
        fmt::format("{} has no record numbers: createtable and bringdbf make tables that have", table_));
}

std::size_t Columns::find(std::string_view name) const {
    const auto found =
        std::ranges::find_if(fields_, [name](const Column& field) { return same_name(field.name, name); });
    if (found != fields_.end()) return static_cast<std::size_t>(found - fields_.begin());
    throw AreaError(AreaError::Reason::no_field, fmt::format("{} has no field {}", table_, name));
}

}  // namespace zmfb::rdd
