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

namespace zmfb::conn {
namespace {

using host::Method;
using host::Variable;
using host::Visibility;

constexpr auto joined_table() {
    std::array<Method, method_order.size()> table{};
    std::size_t count = 0;
    for (const std::span<const Method> rows :
         {std::span<const Method>(conn::methods), std::span<const Method>(sql::methods),
          std::span<const Method>(catalog::methods), std::span<const Method>(locks::methods),
          std::span<const Method>(schema::methods), std::span<const Method>(transfer::methods),
          std::span<const Method>(matrix::methods)}) {
        for (const Method& row : rows) table.at(count++) = row;
    }
    std::ranges::sort(table, [](const Method& a, const Method& b) {
        return a.name != b.name ? a.name < b.name : a.kind < b.kind;
    });
    return table;
}

constexpr auto table = joined_table();
static_assert(std::ranges::equal(table, method_order, {}, &Method::name, &MethodRow::name),
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
