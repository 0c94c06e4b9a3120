// Standard descriptors that are closed when the tool starts.
#include "tests/support/environment.h"
#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

// What is closed, and the status of a command that has something to print then.
class ClosedDescriptors : public Tool, public ::testing::WithParamInterface<std::pair<const char*, int>> {};

// Files of the engine would get their numbers: what is printed would be written into its locks, and whoever
// reads these next waits for ever.
TEST_P(ClosedDescriptors, LetNothingOfWhatIsPrintedIntoTheEnginesFiles) {
    if (on_server()) GTEST_SKIP() << "the engine's files are the embedded engine's";
    const std::string path = database();
    const std::vector<std::vector<std::string>> commands{
        {"struct", "nosuch"}, {"tables"}, {"query", "select * from rdb$types"}};
    const auto [closed, printed] = GetParam();
    const std::vector<int> statuses{1, printed, printed};
    for (std::size_t i = 0; i < commands.size(); ++i) {
        std::vector<std::string> words{"--db", path};
        words.insert(words.end(), commands[i].begin(), commands[i].end());
        EXPECT_EQ(zmfb_after(std::string("exec ") + closed, words).status, statuses[i]);
        const Finished next =
            zmfb({"--db", path, "exec", "recreate table T (A integer)"}, "", {"timeout", "60"});
        EXPECT_EQ(next.out + next.err, "done\n") << commands[i][0] << " left this behind";
    }
}

INSTANTIATE_TEST_SUITE_P(AreOpenedOnTheNullDevice, ClosedDescriptors,
                         ::testing::Values(std::pair("<&-", 0), std::pair(">&-", 1), std::pair("2>&-", 0),
                                           std::pair(">&- 2>&-", 1), std::pair("<&- >&- 2>&-", 1)),
                         [](const auto& info) { return "Set" + std::to_string(info.index); });

}  // namespace
}  // namespace zmfb::test
