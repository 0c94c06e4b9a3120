/// The driver's functions.
#pragma once

#include <array>
#include <string_view>

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

}  // namespace zmfb::tool
