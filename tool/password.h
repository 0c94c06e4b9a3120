/// Where a password comes from, and how it stays out of sight.
#pragma once

#include <optional>
#include <string>

#include "tool/session.h"

namespace zmfb::tool {

/// What the command line said of a password.
struct GivenPassword {
    bool on_command_line = false;  ///< then Options has it already
    std::string file;              ///< whose first line it is
};

/// Completes the password of the options: the first line of the file, or ISC_PASSWORD. One that was given on
/// the command line is kept, with a warning. Throws Failure (usage) when the file cannot be read.
void find_password(Options& options, const GivenPassword& given);

/// Overwrites the value of --password in the arguments of the process, for those who list processes.
void hide_password(int argc, char** argv);

/// Asks for a password on standard error and reads it from the terminal without an echo; nothing when
/// standard input is no terminal, or it ends there.
std::optional<std::string> ask_for_password(const std::string& user, const std::string& database);

}  // namespace zmfb::tool
