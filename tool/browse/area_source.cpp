#include "tool/browse/area_source.h"

#include <algorithm>

#include "zmfbconn/methods.h"

namespace zmfb::tool::browse {
namespace {

// Of long texts the beginning, without making more of them.
Cell text_of(const FieldValue& value, SqlType type, std::size_t most) {
    if (value.is_null()) return std::nullopt;
    if (type == SqlType::text || type == SqlType::text_blob)
        return std::string(value.as<std::string_view>().substr(0, most));
    return shortened(value.text(), type);
}

}  // namespace

std::optional<AreaOrder> order_of(Area& area) {
    for (AreaOrder& order : area.orders()) {
        if (order.name == area.order()) return std::move(order);
    }
    return std::nullopt;
}

AreaSource::AreaSource(zmFBConn& connection, const std::string& table, OpenMode mode)
    : connection_(connection),
      area_(connection, table, {.mode = mode, .alias = "browse"}),
      structure_(connection(m::gettablestruct, area_.table())) {
    for (const Column& column : area_.fields())
        columns_.push_back(shown_column(column, field_of(structure_, column)));
}

void AreaSource::rows_at_a_time(std::size_t count) {
    connection_(m::setglbskipcachesize, static_cast<std::int64_t>(count));
}

bool AreaSource::stand_on(std::int64_t number) {
    return (!area_.eof() && area_.recno() == number) || area_.go(number);
}

ShownRow AreaSource::current() const {
    ShownRow row{.number = area_.recno(), .cells = {}};
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        row.cells.push_back(text_of(area_.at(i), columns_[i].type, most_shown));
    }
    return row;
}

// From the current record on, as they are met.
ShownRows AreaSource::met(std::size_t count, int step) {
    ShownRows rows;
    while (rows.size() < count) {
        rows.push_back(current());
        if (rows.size() == count || !area_.skip(step)) break;
    }
    return rows;
}

ShownRows AreaSource::forward(std::size_t count) { return met(count, 1); }

ShownRows AreaSource::backward(std::size_t count) {
    ShownRows rows = met(count, -1);
    std::ranges::reverse(rows);
    return rows;
}

ShownRows AreaSource::first(std::size_t count) { return area_.top() ? forward(count) : ShownRows(); }

ShownRows AreaSource::last(std::size_t count) { return area_.bottom() ? backward(count) : ShownRows(); }

ShownRows AreaSource::behind(std::span<const ShownRow> known, std::size_t count) {
    for (auto row = known.rbegin(); row != known.rend(); ++row) {
        if (!stand_on(row->number)) continue;
        return area_.skip(1) ? forward(count) : ShownRows();
    }
    return {};
}

ShownRows AreaSource::before(std::span<const ShownRow> known, std::size_t count) {
    for (const ShownRow& row : known) {
        if (!stand_on(row.number)) continue;
        return area_.skip(-1) ? backward(count) : ShownRows();
    }
    return {};
}

// Back on the first of them it stands where the next look begins, so that it is one query.
ShownRows AreaSource::again(std::int64_t number, std::size_t count) {
    if (!stand_on(number)) return {};
    const std::size_t read = area_.read_on();
    if (read == 0) return {};
    ShownRows rows = forward(std::min(read, count));
    area_.skip(1 - static_cast<std::int64_t>(rows.size()));
    return rows;
}

void AreaSource::filter(const std::string& condition) {
    area_.filter(condition);
    is_filtered_ = !condition.empty();
}

// Read on from it the area stands on the next row when it is left out.
bool AreaSource::leaves_in(std::int64_t number) {
    if (!is_filtered_) return true;
    return stand_on(number) && area_.read_on() > 0 && area_.recno() == number;
}

std::optional<ShownRow> AreaSource::row(std::int64_t number) {
    if (!area_.go(number)) return std::nullopt;
    return current();
}

Cell AreaSource::whole(std::int64_t number, std::size_t column) {
    if (!area_.go(number)) return std::nullopt;
    return text_of(area_.at(column), columns_[column].type, std::string::npos);
}

// A unique order has fewer records than the table.
std::optional<std::int64_t> AreaSource::count() {
    const std::optional<AreaOrder> order = order_of(area_);
    if (order && order->unique) return std::nullopt;
    return area_.count();
}

std::int64_t AreaSource::place(std::int64_t number) { return stand_on(number) ? area_.place() : 0; }

}  // namespace zmfb::tool::browse
