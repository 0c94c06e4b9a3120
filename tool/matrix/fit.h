/// Whether the values of a field fit what it is to become.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tool/matrix/matrix_file.h"
#include "zmfbconn/connection.h"

namespace zmfb::tool {

/// How many records there are of a kind, and the numbers of the first of them.
struct Records {
    std::uint64_t count = 0;
    std::vector<std::int64_t> first;
};

struct Fit {
    Records misfits;      ///< the engine refuses the value
    Records changed;      ///< it takes another one for it: a number is rounded
    std::string refusal;  ///< why the engine has no such field; empty when it has
};

/// "C(10)", "N(8,2)", "D" or "L".
std::string wanted_type(const FieldLine& line);

/// Has the engine convert every value of the field, as changing it will do, and changes nothing. The field is
/// one of a table of the driver.
Fit fit_of(zmFBConn& connection, const FieldLine& line);

}  // namespace zmfb::tool
