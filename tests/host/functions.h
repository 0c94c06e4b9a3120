/// The functions that expressions may call.
#pragma once

#include <string_view>

#include "host/value.h"

namespace zmfb::host_test {

using Function = host::Value (*)(host::Args);

/// The function of that name (upper case), or the operation of work areas; nullptr when there is none.
Function find_function(std::string_view name);

}  // namespace zmfb::host_test
