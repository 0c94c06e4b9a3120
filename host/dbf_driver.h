/// The native driver: tables in DBF files of type 3, with fields of the types C, N, D and L.
#pragma once

#include <memory>
#include <string_view>

#include "host/driver.h"

namespace zmfb::host {

inline constexpr std::string_view dbf_driver_name = "DBFIDX";

std::shared_ptr<Driver> make_dbf_driver();

}  // namespace zmfb::host
