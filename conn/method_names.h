/// The methods in the order of the method table, for calls by names that stand in the code.
///
/// A MethodName made of a literal is looked up when the code is compiled: a name that is not declared, or
/// that takes fewer arguments than are given, does not compile, and one that does costs an index into the
/// table.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>
#include <string_view>

#include "zmfbconn/methods.h"

namespace zmfb {

namespace declared {

inline constexpr std::span<const MethodRow> subjects[] = {connection, sql,      catalog, locks,
                                                          schema,     transfer, matrix};
inline constexpr std::size_t method_count = [] {
    std::size_t count = 0;
    for (const auto rows : subjects) count += rows.size();
    return count;
}();

}  // namespace declared

/// Every declaration, in byte order of the names. A property that can be assigned stands twice: its access
/// row, then its assign row.
inline constexpr auto method_order = [] {
    std::array<const MethodRow*, declared::method_count> order{};
    auto next = order.begin();
    for (const auto rows : declared::subjects) {
        for (const MethodRow& row : rows) *next++ = &row;
    }
    std::ranges::sort(order, [](const MethodRow* a, const MethodRow* b) {
        return a->name != b->name ? a->name < b->name : a->kind < b->kind;
    });
    return order;
}();

/// A method that is called with that many arguments, named by a literal.
template <std::size_t Arguments>
class MethodName {
  public:
    consteval MethodName(const char* name) : row_(find(name)) {}  // NOLINT(google-explicit-constructor)
    [[nodiscard]] constexpr std::size_t row() const { return row_; }

  private:
    static consteval std::size_t find(std::string_view name) {
        const auto found = std::ranges::lower_bound(method_order, name, {}, &MethodRow::name);
        if (found == method_order.end() || (*found)->name != name) throw "no method of that name";
        if (Arguments > (*found)->parameters.size()) throw "more arguments than the method takes";
        return static_cast<std::size_t>(found - method_order.begin());
    }

    std::size_t row_;
};

}  // namespace zmfb
