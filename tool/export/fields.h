/// What the columns of a query become in a DBF file.
#pragma once

#include <optional>
#include <string>

#include "zmfbconn/dbf/writer.h"
#include "zmfbconn/rows.h"

namespace zmfb::tool {

/// What the engine's own tables say of a column, beyond what a query tells.
struct Declared {
    int precision = 0;       ///< of a NUMERIC or DECIMAL
    bool of_driver = false;  ///< a number of the driver's has its digits as the length of the field
    bool logical = false;    ///< one of the driver's
};

/// A column that goes into a field.
struct ExportField {
    /// Sets the value of the field at `place` for the record to come; not for NULL. Throws dbf::Unfit, and
    /// SqlError.
    using Put = void (*)(dbf::Writer& writer, std::size_t place, const Field& value);

    std::size_t column = 0;  ///< its place in the query
    dbf::NewField field;     ///< named as the column
    dbf::Kind kind;          ///< of the field
    Put put;
    std::string loss;  ///< what its type loses, in words that follow the column's name; "" for nothing
};

/// The field of a column; none when the format has no type for it. `character_bytes` is what a character
/// takes at most in the file.
std::optional<ExportField> export_field(const Column& column, const Declared& declared, dbf::Format format,
                                        std::size_t character_bytes);

}  // namespace zmfb::tool
