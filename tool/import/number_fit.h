/// Which numbers a column holds.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zmfb::tool {

/// Why a number as dbf::read_value() finds it cannot become NUMERIC(length,decimals); "" when it can. The
/// engine rounds what has more decimals; but all digits together, without the point, have to fit the 32 bits
/// (from a length of 10 on 64) that it computes with. `rounded` is set when digits are lost.
std::string number_problem(std::string_view text, std::size_t length, int decimals, bool* rounded = nullptr);

}  // namespace zmfb::tool
