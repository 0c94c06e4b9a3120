#include "tool/confirm.h"

#include <fmt/format.h>

#include <cstdio>

#include "tool/line_input.h"
#include "tool/say.h"

namespace zmfb::tool {

std::optional<std::string> ask(std::string_view question) {
    std::fflush(stdout);
    say("{} ", question);
    return LineInput::standard().next();
}

bool confirm(std::string_view question) {
    const std::string answer = ask(fmt::format("{} [y/N]", question)).value_or("");
    return answer == "y" || answer == "Y" || answer == "yes";
}

}  // namespace zmfb::tool
