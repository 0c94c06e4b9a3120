/// Column values as texts.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/value.h"
#include "sql/client.h"

namespace zmfb::sql {

/// The letter of a column type (its NULL flag cleared): "C", "N", "D", or one blank for a type that is not
/// converted.
std::string_view translate_type(int type);

/// The day of a timestamp as a text. The next timestamp is often of the same day.
struct Day {
    ISC_DATE date = 0;
    std::string text;  ///< with a blank behind it; "" for none yet
};

/// Makes rows of texts out of fetched rows, with these rules for a column's value:
///
/// - NULL in a column that may be NULL: "NULL".
/// - CHAR: all its characters. VARCHAR: padded with blanks to the declared length. Either ends at a zero
/// byte.
/// - SMALLINT: the whole number, its scale ignored.
/// - INTEGER, BIGINT: of the low 32 bits, signed, the whole number; with a scale, quotient and remainder by
/// its power
///   of ten with a point in between, each with its own sign: 12.05, -1.-50, 0.-5.
/// - FLOAT as printf's "%g", DOUBLE PRECISION as "%f".
/// - TIMESTAMP: 2007-03-01 14:05:09.1234.
/// - Any other type: the text of the value converted before it, "" when there was none yet.
class RowConverter {
  public:
    explicit RowConverter(std::span<const XSQLVAR> columns);

    /// The row that lies in the columns' buffer, in one allocation. The row made before must still be there.
    host::Value convert();

  private:
    std::span<const XSQLVAR> columns_;
    std::vector<char> room_;  // for the texts of numbers
    std::vector<std::string_view> texts_;
    Day day_;
    const host::Value* last_ = nullptr;
};

}  // namespace zmfb::sql
