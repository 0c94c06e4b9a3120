#include "host/settings.h"

#include <algorithm>
#include <map>

#include "host/compare.h"
#include "host/date.h"
#include "host/error.h"

namespace zmfb::host {
namespace {

constexpr int most_decimals = 15;

enum SettingNumber : std::int64_t {
    exact_setting = 1,
    decimals_setting = 3,
    date_format_setting = 4,
    epoch_setting = 5
};

int decimals_shown = 2;
int first_year = 1900;

std::map<std::int64_t, Value>& kept() {
    static std::map<std::int64_t, Value> settings;
    return settings;
}

Value read(std::int64_t number) {
    switch (number) {
        case exact_setting:
            return set_exact();
        case decimals_setting:
            return decimals_shown;
        case date_format_setting:
            return set_date_format();
        case epoch_setting:
            return first_year;
        default:
            break;
    }
    const auto found = kept().find(number);
    return found == kept().end() ? Value() : found->second;
}

int small_number(const Value& value) {
    constexpr std::int64_t limit = 9999;
    return static_cast<int>(std::clamp<std::int64_t>(value.integer(), -limit, limit));
}

void write(std::int64_t number, const Value& value) {
    switch (number) {
        case exact_setting:
            if (value.is(Kind::logical)) set_exact(value.logical());
            break;
        case decimals_setting:
            if (value.is(Kind::numeric)) set_decimals(small_number(value));
            break;
        case date_format_setting:
            if (value.is(Kind::character)) set_date_format(value);
            break;
        case epoch_setting:
            if (value.is(Kind::numeric)) set_epoch(small_number(value));
            break;
        default:
            kept()[number] = value;
    }
}

}  // namespace

Value set(const Value& number) {
    if (!number.is(Kind::numeric)) return argument_error(Subcode::set, "SET", {number});
    return read(number.integer());
}

Value set(const Value& number, const Value& value) {
    if (!number.is(Kind::numeric)) return argument_error(Subcode::set, "SET", {number, value});
    Value before = read(number.integer());
    write(number.integer(), value);
    return before;
}

int set_decimals() { return decimals_shown; }

void set_decimals(int decimals) { decimals_shown = std::clamp(decimals, 0, most_decimals); }

int set_epoch() { return first_year; }

void set_epoch(int year) { first_year = std::clamp(year, 0, 9900); }

}  // namespace zmfb::host
