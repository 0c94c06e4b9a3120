#include <algorithm>
#include <cstring>
#include <limits>
#include <string_view>

#include "host/date.h"
#include "host/error.h"
#include "host/number.h"
#include "host/text.h"

namespace zmfb::host {
namespace {

Value sum(const Value& a, const Value& b, double result) {
    const int decimals = std::max(shown_picture(a).decimals, shown_picture(b).decimals);
    return {result, computed_picture(result, decimals)};
}

Value shifted(Date date, double days) {
    const double shifted_day = static_cast<double>(date.day) + days;
    if (!(shifted_day >= 1 && shifted_day <= std::numeric_limits<std::int32_t>::max())) return Date{};
    return date_of(calendar_day(Date{static_cast<std::int32_t>(shifted_day)}));
}

bool both(Kind kind, const Value& a, const Value& b) { return a.is(kind) && b.is(kind); }

bool overflows(const Value& a, const Value& b) { return a.text().size() + b.text().size() > max_text_size; }

Value minus_texts(const Value& a, const Value& b) {
    if (overflows(a, b)) return string_overflow("-");
    const std::string_view first = a.text();
    const std::string_view second = b.text();
    const std::size_t kept = first.find_last_not_of(' ') + 1;
    Value made = Value::text_of_size(first.size() + second.size());
    const auto bytes = made.writable_text();
    std::ranges::fill(bytes, ' ');
    std::copy_n(first.begin(), kept, bytes.begin());
    std::ranges::copy(second, bytes.begin() + static_cast<std::ptrdiff_t>(kept));
    return made;
}

}  // namespace

Value operator+(const Value& a, const Value& b) {
    if (both(Kind::character, a, b)) {
        if (overflows(a, b)) return string_overflow("+");
        const std::string_view first = a.text();
        const std::string_view second = b.text();
        if (second.empty()) return a;
        if (first.empty()) return b;
        Value made = Value::text_of_size(first.size() + second.size());
        const auto bytes = made.writable_text();
        std::memcpy(bytes.data(), first.data(), first.size());
        std::memcpy(bytes.data() + first.size(), second.data(), second.size());
        return made;
    }
    if (both(Kind::numeric, a, b)) return sum(a, b, a.number() + b.number());
    if (a.is(Kind::date) && b.is(Kind::numeric)) return shifted(a.date(), b.number());
    if (a.is(Kind::numeric) && b.is(Kind::date)) return shifted(b.date(), a.number());
    return argument_error(Subcode::plus, "+", {a, b});
}

Value operator+(Value&& a, const Value& b) {
    if (!both(Kind::character, a, b) || overflows(a, b)) return static_cast<const Value&>(a) + b;
    const bool itself = &a == &b;
    Value made = std::move(a);
    made.append(itself ? made.text() : b.text());
    return made;
}

Value operator-(const Value& a, const Value& b) {
    if (both(Kind::character, a, b)) return minus_texts(a, b);
    if (both(Kind::numeric, a, b)) return sum(a, b, a.number() - b.number());
    if (a.is(Kind::date) && b.is(Kind::numeric)) return shifted(a.date(), -b.number());
    if (both(Kind::date, a, b)) {
        const double days = static_cast<double>(a.date().day) - static_cast<double>(b.date().day);
        return {days, computed_picture(days, 0)};
    }
    return argument_error(Subcode::minus, "-", {a, b});
}

}  // namespace zmfb::host
