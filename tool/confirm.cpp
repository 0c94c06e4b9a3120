#include "tool/confirm.h"

#include <fmt/format.h>

#include <cstdio>

#include "tool/errors.h"
#include "tool/line_input.h"
#include "tool/say.h"

namespace zmfb::tool {

std::optional<std::string> ask(std::string_view question) {
    std::fflush(stdout);
    say("{} ", question);
    std::optional<std::string> answer;
    try {
        answer = LineInput::standard().next();
    } catch (const Failure&) {
        say("\n");
        throw;
    }
    if (!answer) say("\n");
    return answer;
}

bool confirm(std::string_view question) {
    const std::string answer = ask(fmt::format("{} [y/N]", question)).value_or("");
    return answer == "y" || answer == "Y" || answer == "yes";
}

}  // namespace zmfb::tool
