#include "tool/confirm.h"

#include <fmt/format.h>

#include <cstdio>
#include <iostream>
#include <string>

namespace zmfb::tool {

bool confirm(std::string_view question) {
    std::fflush(stdout);
    fmt::print(stderr, "{} [y/N] ", question);
    std::string answer;
    std::getline(std::cin, answer);
    return answer == "y" || answer == "Y" || answer == "yes";
}

}  // namespace zmfb::tool
