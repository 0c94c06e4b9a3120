/// What an object that makes the driver the default asks of this folder.
#pragma once

#include "host/class.h"

namespace zmfb::rdd {

/// Has the object serve the work areas that are opened with the driver "ZMRDDFIRE" from now on, and makes the
/// driver known to the runtime, unless a program has brought one of its own in under that name.
void serve_areas(host::Object& object);
/// The object is about to go: it serves none from now on.
void serve_no_areas(const host::Object& object);

}  // namespace zmfb::rdd
