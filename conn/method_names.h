/// Calls by names that stand in the code.
///
/// A MethodName made of a literal is looked up when the code is compiled: a name that is not declared, or
/// that takes fewer arguments than are given, does not compile, and one that does costs an index into the
/// table.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

#include "zmfbconn/methods.h"

namespace zmfb {

namespace declared {

inline constexpr std::span<const MethodRow> subjects[] = {connection, sql,      catalog, locks,
                                                          schema,     transfer, matrix};

}  // namespace declared

/// A method that is called with that many arguments, named by a literal.
template <std::size_t Arguments>
class MethodName {
  public:
    consteval MethodName(const char* name) : row_(find(name)) {}  // NOLINT(google-explicit-constructor)
    [[nodiscard]] constexpr std::size_t row() const { return row_; }

  private:
    // The table is in byte order of the names: as many rows stand before a method as have lesser names.
    static consteval std::size_t find(std::string_view name) {
        bool is_there = false;
        std::size_t most = 0;
        std::size_t before = 0;
        for (const auto rows : declared::subjects) {
            for (const MethodRow& row : rows) {
                if (row.name < name) ++before;
                if (row.name != name || is_there) continue;
                is_there = true;
                most = row.parameters.size();
            }
        }
        if (!is_there) throw "no method of that name";
        if (Arguments > most) throw "more arguments than the method takes";
        return before;
    }

    std::size_t row_;
};

}  // namespace zmfb
