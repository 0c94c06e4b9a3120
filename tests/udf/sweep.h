/// Inputs that the driver's functions are compared over.
#pragma once

#include <string>
#include <vector>

namespace zmfb::test {

/// Values as SQL writes them, "null" among them.
struct Inputs {
    std::vector<std::string> texts;
    std::vector<std::string> numbers;
    std::vector<std::string> counts;  ///< starts, lengths and decimals
    std::vector<std::string> moments;
};

/// The whole of them make 1.7 million calls of all functions together, the others some ten thousand.
Inputs inputs(bool whole);

}  // namespace zmfb::test
