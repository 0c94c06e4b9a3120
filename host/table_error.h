/// Raising what goes wrong with tables and their files.
#pragma once

#include <string_view>

#include "host/error.h"

namespace zmfb::host {

/// What the error object of a failure with a table says.
struct TableFailure {
    GenCode gencode = GenCode::open;
    Subcode subcode = Subcode::table_open;
    std::string_view description{};  ///< ": " and the file follow when there is one
    std::string_view operation{};
    std::string_view file{};
    std::string_view subsystem = "DBFIDX";
    int oscode = 0;           ///< of the DOS family (host/descriptor.h)
    bool candefault = false;  ///< an error that a program may meet by looking at NETERR()
};

/// Hands the error to the error handler; returns what the handler returns.
Value raise_table_error(const TableFailure& failure);

}  // namespace zmfb::host
