/// Statements on their way to the object, and what comes of them on its way to a person.
#pragma once

#include <string>

#include "tool/rows/row_writer.h"
#include "tool/session.h"

namespace zmfb::tool {

/// Where the rows of a query go, and how.
struct RowOutput {
    Mode mode = Mode::table;
    std::string file;          ///< standard output when empty
    std::string_view see_all;  ///< how to see what was cut to the width of the terminal
    bool pages = true;         ///< whether what does not fit on a terminal goes through a pager
};

/// Runs a SELECT, in UTF-8, and writes its rows with their values as they are stored. Throws Failure when
/// it fails, after the rows that came before that.
void run_query(Session& session, const std::string& statement, const RowOutput& output);

/// Runs a statement that returns no rows. Throws Failure.
void run_statement(Session& session, const std::string& statement);

}  // namespace zmfb::tool
