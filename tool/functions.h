/// The functions that the driver's statements call in a database.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tool/dependents.h"
#include "zmfbconn/connection.h"
#include "zmfbconn/database.h"

namespace zmfb::tool {

struct DriverFunction {
    std::string_view name;
    std::string_view call;  ///< one that has a result
};

inline constexpr std::array driver_functions{
    DriverFunction{"ZMBLOBSUBSTR", "ZMBLOBSUBSTR(CAST('x' AS BLOB SUB_TYPE TEXT), 1, 1)"},
    DriverFunction{"ZMTRIM", "ZMTRIM('x')"},
    DriverFunction{"ZMLOWER", "ZMLOWER('x')"},
    DriverFunction{"ZMUPPER", "ZMUPPER('x')"},
    DriverFunction{"ZMSUBSTR", "ZMSUBSTR('x', 1, 1)"},
    DriverFunction{"ZMDTOS", "ZMDTOS(CAST('2007-03-01' AS TIMESTAMP))"},
    DriverFunction{"SKIPPAD", "SKIPPAD('x')"},
    DriverFunction{"ZMSTR", "ZMSTR(1, 3, 0)"},
    DriverFunction{"ZMSTRZERO", "ZMSTRZERO(1, 3, 0)"},
    DriverFunction{"ZMPADR", "ZMPADR('x', 3)"},
    DriverFunction{"ZMPADL", "ZMPADL('x', 3)"},
};

/// "stored" and "module", as people name them.
inline constexpr std::string_view stored_word = "stored", module_word = "module";
/// What one of the two words names; by_engine for "".
Functions functions_named(std::string_view word);

/// Which ones a database has, all of them; none when it has not. Throws Failure.
std::optional<Functions> functions_of(zmFBConn& connection);
/// Why it has not: the missing ones, or that they are no set. Throws Failure.
std::string functions_problem(zmFBConn& connection);
/// What in the database uses them, other than themselves. Throws Failure.
std::vector<Dependent> dependents_of_functions(zmFBConn& connection);

}  // namespace zmfb::tool
