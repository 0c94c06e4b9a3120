/// The commands of the tool, one function each. They print to standard output and throw Failure to end early.
#pragma once

#include <string>
#include <vector>

#include "tool/session.h"

namespace zmfb::tool {

/// Makes the database, declares the functions, attaches once so that the system tables exist.
Exit create_command(Session& session);
/// The method table: name, number of parameters, kind, separated by tabs, ordered by name.
Exit methods_command(Session& session);
/// Evaluates calls one after another; "-" reads one a line from standard input.
Exit call_command(Session& session, const std::vector<std::string>& expressions);
Exit import_command(Session& session, const std::vector<std::string>& files);
Exit tables_command(Session& session);
Exit struct_command(Session& session, const std::string& table);
Exit query_command(Session& session, const std::string& statement);
Exit exec_command(Session& session, const std::string& statement);

/// Record and table locks with their holders; open registrations likewise.
Exit locks_command(Session& session);
Exit opens_command(Session& session);
/// Removes every lock of a table, or all that the system tables hold; asks first unless `yes`.
Exit unlock_command(Session& session, const std::string& table, bool yes);
Exit clear_command(Session& session, bool yes);

/// Writes the structures of tables (of all tables without names) to a file, or to standard output without
/// one.
Exit matrix_extract_command(Session& session, const std::vector<std::string>& tables,
                            const std::string& file);
/// Prints what applying a matrix would do.
Exit matrix_check_command(Session& session, const std::string& file);
/// Applies a matrix; shows what would be done and asks first unless `yes`.
Exit matrix_apply_command(Session& session, const std::string& file, bool yes);

}  // namespace zmfb::tool
