/// Reading the answers of internalselect: a header, then the data rows.
#pragma once

#include "conn/statement.h"
#include "host/array.h"
#include "host/value.h"

namespace zmfb::catalog {

/// The data rows, without the header; an empty array when there is none.
inline host::Value data_rows(const host::Value& result) {
    if (!has_row(result)) return host::array_of();
    return host::acopy(result, host::Value::array_of_size(result.size() - 1), 2);
}

}  // namespace zmfb::catalog
