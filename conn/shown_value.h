/// Values as people write them.
#pragma once

#include <string>
#include <string_view>

#include "zmfbconn/sql_value.h"

namespace zmfb::conn {

/// @{
/// As few digits as tell it from others; with an exponent when it is very large or very small.
std::string shown_real(double number);
std::string shown_real(float number);
/// @}
/// "2026-11-22"
std::string shown_day(std::chrono::year_month_day day);
/// "09:30:15.1250"
std::string shown_time(TimeOfDay time);
/// Both, with a blank between them.
std::string shown_moment(Timestamp moment);
/// Two upper-case digits a byte.
std::string hexadecimal(std::string_view bytes);

}  // namespace zmfb::conn
