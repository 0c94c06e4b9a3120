/// A matrix file as the tool takes it in: once, so that what was looked at is what is applied.
#pragma once

#include <string>
#include <vector>

#include "host/value.h"
#include "tool/name.h"

namespace zmfb::tool {

/// The matrix that a file holds, in the form of an array. Throws Failure for a file that cannot be read, and
/// for one that is no matrix: not even one block of a table or one line of a field is in it.
host::Value read_matrix(const std::string& file);

/// The names of the tables in a matrix, each once.
std::vector<Name> tables_in(const host::Value& matrix);

/// One line of a field: what is on its left-hand side, and the field that its right-hand side wants. Bytes.
struct FieldLine {
    std::string table;  ///< in upper case
    std::string field;  ///< as it is called now, in upper case
    std::string type;   ///< "C", "N", "D" or "L", where the line is well formed
    int length = 0;
    int decimals = 0;
};

/// The lines of a matrix that have a field on both sides, in their order.
std::vector<FieldLine> field_lines(const host::Value& matrix);

}  // namespace zmfb::tool
