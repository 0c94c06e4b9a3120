// What is said on standard error.
#include <nlohmann/json.hpp>

#include "tests/support/environment.h"
#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

using nlohmann::json;

class Errors : public Tool {
  protected:
    // The objects that a run wrote to standard error, one a line.
    std::vector<json> told(const Finished& run, int status) const {
        EXPECT_EQ(run.status, status) << run.err;
        std::vector<json> objects;
        for (const std::string& line : lines(run.err)) objects.push_back(json::parse(line));
        return objects;
    }
};

TEST_F(Errors, PortugueseTextHasALineInEnglishBelowIt) {
    const std::string path = database();
    const std::string call = "droptable('NOSUCH')";
    const Finished one_line = on(path, {"call", call});
    EXPECT_TRUE(one_line.err.starts_with(
        "raised: [FBCONN Error];Impossível eliminar a Tabela: NOSUCH; FB Error: [ERROR] "))
        << one_line.err;
    EXPECT_NE(one_line.err.find("\nin English: cannot drop the table NOSUCH\n"), std::string::npos)
        << one_line.err;
    const Finished several = on(path, {"shell"}, "droptable(\"NOSUCH\")\n");
    EXPECT_TRUE(several.err.starts_with(
        "raised: [FBCONN Error]\n  Impossível eliminar a Tabela: NOSUCH\n  FB Error: "))
        << several.err;
    EXPECT_NE(several.err.find("\nin English: cannot drop the table NOSUCH\n"), std::string::npos);
    const Finished english = on(path, {"call", "looptest('X')"});
    EXPECT_EQ(english.err.find("in English"), std::string::npos) << english.err;
}

TEST_F(Errors, AreObjectsWithJsonWhateverTheCommandAndTheStatus) {
    const std::string path = database();
    const auto wrong = told(zmfb({"tabels", "--json"}), 2);
    EXPECT_EQ(wrong.at(0),
              (json{{"error", "there is no command tabels"}, {"hint", "did you mean \"zmfb tables\"?"}}));
    const auto absent = told(on(as_database("nosuch.fdb"), {"--json", "tables"}), 3);
    ASSERT_EQ(absent.size(), 1U);
    EXPECT_EQ(absent[0]["error"], "cannot attach to " + as_database("nosuch.fdb"));
    EXPECT_EQ(absent[0]["hint"], "\"zmfb create\" makes a new database");
    EXPECT_NE(absent[0]["detail"].get<std::string>().find('\n'), std::string::npos);
    const auto refused = told(on(path, {"--json", "query", "select \"nö\" from rdb$database"}), 1);
    ASSERT_EQ(refused.size(), 1U);
    EXPECT_EQ(refused[0]["error"], "the query failed");
    EXPECT_EQ(told(on(path, {"--json", "import", "nosuch.dbf"}), 1).size(), 1U);
}

TEST_F(Errors, OfAScriptNameTheLineInJson) {
    const std::string path = database();
    const std::string script = write_file("inner.sql", "\nselct;\n");
    const auto found =
        told(on(path, {"--json", "shell"}, "-- a comment\n.tabels\n.read " + script + "\n"), 1);
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[0]["line"], 2);
    EXPECT_EQ(found[0]["error"], "there is no command .tabels; did you mean \".tables\"?");
    EXPECT_FALSE(found[0].contains("file"));
    EXPECT_EQ(found[1]["file"], script);
    EXPECT_EQ(found[1]["line"], 2);
    const auto call = told(on(path, {"--json", "call", "-"}, "isconnected()\nisconnected(\n"), 2);
    EXPECT_EQ(call.at(0)["line"], 2);
}

TEST_F(Errors, RaisedOnesSayWhatTheyMeanInJsonToo) {
    const std::string path = database();
    const auto found = told(on(path, {"--json", "call", "droptable('NOSUCH')", "istabel('X')"}), 1);
    ASSERT_GE(found.size(), 2U);
    EXPECT_TRUE(found.front()["error"].get<std::string>().starts_with(
        "[FBCONN Error];Impossível eliminar a Tabela: NOSUCH; FB Error: "));
    EXPECT_EQ(found.front()["english"], "cannot drop the table NOSUCH");
    EXPECT_EQ(found.back(), (json{{"error", "[FBCONN Error];zmFBConn has no Method named: istabel"},
                                  {"raised", true},
                                  {"hint", "did you mean istable?"}}));
}

}  // namespace
}  // namespace zmfb::test
