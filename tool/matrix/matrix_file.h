/// A matrix file as the tool takes it in: once, so that what was looked at is what is applied.
#pragma once

#include <string>

#include "host/value.h"

namespace zmfb::tool {

/// The matrix that a file holds, in the form of an array. Throws Failure for a file that cannot be read, and
/// for one that is no matrix: not even one block of a table or one line of a field is in it.
host::Value read_matrix(const std::string& file);

}  // namespace zmfb::tool
