/// What an object that lets go of its database asks of this folder.
#pragma once

#include <string_view>

#include "host/class.h"

namespace zmfb::rdd {

/// Closes the area that an object has announced under an alias, if it is one of zmfbconn/area.h; writes that
/// are held together are undone first.
void close_area(host::Object& object, std::string_view alias);
/// The same of all of them, announced or not.
void close_areas(host::Object& object);

}  // namespace zmfb::rdd
