// The seconds that the tool shows while the clock is put back.
#include <nlohmann/json.hpp>
#include <regex>

#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

using ClockPutBack = Tool;

TEST_F(ClockPutBack, ShowsNoNegativeSeconds) {
    const std::string path = database();
    const std::vector<std::string> environment{"LD_PRELOAD=" ZMFB_CLOCK_PUT_BACK,
                                               "ASAN_OPTIONS=verify_asan_link_order=0"};
    const auto zmfb_then = [&](std::vector<std::string> words, const std::string& input = "") {
        words.insert(words.begin(), {"--db", path});
        const Finished run = zmfb(words, input, environment);
        EXPECT_EQ(run.status, 0) << run.err;
        return run;
    };
    // That the clock is put back shows in the log of a matrix: hours lie between two of its blocks.
    zmfb_then({"import", ZMFB_EXAMPLE_DBF});
    const std::string matrix = zmfb_then({"matrix", "extract", "customers", "customers"}).out;
    const std::size_t first = matrix.find("   Data: "), second = matrix.rfind("   Data: ");
    ASSERT_LT(first, second) << matrix;
    EXPECT_NE(matrix.substr(first, 26), matrix.substr(second, 26));

    std::string shown = zmfb_then({"import", "--drop-existing", "--yes", ZMFB_EXAMPLE_DBF}).out;
    shown += zmfb_then({"export", "customers", "-o", file("")}).out;
    shown += zmfb_then({"shell"}, ".timer on\nselect 1 from rdb$database;\n").err;
    const std::regex seconds(R"((-?[0-9]+\.[0-9]+) s\b)");
    std::size_t count = 0;
    for (std::sregex_iterator found(shown.begin(), shown.end(), seconds), none; found != none;
         ++found, ++count) {
        EXPECT_GE(std::stod((*found)[1].str()), 0) << shown;
    }
    EXPECT_EQ(count, 3U) << shown;
    const Finished json = zmfb_then({"--json", "export", "customers", "--yes", "-o", file("")});
    EXPECT_GE(nlohmann::json::parse(json.out)["seconds"].get<double>(), 0);
}

}  // namespace
}  // namespace zmfb::test
