#include "conn/shown_value.h"

#include <fmt/format.h>

#include <charconv>
#include <cmath>
#include <iterator>

namespace zmfb::conn {

namespace {

template <class Real>
std::string in_digits(Real number) {
    constexpr Real smallest_plain = static_cast<Real>(0.00001), first_with_exponent = static_cast<Real>(1e16);
    const Real size = std::abs(number);
    const bool plain = size == 0 || (size >= smallest_plain && size < first_with_exponent);
    char text[64];
    const auto written = std::to_chars(text, text + sizeof text, number,
                                       plain ? std::chars_format::fixed : std::chars_format::scientific);
    return {text, written.ptr};
}

}  // namespace

std::string shown_real(double number) { return in_digits(number); }
std::string shown_real(float number) { return in_digits(number); }

std::string shown_day(std::chrono::year_month_day day) {
    return fmt::format("{:04}-{:02}-{:02}", static_cast<int>(day.year()), static_cast<unsigned>(day.month()),
                       static_cast<unsigned>(day.day()));
}

// In a wider type: of a time that is none the smallest has no opposite.
std::string shown_time(TimeOfDay time) {
    const std::chrono::hh_mm_ss parts(std::chrono::duration<std::int64_t, Tick>{time});
    return fmt::format("{:02}:{:02}:{:02}.{:04}", parts.hours().count(), parts.minutes().count(),
                       parts.seconds().count(), parts.subseconds().count());
}

std::string shown_moment(Timestamp moment) {
    const auto day = std::chrono::floor<std::chrono::days>(moment);
    return shown_day(std::chrono::year_month_day(day)) + ' ' +
           shown_time(TimeOfDay(static_cast<std::int32_t>((moment - day).count())));
}

std::string hexadecimal(std::string_view bytes) {
    std::string text;
    for (const char byte : bytes) fmt::format_to(std::back_inserter(text), "{:02X}", byte & 0xFF);
    return text;
}

}  // namespace zmfb::conn
