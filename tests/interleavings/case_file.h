/// Case files: what sessions do at once, one step a line.
///
/// A line is a word and what belongs to it; # begins a comment.
///
///     setup   a call that is made once for each case of the file, before anything else
///     before  a statement that may stand in a block; it is run before each interleaving
///     case    the name of the case, which the following lines belong to
///     A       a call of session A; $A stands for the id of its work area. Sessions are A, B and C
///     first   a session and a call of it that is made before each interleaving
///     last    the same behind it
///     shows   a query whose rows belong to the outcome
///     never   a pattern (a regular expression) that no outcome has, be the run serial or not
///     also    an outcome that no serial run gives and that is known
///
/// What stands before the first case is for all cases of the file.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace zmfb::test {

struct InterleavingCase {
    std::string file;
    std::string name;
    std::vector<std::string> setup, before, shows, never, also;
    using Calls = std::vector<std::vector<std::string>>;  ///< of each session
    Calls first, sessions, last;
};

/// The cases of a file. Throws std::runtime_error with the place of a line that is none of these.
std::vector<InterleavingCase> read_interleavings(const std::filesystem::path& file);

/// The name of a session by its number.
inline char session_name(std::size_t number) { return static_cast<char>('A' + number); }

}  // namespace zmfb::test
