// Orders, seeking, filters: what leads to other rows.
#include <fmt/format.h>

#include <algorithm>
#include <charconv>

#include "tool/browse/area_source.h"
#include "tool/browse/browse.h"
#include "tool/browse/cell_rule.h"
#include "zmfbconn/area_error.h"
#include "zmfbconn/cancel.h"
#include "zmfbconn/sql_error.h"

namespace zmfb::tool::browse {
namespace {

Parameter parameter_of(const CellValue& value) {
    return std::visit(
        [](const auto& held) -> Parameter {
            if constexpr (std::same_as<std::remove_cvref_t<decltype(held)>, std::monostate>) {
                return std::nullopt;
            } else {
                return held;
            }
        },
        value);
}

// What was typed as a value of that kind; nothing when it is none.
std::optional<CellValue> value_as(CellRule::Kind kind, const std::string& text) try {
    if (kind == CellRule::Kind::number) return Decimal(text);
    return typed_value({.kind = kind}, text);
} catch (const Failure&) {
    return std::nullopt;
} catch (const SqlError&) {
    return std::nullopt;
}

// Uses what was typed as the kind of key that the order has.
template <class Use>
bool with_key(const std::string& text, const Use& use) try {
    return use(Parameter(text));
} catch (const AreaError& error) {
    if (error.reason() != AreaError::Reason::no_order) throw;
    for (const auto kind : {CellRule::Kind::number, CellRule::Kind::day, CellRule::Kind::logical}) {
        const std::optional<CellValue> value = value_as(kind, text);
        if (!value) continue;
        try {
            return use(parameter_of(*value));
        } catch (const AreaError& other) {
            if (other.reason() != AreaError::Reason::no_order) throw;
        }
    }
    throw;
}

// Keys of UPPER(...) have no other letters.
std::string as_in(const AreaOrder& order, std::string text) {
    if (order.expression.find("UPPER(") == std::string::npos) return text;
    std::ranges::transform(text, text.begin(),
                           [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; });
    return text;
}

std::optional<std::int64_t> number_of(std::string_view text) {
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return number;
}

}  // namespace

// Behind the last one come the record numbers again.
void Browse::next_order() {
    Area& area = *source_.area();
    const std::vector<AreaOrder> orders = area.orders();
    const auto current = std::ranges::find(orders, area.order(), &AreaOrder::name);
    const auto next = current == orders.end() ? orders.begin() : current + 1;
    if (orders.empty()) {
        message_ = {"the table has no orders", false};
        return;
    }
    area.order(next == orders.end() ? "" : next->name);
    grid_.window().forget_count();
    grid_.window().reload();
    if (next == orders.end()) {
        message_ = {"in the order of the record numbers", false};
    } else {
        message_ = {fmt::format("order {}: {}{}{}", next->name, next->expression,
                                next->unique ? ", the first row of each key" : "",
                                next->complete ? "" : ", without its index"),
                    false};
    }
}

void Browse::seek() {
    Area& area = *source_.area();
    const std::optional<AreaOrder> order = order_of(area);
    if (!order) {
        message_ = {"a key is sought in an order: o chooses one, g goes to a record number", false};
        return;
    }
    const std::optional<std::string> typed = ask(fmt::format("Seek in {}:", order->name), sought_);
    if (!typed || typed->empty()) return;
    sought_ = as_in(*order, *typed);
    const std::int64_t before = grid_.window().number();
    const bool found =
        with_key(sought_, [&](const Parameter& key) { return area.seek(key, {.soft = true}); });
    if (!found) message_ = {fmt::format("there is no {}; this is what comes next", sought_), false};
    if (area.eof()) {
        message_ = {fmt::format("there is no {}, and nothing behind it", sought_), false};
        area.go(before);
    } else {
        grid_.window().go(area.recno());
    }
}

void Browse::seek_on() {
    Area& area = *source_.area();
    if (sought_.empty() || area.order().empty()) {
        message_ = {"nothing was sought: / seeks in an order", false};
        return;
    }
    const bool found = area.go(grid_.window().number()) && area.skip(1) &&
                       with_key(sought_, [&](const Parameter& key) { return area.has_key(key); });
    if (found) {
        grid_.window().go(area.recno());
    } else {
        message_ = {fmt::format("no more rows with {}", sought_), false};
    }
}

// A condition that fails when rows are read is as wrong as one that cannot be read itself.
void Browse::filter() {
    const std::optional<std::string> typed = ask("Only rows where:", filter_);
    if (!typed || *typed == filter_) return;
    source_.filter(*typed);
    try {
        grid_.window().forget_count();
        if (typed->empty() && source_.area() != nullptr) {
            grid_.window().reload();
        } else {
            grid_.window().top();
        }
    } catch (...) {
        const Undisturbed by_what_ends_it;
        source_.filter(filter_);
        throw;
    }
    filter_ = *typed;
}

void Browse::go_to_record() {
    const bool is_record = source_.area() != nullptr;
    const std::string_view what = is_record ? "record" : "row";
    const std::optional<std::string> typed = ask(fmt::format("To {}:", what));
    if (!typed || typed->empty()) return;
    const std::optional<std::int64_t> number = number_of(*typed);
    if (!number) {
        message_ = {fmt::format("{} is no number", *typed), true};
    } else if (!grid_.window().go(*number)) {
        message_ = {source_.row(*number) ? fmt::format("the filter leaves {} {} out", what, *number)
                                         : fmt::format("there is no {} {}", what, *number),
                    false};
    }
}

}  // namespace zmfb::tool::browse
