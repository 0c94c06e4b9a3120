#include "tool/confirm.h"

#include <fmt/format.h>

#include <cstdio>

#include "tool/line_input.h"
#include "tool/say.h"

namespace zmfb::tool {

bool confirm(std::string_view question) {
    std::fflush(stdout);
    say("{} [y/N] ", question);
    const std::string answer = LineInput::standard().next().value_or("");
    return answer == "y" || answer == "Y" || answer == "yes";
}

}  // namespace zmfb::tool
