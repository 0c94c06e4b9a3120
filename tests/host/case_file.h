/// Case files: one case a line, three columns with tabs between, no header: the function, with ":EXACT_ON" or
/// ":EXACT_OFF" behind it where SET EXACT matters (off otherwise); an expression; its result, a literal or
/// ERROR.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

namespace zmfb::host_test {

struct Case {
    std::size_t line = 0;
    std::string function;
    std::string expression;
    std::string expected;
};

/// The cases of a file, in order; blank lines are passed over. Throws std::runtime_error when it cannot be
/// read or a line has not three columns.
std::vector<Case> read_cases(const std::filesystem::path& file);

/// "" when the case holds, else what it gave instead.
std::string difference(const Case& the_case);

}  // namespace zmfb::host_test
