#include "tests/conn/expected_methods.h"
#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

class Usage : public Tool {};

TEST_F(Usage, MethodsListsNameParametersAndKindOneALine) {
    const Finished run = zmfb({"methods"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    std::string expected;
    for (const ExpectedMethod& method : expected_methods) {
        expected += std::string(method.name) + "\t" + std::to_string(method.parameters) + "\t" +
                    std::string(method.kind) + "\n";
    }
    EXPECT_EQ(run.out, expected);
}

TEST_F(Usage, WrongUsageEndsWithTwo) {
    for (const std::vector<std::string>& words :
         std::vector<std::vector<std::string>>{{},
                                               {"nosuchcommand"},
                                               {"--nosuchoption", "methods"},
                                               {"call"},
                                               {"import"},
                                               {"struct"},
                                               {"query"},
                                               {"exec"},
                                               {"--log-level", "x", "methods"},
                                               {"tables"},
                                               {"create"}}) {
        const Finished run = zmfb(words);
        EXPECT_EQ(run.status, 2) << (words.empty() ? "" : words[0]);
        EXPECT_NE(run.err, "");
        EXPECT_EQ(run.out, "");
    }
}

TEST_F(Usage, HelpAndVersionEndWithZero) {
    for (const char* word : {"--help", "--version"}) {
        const Finished run = zmfb({word});
        EXPECT_EQ(run.status, 0);
        EXPECT_NE(run.out, "");
        EXPECT_EQ(run.err, "");
    }
    EXPECT_NE(zmfb({"call", "--help"}).out.find("EXPR"), std::string::npos);
}

TEST_F(Usage, ADatabaseThatIsNotThereEndsWithThreeAndTheEnginesWords) {
    const Finished run = on(new_database(), {"tables"});
    EXPECT_EQ(run.status, 3);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(lines(run.err).at(0), "error: cannot attach to " + new_database());
    EXPECT_NE(run.err.find("No such file or directory"), std::string::npos);
    EXPECT_FALSE(std::filesystem::exists(new_database()));
}

TEST_F(Usage, AServerThatDoesNotAnswerEndsWithThree) {
    const Finished run = on("127.0.0.1/1:/nowhere.fdb", {"tables"});
    EXPECT_EQ(run.status, 3);
    EXPECT_EQ(lines(run.err).at(0), "error: cannot attach to 127.0.0.1/1:/nowhere.fdb");
}

TEST_F(Usage, TheDatabaseMayComeFromTheEnvironment) {
    const std::string path = database();
    const Finished run = zmfb({"call", "isconnected()"}, "", {"ZMFB_DB=" + path});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out, ".T.\n");
}

}  // namespace
}  // namespace zmfb::test
