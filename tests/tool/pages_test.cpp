// What the texts of a command line may hold, in the pages made from them.
#include "tool/generate/pages.h"

#include <gtest/gtest.h>

#include "tests/support/process.h"

namespace zmfb::test {
namespace {

using tool::CommandLineHelp;

CommandLineHelp with_help(const std::string& text) {
    return {
        .help = "A tool",
        .footer = "",
        .options = {},
        .groups = {},
        .commands = {{.name = "odd", .group = "Odd", .help = text, .example = "zmfb odd", .options = {}}}};
}

TEST(Pages, OddCharactersOfATextAreShownAsTheyAre) {
    const CommandLineHelp help = with_help(".a 'b' \\n [c]: d-e");
    EXPECT_NE(tool::man_page(help, "1").find("\n\\&.a \\(aqb\\(aq \\(rsn [c]: d\\-e.\n"), std::string::npos)
        << tool::man_page(help, "1");
    EXPECT_NE(tool::zsh_completion(help).find("'odd:.a '\\''b'\\'' \\n \\[c\\]\\: d-e'\n"), std::string::npos)
        << tool::zsh_completion(help);
}

}  // namespace
}  // namespace zmfb::test
