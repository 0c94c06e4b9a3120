/// A checksum over values, which is the same for a table that was exported and the one that an import of its
/// file makes.
#pragma once

#include <string>

#include "tool/transfer/sha256.h"
#include "zmfbconn/dbf/header.h"
#include "zmfbconn/rows.h"

namespace zmfb::tool {

/// Takes values in as the field of a DBF file keeps them that they go into or came from: numbers by their
/// value whatever the column's type, texts in UTF-8 without blanks at the end, NULL as what it becomes where
/// the field's column has none.
class ValueSum {
  public:
    /// Throws SqlError when the value cannot be read as the kind.
    void add(const Field& value, dbf::Kind kind);
    /// 64 digits, of all values in the order in which they were added; nothing more can be added then.
    std::string digits();

  private:
    void add_null(dbf::Kind kind);
    void add_text(std::string_view text);

    Sha256 sum_;
    std::string pending_;
};

}  // namespace zmfb::tool
