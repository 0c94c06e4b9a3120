#include "zmfbconn/decimal.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <ostream>

#include "sql/typed/failure.h"

namespace zmfb {

namespace {

constexpr std::int64_t power_of_ten(int exponent) {
    std::int64_t power = 1;
    for (int i = 0; i < exponent; ++i) power *= 10;
    return power;
}

void check_decimals(int decimals) {
    if (decimals >= 0 && decimals <= Decimal::most_decimals) return;
    typed::refuse(typed::out_of_range, fmt::format("A number has 0 to 18 decimals, not {}", decimals));
}

[[noreturn]] void throw_overflow() {
    typed::refuse(typed::out_of_range, "The number has more digits than a Decimal holds");
}

// The part behind the point, in units of the smallest decimal there is.
std::int64_t fraction_of(const Decimal& number) {
    return number.unscaled() % power_of_ten(number.decimals()) *
           power_of_ten(Decimal::most_decimals - number.decimals());
}

}  // namespace

Decimal::Decimal(std::int64_t unscaled, int decimals) : unscaled_(unscaled), decimals_(decimals) {
    check_decimals(decimals);
}

Decimal::Decimal(std::string_view text) {
    std::string digits(text.substr(0, text.find('.')));
    if (const std::size_t point = text.find('.'); point != std::string_view::npos) {
        decimals_ = static_cast<int>(std::min<std::size_t>(text.size() - point - 1, 100));
        digits += text.substr(point + 1);
    }
    if (digits.starts_with('+') && !digits.starts_with("+-")) digits.erase(0, 1);
    const char* const end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, unscaled_);
    const bool is_number = stop == end && error != std::errc::invalid_argument && !text.ends_with('.');
    if (!is_number) typed::refuse(typed::no_number, fmt::format("\"{}\" is no decimal number", text));
    if (error != std::errc()) throw_overflow();
    check_decimals(decimals_);
}

Decimal Decimal::rescaled(int decimals) const {
    check_decimals(decimals);
    std::int64_t unscaled = unscaled_;
    if (decimals < decimals_) {
        const std::int64_t lost = power_of_ten(decimals_ - decimals);
        if (unscaled % lost != 0)
            typed::refuse(typed::out_of_range,
                          fmt::format("{} has more than {} decimals", to_string(*this), decimals));
        unscaled /= lost;
    } else if (__builtin_mul_overflow(unscaled, power_of_ten(decimals - decimals_), &unscaled)) {
        throw_overflow();
    }
    return {unscaled, decimals};
}

double Decimal::to_double() const { return std::strtod(to_string(*this).c_str(), nullptr); }

Decimal Decimal::operator-() const {
    std::int64_t negative = 0;
    if (__builtin_sub_overflow(std::int64_t{0}, unscaled_, &negative)) throw_overflow();
    return {negative, decimals_};
}

Decimal operator+(const Decimal& a, const Decimal& b) {
    const int decimals = std::max(a.decimals_, b.decimals_);
    std::int64_t sum = 0;
    if (__builtin_add_overflow(a.rescaled(decimals).unscaled_, b.rescaled(decimals).unscaled_, &sum))
        throw_overflow();
    return {sum, decimals};
}

std::strong_ordering operator<=>(const Decimal& a, const Decimal& b) {
    const std::int64_t whole_a = a.unscaled_ / power_of_ten(a.decimals_);
    const std::int64_t whole_b = b.unscaled_ / power_of_ten(b.decimals_);
    return whole_a != whole_b ? whole_a <=> whole_b : fraction_of(a) <=> fraction_of(b);
}

// The point goes in among the digits, so that no digit is lost to any arithmetic.
std::string to_string(const Decimal& number) {
    const std::int64_t unscaled = number.unscaled();
    const std::uint64_t magnitude =
        unscaled < 0 ? 0 - static_cast<std::uint64_t>(unscaled) : static_cast<std::uint64_t>(unscaled);
    const auto decimals = static_cast<std::size_t>(number.decimals());
    std::string digits = fmt::format("{:0{}}", magnitude, decimals + 1);
    if (decimals > 0) digits.insert(digits.size() - decimals, 1, '.');
    return unscaled < 0 ? "-" + digits : digits;
}

std::ostream& operator<<(std::ostream& out, const Decimal& number) { return out << to_string(number); }

}  // namespace zmfb
