/// What one field line of a matrix means for a table as it stands.
#pragma once

#include <cstddef>

#include "conn/self.h"

namespace zmfb::matrix {

enum class Action { none, add, alter, drop, already_dropped };

struct Decision {
    Action action = Action::none;
    bool reorder = false;  ///< the table's fields are to be put into the order of the lines afterwards
};

/// Decides on line `line`, counted from 1 and not beyond `rights`: `left` is its field as it was extracted,
/// `rights` are the wanted fields of all lines, `current` is the table's structure without the driver's own
/// fields. Asks only the object's comparisons of descriptors, which need no database.
Decision decide(Self& self, const Value& left, const Value& rights, const Value& current, std::size_t line);

}  // namespace zmfb::matrix
