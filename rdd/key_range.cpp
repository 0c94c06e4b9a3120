#include "rdd/key_range.h"

#include <fmt/format.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <variant>

namespace zmfb::rdd {

namespace {

constexpr char least = '\0', greatest = '\xFF';

// A number in units of an order's last decimal; one between two of them is not exact.
struct Units {
    std::int64_t below = 0;
    bool exact = true;
};

// Further away than any key.
constexpr std::int64_t beyond_all = 4'000'000'000'000'000'000;

std::int64_t power_of_ten(std::size_t exponent) {
    std::int64_t power = 1;
    for (; exponent > 0; --exponent) power *= 10;
    return power;
}

Units units_of(double number, std::size_t decimals) {
    if (std::isnan(number)) throw OrderError("No key is a number that is none");
    const double unit = static_cast<double>(power_of_ten(decimals)), scaled = number * unit;
    if (std::abs(scaled) >= static_cast<double>(beyond_all))
        return {scaled < 0 ? -beyond_all : beyond_all, false};
    const double nearest = std::nearbyint(scaled);
    // Computed numbers differ from those meant in their last bits.
    if (std::abs(nearest / unit - number) <= 4 * std::numeric_limits<double>::epsilon() * std::abs(number))
        return {static_cast<std::int64_t>(nearest), true};
    return {static_cast<std::int64_t>(std::floor(scaled)), false};
}

Units units_of(const Decimal& number, std::size_t decimals) {
    const auto given = static_cast<std::size_t>(number.decimals());
    const std::int64_t unscaled = number.unscaled();
    if (given > decimals) {
        const std::int64_t unit = power_of_ten(given - decimals), rest = unscaled % unit;
        return {unscaled / unit - (rest < 0 ? 1 : 0), rest == 0};
    }
    const std::int64_t factor = power_of_ten(decimals - given);
    if (unscaled > beyond_all / factor) return {beyond_all, false};
    if (unscaled < -beyond_all / factor) return {-beyond_all, false};
    return {unscaled * factor, true};
}

// As the key of a number is made in SQL: 19 digits, a point among them.
std::string number_key(std::int64_t units, const Order& order) {
    std::string key = std::to_string(5'000'000'000'000'000'000 + units);
    if (order.decimals > 0) key.insert(key.size() - order.decimals, ".");
    key.resize(order.width, ' ');
    return key;
}

class Bounds {
  public:
    explicit Bounds(const Order& order) : order_(order) {}

    KeyRange operator()(std::string_view text) const {
        expect('C', "a text");
        const std::size_t end = text.find_last_not_of(' ') + 1;
        if (end <= order_.width) return between(text.substr(0, order_.width), text.substr(0, order_.width));
        const std::string behind = filled(text.substr(0, order_.width), greatest);
        return {behind, behind};
    }
    KeyRange operator()(double number) const { return of_units(number); }
    KeyRange operator()(const Decimal& number) const { return of_units(number); }
    KeyRange operator()(std::int64_t number) const { return of_units(Decimal(number)); }
    KeyRange operator()(std::chrono::year_month_day day) const {
        expect('D', "a date");
        return only(fmt::format("{:04}-{:02}-{:02}", static_cast<int>(day.year()),
                                static_cast<unsigned>(day.month()), static_cast<unsigned>(day.day())));
    }
    KeyRange operator()(std::monostate) const {
        expect('D', "a date");
        return only(std::string(order_.width, ' '));
    }
    KeyRange operator()(bool value) const {
        expect('L', "a logical");
        return only(value ? "T" : "F");
    }
    template <class Other>
    KeyRange operator()(const Other&) const {
        expect('\0', "of a type that no key has");
        return {};
    }

  private:
    void expect(char type, std::string_view sought) const {
        if (order_.type == type) return;
        constexpr std::pair<char, std::string_view> words[] = {
            {'C', "texts"}, {'N', "numbers"}, {'D', "dates"}, {'L', "logicals"}};
        for (const auto& [known, word] : words) {
            if (known == order_.type)
                throw OrderError(fmt::format("The keys of the order {} ({}) are {}; what is sought is {}",
                                             order_.name, order_.expression, word, sought));
        }
    }
    template <class Number>
    KeyRange of_units(const Number& number) const {
        expect('N', "a number");
        const Units units = units_of(number, order_.decimals);
        return between(number_key(units.below + (units.exact ? 0 : 1), order_),
                       number_key(units.below, order_));
    }
    [[nodiscard]] std::string filled(std::string_view key, char with) const {
        std::string whole(key);
        whole.resize(order_.width + record_key_width, with);
        return whole;
    }
    [[nodiscard]] KeyRange between(std::string_view first, std::string_view last) const {
        return {filled(first, least), filled(last, greatest)};
    }
    [[nodiscard]] KeyRange only(std::string_view key) const { return between(key, key); }

    const Order& order_;
};

}  // namespace

KeyRange range_of(const Order& order, const Parameter& value) {
    if (order.expression.empty()) throw OrderError("A key is sought in an order, and none is set");
    return std::visit(Bounds(order), value.content());
}

}  // namespace zmfb::rdd
