#include "host/number.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <string_view>

#include "host/error.h"
#include "host/settings.h"

namespace zmfb::host {
namespace {

constexpr std::size_t widest_picture = 255;

constexpr bool is_digit(char c) { return c >= '0' && c <= '9'; }

// The digits of `s` from place `at` on; moves `at` behind them.
std::string_view digits(std::string_view s, std::size_t& at) {
    const std::size_t first = at;
    while (at < s.size() && is_digit(s[at])) ++at;
    return s.substr(first, at - first);
}

double leading_number(std::string_view s) {
    std::size_t at = std::min(s.find_first_not_of(" \t\r\n"), s.size());
    const bool minus = at < s.size() && s[at] == '-';
    if (at < s.size() && (s[at] == '-' || s[at] == '+')) ++at;
    const std::size_t first = at;
    const std::string_view whole = digits(s, at);
    std::string_view fraction;
    if (at < s.size() && s[at] == '.') fraction = digits(s, ++at);
    if (whole.empty() && fraction.empty()) return 0;

    double number = 0;
    const auto read = std::from_chars(s.data() + first, s.data() + at, number, std::chars_format::fixed);
    if (read.ec == std::errc::result_out_of_range) {
        const bool huge = whole.find_first_not_of('0') != std::string_view::npos;
        number = huge ? std::numeric_limits<double>::infinity() : 0;
    }
    return minus && number != 0 ? -number : number;
}

// The columns of the text itself: those before the first point, the point, and all that follows it.
Picture picture_of_text(std::string_view s, double number) {
    const std::size_t point = std::min(s.find('.'), s.size());
    const std::size_t decimals = point < s.size() ? s.size() - point - 1 : 0;
    if (point == 0) return computed_picture(number, static_cast<int>(std::min(decimals, widest_picture)));
    const std::size_t width = point + (decimals > 0 ? 1 + decimals : 0);
    return {static_cast<std::uint8_t>(std::min(width, widest_picture)),
            static_cast<std::uint8_t>(std::min(decimals, widest_picture - 2))};
}

Value computed(double number, int decimals) { return {number, computed_picture(number, decimals)}; }

bool is_whole(const Value& n) {
    return shown_picture(n).decimals == 0 && n.number() == std::trunc(n.number());
}

// The little-endian unsigned number in the first `Bytes` bytes; missing ones are 0.
template <int Bytes>
std::uint32_t little_endian(std::string_view s) {
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < Bytes && i < s.size(); ++i) {
        number |= static_cast<std::uint32_t>(static_cast<unsigned char>(s[i])) << (8 * i);
    }
    return number;
}

}  // namespace

Value val(const Value& s) {
    if (!s.is(Kind::character)) return argument_error(Subcode::val, "VAL", {s});
    const double number = leading_number(s.text());
    return {number, picture_of_text(s.text(), number)};
}

Value abs(const Value& n) {
    if (!n.is(Kind::numeric)) return argument_error(Subcode::abs, "ABS", {n});
    return computed(std::fabs(n.number()), shown_picture(n).decimals);
}

Value integer_part(const Value& n) {
    if (!n.is(Kind::numeric)) return argument_error(Subcode::integer, "INT", {n});
    return computed(std::trunc(n.number()), 0);
}

Value times(const Value& a, const Value& b) {
    if (!a.is(Kind::numeric) || !b.is(Kind::numeric)) return argument_error(Subcode::times, "*", {a, b});
    return computed(a.number() * b.number(), shown_picture(a).decimals + shown_picture(b).decimals);
}

Value divide(const Value& a, const Value& b) {
    if (!a.is(Kind::numeric) || !b.is(Kind::numeric)) return argument_error(Subcode::divide, "/", {a, b});
    if (b.number() == 0) {
        const Value answer = runtime_error(GenCode::zero_divide, Subcode::zero_divide, "Zero divisor: /");
        return answer.is(Kind::numeric) ? answer : Value(0);
    }
    const double quotient = a.number() / b.number();
    const bool exact = is_whole(a) && is_whole(b) && quotient == std::trunc(quotient);
    return computed(quotient, exact ? 0 : set_decimals());
}

Value negate(const Value& n) {
    if (!n.is(Kind::numeric)) return argument_error(Subcode::minus, "-", {n});
    const double number = n.number() == 0 ? 0 : -n.number();
    return computed(number, shown_picture(n).decimals);
}

Value bin2i(const Value& s) {
    if (!s.is(Kind::character)) return 0;
    return static_cast<std::int16_t>(little_endian<2>(s.text()));
}

Value bin2l(const Value& s) {
    if (!s.is(Kind::character)) return 0;
    return static_cast<std::int32_t>(little_endian<4>(s.text()));
}

}  // namespace zmfb::host
