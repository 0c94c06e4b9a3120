// Standard output that cannot be written.
#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

class Output : public Tool {
  protected:
    Output() : path(database()) {
        on(path, {"call", "createtable('T', {{'A', 'N', 4, 0}})"});
        on(path, {"matrix", "extract", "t", "-o", file("t.tf")});
        write_file("script", "select 1 as n from rdb$database;\nupdate t set a = 1;\n");
    }
    std::string path;
};

class Unwritten : public Output, public ::testing::WithParamInterface<std::vector<std::string>> {};

TEST_P(Unwritten, IsAFailureWithWords) {
    std::vector<std::string> words{"--db", path};
    for (std::string word : GetParam())
        words.push_back(word == "MATRIX" ? file("t.tf") : word == "FOLDER" ? file("") : word);
    for (const auto& [output, problem] :
         {std::pair{"> /dev/full", "No space left on device"}, std::pair{">&-", "Bad file descriptor"}}) {
        const Finished run = zmfb_after("exec < '" + file("script") + "' " + output, words);
        EXPECT_EQ(run.status, 1) << output;
        const std::string said = std::string("cannot write to standard output: ") + problem;
        const std::string told =
            words[2] == "--json" ? "{\"error\":\"" + said + "\"}\n" : "error: " + said + "\n";
        EXPECT_TRUE(run.err.ends_with(told)) << output << ": " << run.err;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Tool, Unwritten,
    ::testing::Values(std::vector<std::string>{"tables"}, std::vector<std::string>{"--json", "tables"},
                      std::vector<std::string>{"struct", "t"},
                      std::vector<std::string>{"query", "select 1 from rdb$database"},
                      std::vector<std::string>{"query", "select * from rdb$fields"},
                      std::vector<std::string>{"exec", "update t set a = 1"},
                      std::vector<std::string>{"call", "isconnected()"}, std::vector<std::string>{"shell"},
                      std::vector<std::string>{"locks"}, std::vector<std::string>{"opens"},
                      std::vector<std::string>{"doctor"}, std::vector<std::string>{"methods"},
                      std::vector<std::string>{"import", "--dry-run", ZMFB_EXAMPLE_DBF},
                      std::vector<std::string>{"import", "--replace", "--yes", ZMFB_EXAMPLE_DBF},
                      std::vector<std::string>{"matrix", "check", "MATRIX"},
                      std::vector<std::string>{"generate", "man"}, std::vector<std::string>{"--help"},
                      std::vector<std::string>{"--version"},
                      std::vector<std::string>{"export", "t", "-o", "FOLDER", "--yes"},
                      std::vector<std::string>{"matrix", "extract", "t", "-o", "MATRIX", "--yes"},
                      std::vector<std::string>{"prepare"}, std::vector<std::string>{"clear", "--yes"},
                      std::vector<std::string>{"unlock", "t", "--yes"}));

TEST_F(Output, OfAnErrorThatCannotBeWrittenLeavesTheStatus) {
    struct Case {
        int status;
        std::vector<std::string> words;
    };
    for (const Case& one : {Case{1, {"--db", path, "import", file("nosuch.dbf")}},
                            Case{1, {"--db", path, "struct", "nosuch"}}, Case{2, {"nosuch"}}}) {
        EXPECT_EQ(zmfb_after("exec 2> /dev/full", one.words).status, one.status) << one.words.back();
        EXPECT_EQ(zmfb_after("exec > /dev/full 2> /dev/full", one.words).status, one.status)
            << one.words.back();
    }
}

TEST_F(Output, OfAShellThatCannotBeWrittenEndsIt) {
    zmfb_after("exec < '" + file("script") + "' > /dev/full", {"--db", path, "shell"});
    EXPECT_EQ(on(path, {"query", "--mode", "csv", "select count(*) from t where a = 1"}).out,
              "COUNT\r\n0\r\n");
}

TEST_F(Output, ThatNobodyReadsEndsItQuietlyAsSigpipeWould) {
    // A pipe whose only reader is gone before anything is written.
    const std::string pipe = file("pipe");
    const std::string closed = "mkfifo '" + pipe + "'; exec 3<> '" + pipe + "' > '" + pipe + "' 3>&-";
    for (const std::vector<std::string>& words : {std::vector<std::string>{"methods"},
                                                  {"--db", path, "tables"},
                                                  {"--db", path, "query", "select * from rdb$fields"}}) {
        const Finished run = zmfb_after("rm -f '" + pipe + "'; " + closed, words);
        EXPECT_EQ(run.status, 141);
        EXPECT_EQ(run.err, "");
    }
}

}  // namespace
}  // namespace zmfb::test
