#include "operators.h"

#include <array>
#include <cmath>

#include "host/compare.h"
#include "host/error.h"
#include "host/number.h"
#include "host/settings.h"
#include "host/text.h"

namespace zmfb::host_test {
namespace {

using host::Kind;
using host::Subcode;
using host::Value;

Value remainder(const Value& a, const Value& b) {
    if (!a.is(Kind::numeric) || !b.is(Kind::numeric))
        return host::argument_error(Subcode::divide, "%", {a, b});
    if (b.number() == 0) {
        return host::runtime_error(host::GenCode::zero_divide, Subcode::zero_divide, "Zero divisor: %");
    }
    const double result = std::fmod(a.number(), b.number());
    return {result, host::computed_picture(result, result == std::trunc(result) ? 0 : host::set_decimals())};
}

Value power(const Value& a, const Value& b) {
    if (!a.is(Kind::numeric) || !b.is(Kind::numeric))
        return host::argument_error(Subcode::times, "^", {a, b});
    const double result = std::pow(a.number(), b.number());
    return {result, host::computed_picture(result, host::set_decimals())};
}

constexpr std::array relations{
    OperatorRow{"=", [](const Value& a, const Value& b) -> Value { return host::equal(a, b); }},
    OperatorRow{"==", [](const Value& a, const Value& b) -> Value { return host::exactly_equal(a, b); }},
    OperatorRow{"!=", [](const Value& a, const Value& b) -> Value { return host::unequal(a, b); }},
    OperatorRow{"<>", [](const Value& a, const Value& b) -> Value { return host::unequal(a, b); }},
    OperatorRow{"#", [](const Value& a, const Value& b) -> Value { return host::unequal(a, b); }},
    OperatorRow{"<", [](const Value& a, const Value& b) -> Value { return host::less(a, b); }},
    OperatorRow{"<=", [](const Value& a, const Value& b) -> Value { return host::less_or_equal(a, b); }},
    OperatorRow{">", [](const Value& a, const Value& b) -> Value { return host::greater(a, b); }},
    OperatorRow{">=", [](const Value& a, const Value& b) -> Value { return host::greater_or_equal(a, b); }},
    OperatorRow{"$", [](const Value& a, const Value& b) -> Value { return host::contained(a, b); }},
};
constexpr std::array sums{
    OperatorRow{"+", [](const Value& a, const Value& b) { return a + b; }},
    OperatorRow{"-", [](const Value& a, const Value& b) { return a - b; }},
};
constexpr std::array products{
    OperatorRow{"*", host::times},
    OperatorRow{"/", host::divide},
    OperatorRow{"%", remainder},
};
constexpr std::array powers{
    OperatorRow{"^", power},
    OperatorRow{"**", power},
};
constexpr std::array<std::span<const OperatorRow>, 4> levels{relations, sums, products, powers};

}  // namespace

std::span<const std::span<const OperatorRow>> binary_operators() { return levels; }

Value logical_not(const Value& x) { return !truth(x, ".NOT."); }

bool truth(const Value& x, std::string_view operation) {
    if (x.is(Kind::logical)) return x.logical();
    const Value answer = host::argument_error(Subcode::wrong_kind, operation, {x});
    return answer.is(Kind::logical) && answer.logical();
}

Value& element(const Value& a, const Value& index) {
    if (!a.is(Kind::array) || !index.is(Kind::numeric)) {
        host::argument_error(Subcode::wrong_kind, "array access", {a, index});
        return a[0];
    }
    return a[index.integer() < 1 ? 0 : static_cast<std::size_t>(index.integer())];
}

}  // namespace zmfb::host_test
