#include "tool/json.h"

#include <fmt/format.h>

#include <cmath>

#include "host/date.h"
#include "tool/encoding.h"

namespace zmfb::tool {
namespace {

// Beyond 2^53 a double no longer holds every whole number.
constexpr double largest_whole = 9007199254740992.0;

Json number_json(double number) {
    if (std::isfinite(number) && number == std::trunc(number) && std::abs(number) <= largest_whole) {
        return static_cast<std::int64_t>(number);
    }
    return number;
}

Json date_json(host::Date date) {
    if (date == host::Date{}) return "";
    const host::CalendarDay day = host::calendar_day(date);
    return fmt::format("{:04}-{:02}-{:02}", day.year, day.month, day.day);
}

}  // namespace

Json to_json(const host::Value& value) {
    switch (value.kind()) {
        case host::Kind::nil:
            return nullptr;
        case host::Kind::character:
            return to_utf8(value.text());
        case host::Kind::numeric:
            return number_json(value.number());
        case host::Kind::logical:
            return value.logical();
        case host::Kind::date:
            return date_json(value.date());
        case host::Kind::object:
            return fmt::format("<object {}>", value.object()->class_name());
        case host::Kind::block:
            return "<block>";
        case host::Kind::array:
            break;
    }
    Json out = Json::array();
    for (const host::Value& element : value.items()) out.push_back(to_json(element));
    return out;
}

std::string json_line(const Json& json) { return json.dump(-1, ' ', false, Json::error_handler_t::replace); }

std::string json_lines(const Json& json) { return json.dump(2, ' ', false, Json::error_handler_t::replace); }

}  // namespace zmfb::tool
