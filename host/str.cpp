#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <string_view>

#include "host/error.h"
#include "host/number.h"
#include "host/text.h"

namespace zmfb::host {
namespace {

constexpr int significant_digits = 16;
constexpr double exact_whole = 1e15;  // whole numbers below have fewer digits than count
constexpr int whole_columns = 10;
constexpr int wide_whole_columns = 20;
constexpr int widest_picture = 255;
constexpr std::int64_t most_shown_decimals = 15;

// A finite number as its significant decimal digits: 0.d1d2d3... times ten to the power `point`.
struct Decimal {
    std::array<char, significant_digits + 1> digits{};
    int count = 0;
    std::int64_t point = 0;

    [[nodiscard]] char digit(std::int64_t place) const {
        return place >= 0 && place < count ? digits[static_cast<std::size_t>(place)] : '0';
    }
};

Decimal decimal_of(double magnitude) {
    Decimal made;
    if (magnitude < exact_whole && magnitude == std::trunc(magnitude)) {
        const auto end = std::to_chars(made.digits.data(), made.digits.data() + made.digits.size(),
                                       static_cast<std::int64_t>(magnitude));
        made.count = static_cast<int>(end.ptr - made.digits.data());
        made.point = made.count;
        return made;
    }
    // The shortest form is the number as it was written; one with more digits than count came of a
    // computation.
    std::array<char, 32> text{};
    char* const last = text.data() + text.size();
    auto end = std::to_chars(text.data(), last, magnitude, std::chars_format::scientific);
    if (std::find(text.data(), end.ptr, 'e') - text.data() > significant_digits + 1) {
        end = std::to_chars(text.data(), last, magnitude, std::chars_format::scientific,
                            significant_digits - 1);
    }
    const char* c = text.data();
    for (; c != end.ptr && *c != 'e'; ++c) {
        if (*c != '.') made.digits[static_cast<std::size_t>(made.count++)] = *c;
    }
    int exponent = 0;
    std::from_chars(c + (c[1] == '+' ? 2 : 1), end.ptr, exponent);
    made.point = exponent + 1;
    return made;
}

// Rounds half away from zero to `decimals` decimals.
void round_to(Decimal& number, std::int64_t decimals) {
    const std::int64_t kept = number.point + decimals;
    if (kept >= number.count) return;
    const bool up = kept >= 0 && number.digit(kept) >= '5';
    number.count = static_cast<int>(std::max<std::int64_t>(kept, 0));
    if (!up) return;
    int place = number.count;
    while (place > 0 && number.digits[static_cast<std::size_t>(place - 1)] == '9') --place;
    if (place > 0) {
        ++number.digits[static_cast<std::size_t>(place - 1)];
        number.count = place;
    } else {  // 9.99 became 10
        number.digits[0] = '1';
        number.count = 1;
        ++number.point;
    }
}

bool is_zero(const Decimal& number) {
    return std::all_of(number.digits.begin(), number.digits.begin() + number.count,
                       [](char c) { return c == '0'; });
}

Value asterisks(std::size_t length) {
    Value made = Value::text_of_size(length);
    std::ranges::fill(made.writable_text(), '*');
    return made;
}

struct Layout {
    std::int64_t length;
    std::int64_t decimals;
};

Value formatted(double n, Layout layout, std::string_view operation) {
    if (layout.length < 1) layout.length = whole_columns;
    if (layout.decimals < 0) layout.decimals = 0;
    if (static_cast<std::uint64_t>(layout.length) > max_filled_size) return string_overflow(operation);
    const auto length = static_cast<std::size_t>(layout.length);
    if (!std::isfinite(n) || layout.decimals >= layout.length) return asterisks(length);

    Decimal number = decimal_of(std::fabs(n));
    round_to(number, layout.decimals);
    const bool minus = std::signbit(n) && !is_zero(number);
    const std::int64_t whole = std::max<std::int64_t>(number.point, 1);
    const std::int64_t fraction = layout.decimals > 0 ? layout.decimals + 1 : 0;
    if (whole + fraction + (minus ? 1 : 0) > layout.length) return asterisks(length);

    Value made = Value::text_of_size(length);
    const auto bytes = made.writable_text();
    std::size_t at = length;
    for (std::int64_t i = layout.decimals; i > 0; --i) bytes[--at] = number.digit(number.point + i - 1);
    if (layout.decimals > 0) bytes[--at] = '.';
    for (std::int64_t i = 1; i <= whole; ++i) bytes[--at] = number.digit(number.point - i);
    if (minus) bytes[--at] = '-';
    while (at > 0) bytes[--at] = ' ';
    return made;
}

Value formatted(const Value& n, std::string_view operation) {
    const Picture picture = shown_picture(n);
    return formatted(n.number(), {.length = picture.width, .decimals = picture.decimals}, operation);
}

Value zero_filled(Value text) {
    if (!text.is(Kind::character)) return text;  // what an error handler put in its place
    const auto bytes = text.writable_text();
    const auto digits = std::ranges::find_if(bytes, [](char c) { return c != ' '; });
    const bool minus = digits != bytes.end() && *digits == '-';
    if (minus) *digits = '0';
    std::fill(bytes.begin(), digits, '0');
    if (minus) bytes.front() = '-';
    return text;
}

int decimals_needed(double n) {
    if (!std::isfinite(n) || n == std::trunc(n)) return 0;
    Decimal number = decimal_of(std::fabs(n));
    round_to(number, most_shown_decimals);
    while (number.count > 0 && number.digit(number.count - 1) == '0') --number.count;
    return static_cast<int>(std::max<std::int64_t>(number.count - number.point, 0));
}

}  // namespace

Picture computed_picture(double number, int decimals) {
    const int whole =
        number > 9'999'999'999.0 || number < -999'999'999.0 ? wide_whole_columns : whole_columns;
    decimals = std::clamp(decimals, 0, widest_picture - whole - 1);
    const int width = decimals > 0 ? whole + 1 + decimals : whole;
    return {static_cast<std::uint8_t>(width), static_cast<std::uint8_t>(decimals)};
}

Picture shown_picture(const Value& n) {
    const Picture own = n.picture();
    if (own.width != 0) return own;
    return computed_picture(n.number(), own.decimals != 0 ? own.decimals : decimals_needed(n.number()));
}

Value str(const Value& n) {
    if (!n.is(Kind::numeric)) return argument_error(Subcode::str, "STR", {n});
    return formatted(n, "STR");
}

Value str(const Value& n, const Value& length) {
    if (!n.is(Kind::numeric) || !length.is(Kind::numeric))
        return argument_error(Subcode::str, "STR", {n, length});
    return formatted(n.number(), {.length = length.integer(), .decimals = 0}, "STR");
}

Value str(const Value& n, const Value& length, const Value& decimals) {
    if (!n.is(Kind::numeric) || !length.is(Kind::numeric) || !decimals.is(Kind::numeric)) {
        return argument_error(Subcode::str, "STR", {n, length, decimals});
    }
    return formatted(n.number(), {.length = length.integer(), .decimals = decimals.integer()}, "STR");
}

Value strzero(const Value& n) {
    if (!n.is(Kind::numeric)) return argument_error(Subcode::str, "STRZERO", {n});
    return zero_filled(formatted(n, "STRZERO"));
}

Value strzero(const Value& n, const Value& length) {
    if (!n.is(Kind::numeric) || !length.is(Kind::numeric)) {
        return argument_error(Subcode::str, "STRZERO", {n, length});
    }
    return zero_filled(formatted(n.number(), {.length = length.integer(), .decimals = 0}, "STRZERO"));
}

Value strzero(const Value& n, const Value& length, const Value& decimals) {
    if (!n.is(Kind::numeric) || !length.is(Kind::numeric) || !decimals.is(Kind::numeric)) {
        return argument_error(Subcode::str, "STRZERO", {n, length, decimals});
    }
    return zero_filled(
        formatted(n.number(), {.length = length.integer(), .decimals = decimals.integer()}, "STRZERO"));
}

}  // namespace zmfb::host
