#include "tool/browse/area_source.h"

#include <fmt/format.h>

#include <algorithm>
#include <ranges>

#include "zmfbconn/methods.h"

namespace zmfb::tool::browse {
namespace {

std::string shown_day(std::chrono::year_month_day day) {
    return fmt::format("{:04}-{:02}-{:02}", static_cast<int>(day.year()), static_cast<unsigned>(day.month()),
                       static_cast<unsigned>(day.day()));
}

// The parts of a second where there are any.
std::string shown_time(TimeOfDay time) {
    const std::chrono::hh_mm_ss<TimeOfDay> parts(time);
    std::string text = fmt::format("{:02}:{:02}:{:02}", parts.hours().count(), parts.minutes().count(),
                                   parts.seconds().count());
    if (parts.subseconds().count() != 0) text += fmt::format(".{:04}", parts.subseconds().count());
    return text;
}

// The driver keeps days as time stamps of midnight.
std::string shown_moment(Timestamp moment) {
    const auto day = std::chrono::floor<std::chrono::days>(moment);
    const TimeOfDay time(static_cast<std::int32_t>((moment - day).count()));
    std::string text = shown_day(std::chrono::year_month_day(day));
    if (time.count() != 0) text += " " + shown_time(time);
    return text;
}

std::string hexadecimal(const Bytes& bytes) {
    std::string text;
    for (const std::byte byte : bytes) text += fmt::format("{:02X}", static_cast<unsigned>(byte));
    return text;
}

Cell text_of(const FieldValue& value, SqlType type, std::size_t most) {
    if (value.is_null()) return std::nullopt;
    switch (type) {
        case SqlType::text:
        case SqlType::text_blob:
            return std::string(value.as<std::string_view>().substr(0, most));
        case SqlType::bytes:
            return hexadecimal(value.as<Bytes>());
        case SqlType::integer:
        case SqlType::decimal:
            return to_string(value.as<Decimal>());
        case SqlType::real:
            return fmt::format("{}", value.as<double>());
        case SqlType::boolean:
            return value.as<bool>() ? "true" : "false";
        case SqlType::date:
            return shown_day(value.as<std::chrono::year_month_day>());
        case SqlType::time:
            return shown_time(value.as<TimeOfDay>());
        case SqlType::timestamp:
            return shown_moment(value.as<Timestamp>());
        case SqlType::blob:
        case SqlType::other:
            break;
    }
    return "";
}

}  // namespace

std::optional<AreaOrder> order_of(Area& area) {
    for (AreaOrder& order : area.orders()) {
        if (order.name == area.order()) return std::move(order);
    }
    return std::nullopt;
}

AreaSource::AreaSource(zmFBConn& connection, const std::string& table, OpenMode mode)
    : connection_(connection), area_(connection, table, {.mode = mode, .alias = "browse"}) {
    const Structure structure = connection(m::gettablestruct, area_.table());
    for (const Column& column : area_.fields())
        columns_.push_back(shown_column(column, field_of(structure, column)));
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
    for (const ShownRow& row : std::views::reverse(known)) {
        if (!stand_on(row.number)) continue;
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
