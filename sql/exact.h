/// Column values as they are stored (zmfbconn/exact.h has the rules).
#pragma once

#include <span>

#include "host/value.h"
#include "sql/transaction.h"

namespace zmfb::sql {

/// The header of a query under exact conversion.
host::Value exact_header(std::span<const XSQLVAR> columns);

/// Makes rows of exact values out of fetched rows.
class ExactConverter {
  public:
    /// Blobs are read in `transaction`.
    ExactConverter(std::span<const XSQLVAR> columns, Transaction& transaction)
        : columns_(columns), transaction_(transaction) {}

    /// Makes `row` the row that lies in the columns' buffer. Fails with the first call that does.
    Status convert(host::Value& row);

  private:
    std::span<const XSQLVAR> columns_;
    Transaction& transaction_;
};

}  // namespace zmfb::sql
