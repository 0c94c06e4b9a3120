#include "host/compare.h"

#include <compare>
#include <string_view>

#include "host/error.h"

namespace zmfb::host {
namespace {

bool exact = false;

std::string_view without_trailing_blanks(std::string_view s) {
    return s.substr(0, s.find_last_not_of(' ') + 1);
}

bool equal_texts(std::string_view a, std::string_view b) {
    return exact ? without_trailing_blanks(a) == without_trailing_blanks(b) : a.starts_with(b);
}

std::partial_ordering order_of_texts(std::string_view a, std::string_view b) {
    if (equal_texts(a, b)) return std::partial_ordering::equivalent;
    return exact ? without_trailing_blanks(a) <=> without_trailing_blanks(b) : a <=> b;
}

bool answer(Subcode subcode, std::string_view operation, const Value& a, const Value& b) {
    const Value handled = argument_error(subcode, operation, {a, b});
    return handled.is(Kind::logical) && handled.logical();
}

// Whether == and = have a rule for two values of this one kind.
bool has_equality(Kind kind) { return kind < Kind::array; }

using Holds = bool (*)(std::partial_ordering);

bool ordered(Subcode subcode, std::string_view operation, const Value& a, const Value& b, Holds holds) {
    if (a.kind() != b.kind()) return answer(subcode, operation, a, b);
    switch (a.kind()) {
        case Kind::character:
            return holds(order_of_texts(a.text(), b.text()));
        case Kind::numeric:
            return holds(a.number() <=> b.number());
        case Kind::logical:
            return holds(a.logical() <=> b.logical());
        case Kind::date:
            return holds(a.date() <=> b.date());
        default:
            return answer(subcode, operation, a, b);
    }
}

}  // namespace

bool exactly_equal(const Value& a, const Value& b) {
    if (a.is_nil() || b.is_nil()) return a.kind() == b.kind();
    if (a.kind() != b.kind() || a.is(Kind::block)) return answer(Subcode::exactly_equal, "==", a, b);
    return a.same(b);
}

bool equal(const Value& a, const Value& b) {
    if (a.is_nil() || b.is_nil()) return a.kind() == b.kind();
    if (a.kind() != b.kind() || !has_equality(a.kind())) return answer(Subcode::equal, "=", a, b);
    return a.is(Kind::character) ? equal_texts(a.text(), b.text()) : a.same(b);
}

bool unequal(const Value& a, const Value& b) {
    if (a.is_nil() || b.is_nil()) return a.kind() != b.kind();
    if (a.kind() != b.kind() || !has_equality(a.kind())) return answer(Subcode::unequal, "!=", a, b);
    return !equal(a, b);
}

bool less(const Value& a, const Value& b) {
    return ordered(Subcode::less, "<", a, b, [](std::partial_ordering order) { return order < 0; });
}

bool less_or_equal(const Value& a, const Value& b) {
    return ordered(Subcode::less_or_equal, "<=", a, b,
                   [](std::partial_ordering order) { return order <= 0; });
}

bool greater(const Value& a, const Value& b) {
    return ordered(Subcode::greater, ">", a, b, [](std::partial_ordering order) { return order > 0; });
}

bool greater_or_equal(const Value& a, const Value& b) {
    return ordered(Subcode::greater_or_equal, ">=", a, b,
                   [](std::partial_ordering order) { return order >= 0; });
}

bool set_exact() { return exact; }

void set_exact(bool on) { exact = on; }

}  // namespace zmfb::host
