#include "tool/import/number_fit.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <limits>

namespace zmfb::tool {
namespace {

// The largest exponent that the engine reads.
constexpr int largest_exponent = 3275;

// A number as the engine takes it apart: digits without the point, and how many of them stand behind it.
struct Decimal {
    bool fits = true;  ///< the digits and the exponent
    std::uint64_t digits = 0;
    int scale = 0;
};

void add_exponent(std::string_view text, Decimal& number) {
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) text.remove_prefix(1);
    int exponent = 0;
    for (const char digit : text) exponent = std::min(exponent * 10 + (digit - '0'), largest_exponent + 1);
    if (exponent > largest_exponent) number.fits = false;
    number.scale += negative ? exponent : -exponent;
}

// Without its sign.
Decimal take_apart(std::string_view text, std::uint64_t limit) {
    Decimal number;
    const std::size_t end = std::min(text.find_first_of("eE"), text.size());
    bool behind_point = false;
    for (const char c : text.substr(0, end)) {
        if (c == '.') {
            behind_point = true;
            continue;
        }
        const auto digit = static_cast<std::uint64_t>(c - '0');
        if (number.digits > (limit - digit) / 10) number.fits = false;
        if (number.fits) number.digits = number.digits * 10 + digit;
        if (behind_point) ++number.scale;
    }
    if (end < text.size()) add_exponent(text.substr(end + 1), number);
    return number;
}

// Brings the number to so many decimals, rounded half away from zero; returns whether it stays within the
// limit.
bool rescale(Decimal& number, int decimals, std::uint64_t limit, bool& rounded) {
    for (; number.scale < decimals && number.digits != 0; ++number.scale) {
        if (number.digits > limit / 10) return false;
        number.digits *= 10;
    }
    std::uint64_t dropped = 0;
    for (; number.scale > decimals && (number.digits != 0 || dropped != 0); --number.scale) {
        dropped = number.digits % 10;
        rounded = rounded || dropped != 0;
        number.digits /= 10;
    }
    if (dropped > 4) ++number.digits;
    return number.digits <= limit;
}

std::uint64_t storage_limit(std::size_t length) {
    if (length < 5) return std::numeric_limits<std::int16_t>::max();
    if (length < 10) return std::numeric_limits<std::int32_t>::max();
    return std::numeric_limits<std::int64_t>::max();
}

}  // namespace

std::string number_problem(std::string_view text, std::size_t length, int decimals, bool* rounded) {
    const std::uint64_t sign = text.starts_with('-') ? 1 : 0;
    if (sign != 0 || text.starts_with('+')) text.remove_prefix(1);
    const std::uint64_t limit = storage_limit(std::max<std::size_t>(length, 5)) + sign;
    Decimal number = take_apart(text, limit);
    bool loses = false;
    if (number.fits && rescale(number, decimals, limit, loses) &&
        number.digits <= storage_limit(length) + sign) {
        if (rounded != nullptr && loses) *rounded = true;
        return {};
    }
    return fmt::format("too wide for NUMERIC({},{})", length, decimals);
}

}  // namespace zmfb::tool
