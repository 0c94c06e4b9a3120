#include <algorithm>
#include <array>
#include <cstddef>
#include <ranges>
#include <span>

#include "catalog/methods.h"
#include "conn/class.h"
#include "conn/methods.h"
#include "locks/methods.h"
#include "matrix/methods.h"
#include "schema/methods.h"
#include "sql/methods.h"
#include "transfer/methods.h"
#include "zmfbconn/connection.h"

namespace zmfb::conn {
namespace {

using host::Method;
using host::Variable;
using host::Visibility;

// The rows of all folders, a property's access row before its assign row.
template <class Row, std::size_t Count>
constexpr std::array<Row, Count> in_order(std::span<const std::span<const Row>> lists) {
    std::array<Row, Count> rows{};
    auto next = rows.begin();
    for (const auto list : lists) next = std::ranges::copy(list, next).out;
    std::ranges::sort(rows, [](const Row& a, const Row& b) {
        return a.name != b.name ? a.name < b.name : a.kind < b.kind;
    });
    return rows;
}

constexpr std::span<const Method> bound_methods[] = {conn::methods,  sql::methods,    catalog::methods,
                                                     locks::methods, schema::methods, transfer::methods,
                                                     matrix::methods};
constexpr std::size_t count_of(const auto& lists) {
    std::size_t count = 0;
    for (const auto list : lists) count += list.size();
    return count;
}

constexpr auto table = in_order<Method, count_of(bound_methods)>(bound_methods);
constexpr auto declarations = in_order<MethodRow, count_of(declared::subjects)>(declared::subjects);
static_assert(std::ranges::equal(table, declarations, {}, &Method::name, &MethodRow::name),
              "the methods of the folders and those that are declared differ");

Value empty_array() { return Value::array_of_size(0); }
Value empty_text() { return ""; }
Value nil() { return {}; }
template <bool Logical>
Value logical() {
    return Logical;
}
template <int Number>
Value number() {
    return Number;
}

constexpr std::array variables{
    Variable{"aaliases", Visibility::protected_, empty_array},
    Variable{"bconn", Visibility::property, nil},
    Variable{"bconn", Visibility::hidden, logical<false>},
    Variable{"brddativo", Visibility::hidden, logical<true>},
    Variable{"dbhndl", Visibility::property, nil},
    Variable{"dbhndl", Visibility::hidden, number<0>},
    Variable{"iglbskchsz", Visibility::protected_, number<11>},
    Variable{"iglbskmode", Visibility::protected_, number<1>},
    Variable{"oldscreen", Visibility::protected_, nil},
    Variable{"previousrd", Visibility::hidden, empty_text},
    Variable{"sdbname", Visibility::property, nil},
    Variable{"sdbname", Visibility::hidden, empty_text},
    Variable{"sfullpathd", Visibility::protected_, empty_text},
    Variable{"srolename", Visibility::property, nil},
    Variable{"srolename", Visibility::hidden, empty_text},
    Variable{"susername", Visibility::property, nil},
    Variable{"susername", Visibility::hidden, empty_text},
};
static_assert(variables.size() == static_cast<std::size_t>(Var::susername) + 1);

}  // namespace

const host::Class& zmfbconn_class() {
    // Never destroyed: objects of static duration may end after it would.
    static const auto& the_class = *new host::Class("ZMFBCONN", variables, table);
    return the_class;
}

}  // namespace zmfb::conn

namespace zmfb {

std::span<const MethodRow> methods() { return conn::declarations; }

}  // namespace zmfb
