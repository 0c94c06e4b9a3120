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

}  // namespace zmfb::tool
