/// Statements on their way to the engine, and what comes of them on its way to a person.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "tool/rows/row_writer.h"
#include "tool/session.h"

namespace zmfb::tool {

/// Where the rows of a statement go, and how.
struct RowOutput {
    Mode mode = Mode::table;
    std::string file;          ///< standard output when empty
    std::string_view see_all;  ///< how to see what was cut to the width of the terminal
    bool pages = true;         ///< whether rows of a query that do not fit on a terminal go through a pager
};

/// Runs a SELECT, in UTF-8, and writes its rows with their values as they are stored: in the transaction that
/// is open on the object, or in one of its own. Throws Failure when it fails, after the rows that came before
/// that.
void run_query(Session& session, const std::string& statement, const RowOutput& output);

/// The same for a statement of any kind; one of its own transactions is committed. Returns how many rows it
/// has changed; nothing when it returned rows, which are written. What is thrown on Ctrl-C, or when another
/// transaction is in the way, says whose it may be.
std::optional<std::int64_t> run_statement(Session& session, const std::string& statement,
                                          const RowOutput& output);

/// ", 3 rows" for a statement that changes rows, or has changed some; "" for others.
std::string changes_of(const std::string& statement, std::int64_t changed);

}  // namespace zmfb::tool
