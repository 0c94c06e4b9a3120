// Lines that nobody types: where they stop, what -c takes, and calls within calls.
#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

class ShellScript : public Tool {
  protected:
    ShellScript() { exec(path, "create table t (a integer primary key)"); }
    // With the script as a file on standard input, as "<" gives it, or through a pipe.
    [[nodiscard]] Finished from_file(const std::string& script, const std::string& options) const {
        write_file("script.sql", script);
        return zmfb_after("exec < '" + file("script.sql") + "'",
                          {"--db", path, "shell", options.empty() ? "--stop-on-error" : options});
    }
    [[nodiscard]] Finished given(const std::vector<std::string>& inputs, bool stops = false) const {
        std::vector<std::string> words{"shell"};
        if (stops) words.emplace_back("--stop-on-error");
        for (const std::string& one : inputs) words.insert(words.end(), {"-c", one});
        return on(path, words);
    }
    [[nodiscard]] std::string stored() const {
        return on(path, {"query", "select list(a) as l from t", "--mode", "csv"}).out;
    }
    const std::string path = database();
};

TEST_F(ShellScript, StopsAtTheFirstErrorAndSaysWhatWasNotRun) {
    const Finished run = from_file(
        "insert into t values (1);\n"
        "begin;\n"
        "insert into t values (2);\n"
        "insert into t\n"
        "  values (1); select 1 from t; select 2 from t;\n"
        "-- a comment\n"
        "istable('T')\n"
        "execute block as\nbegin\n  delete from t;\nend;\n"
        ".tables\n"
        "\n"
        "commit;\n",
        "");
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out, "done: insert, 1 row\ndone: begin\ndone: insert, 1 row\ndone: rollback\n");
    EXPECT_NE(run.err.find("error: line 4: [ERROR] SQLCODE=-803"), std::string::npos) << run.err;
    EXPECT_TRUE(run.err.ends_with(
        "stopped in line 5; not run: 6 statements, calls and commands, 9 lines behind it\n"
        "error: the transaction that was open at the end is rolled back\nhint: commit; keeps what it did\n"))
        << run.err;
    EXPECT_EQ(stored(), "L\r\n1\r\n");
}

TEST_F(ShellScript, WithoutTheOptionItGoesOn) {
    EXPECT_EQ(on(path, {"shell"}, "selct;\ninsert into t values (1);\n").status, 1);
    EXPECT_EQ(stored(), "L\r\n1\r\n");
}

TEST_F(ShellScript, StopsAtWhateverFails) {
    for (const std::string wrong :
         {"selct;", "nosuch()", ".nosuch", ".read nosuch.sql", "looptest('T')", "executeupdate('selct')",
          "select 1 / 0 from rdb$database;", ".struct nosuch", "rollback;", "istable(nosuch())"}) {
        const Finished run = from_file(wrong + "\ninsert into t values (7);\n", "");
        EXPECT_EQ(run.status, 1) << wrong;
        EXPECT_TRUE(
            run.err.ends_with("stopped in line 1; not run: 1 statement, call or command, 1 line behind it\n"))
            << run.err;
    }
    EXPECT_EQ(on(path, {"query", "select count(*) as n from t", "--mode", "csv"}).out, "N\r\n0\r\n");
}

TEST_F(ShellScript, StopsFilesThatReadFilesToo) {
    const std::string inner = write_file("inner.sql", "selct;\ninsert into t values (1);\n");
    const Finished run = from_file(".read " + inner + "\ninsert into t values (2);\n", "");
    EXPECT_TRUE(
        run.err.ends_with("stopped in " + inner +
                          " line 1; not run: 1 statement, call or command, 1 line behind it\n"
                          "stopped in line 1; not run: 1 statement, call or command, 1 line behind it\n"))
        << run.err;
}

TEST_F(ShellScript, WhatComesThroughAPipeIsNotWaitedFor) {
    const auto run = start({"--db", path, "shell", "--stop-on-error"}, "selct;\n");
    // Standard input stays open: it ends all the same.
    const Finished ended = run->end();
    EXPECT_EQ(ended.status, 1);
    EXPECT_TRUE(ended.err.ends_with("stopped in line 1; what follows was not run\n")) << ended.err;
}

TEST_F(ShellScript, TheLastLineHasNothingBehindIt) {
    EXPECT_TRUE(from_file("selct;", "").err.ends_with("stopped in line 1, the last\n"));
}

TEST_F(ShellScript, TakesWhatIsGivenInItsOrder) {
    const Finished run =
        given({"begin", "insert into t values (1)", "insert into t values (2); select a from t",
               "istable('T')", ".mode csv", "select a\n  from t -- all", "commit"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(
        run.out,
        "done: begin\ndone: insert, 1 row\ndone: insert, 1 row\nA\n-\n1\n2\n(2 rows)\n.T.\nA\r\n1\r\n2\r\n"
        "done: commit\n");
}

TEST_F(ShellScript, WhatIsGivenAndFailsIsNamedAndStopsItWhereAsked) {
    const std::vector<std::string> inputs{"istable('T')", "select 'x", "selct", "istable('T')"};
    const Finished goes_on = given(inputs);
    EXPECT_EQ(goes_on.status, 1);
    EXPECT_EQ(goes_on.out, ".T.\n.T.\n");
    EXPECT_NE(goes_on.err.find("error: -c 2 line 1: the statement does not end\n"), std::string::npos)
        << goes_on.err;
    EXPECT_NE(goes_on.err.find("error: -c 3 line 1: \"selct\" begins"), std::string::npos) << goes_on.err;
    const Finished stops = given(inputs, true);
    EXPECT_EQ(stops.out, ".T.\n");
    EXPECT_TRUE(stops.err.ends_with("stopped in -c 2; not run: 2 more of them\n")) << stops.err;
    EXPECT_EQ(given({".quit", "selct"}).status, 0);
}

TEST_F(ShellScript, CallsMayStandInCalls) {
    const Finished run = given({"istable(removefilenameext('T.dbf'))",
                                "istable('no' + removefilenameext(removefilenameext('T.a.b')))",
                                "executeupdate(assemblestatement('insert into @@T values (3)', {{'@@T', "
                                "removefilenameext('t.dbf')}}))"});
    EXPECT_EQ(run.out, ".T.\n.F.\n\"\"\n") << run.err;
    EXPECT_EQ(stored(), "L\r\n3\r\n");
    EXPECT_EQ(on(path, {"call", "istable(removefilenameext('T.dbf'))"}).out, ".T.\n");
}

TEST_F(ShellScript, WhatIsWrongWithAnInnerCallKeepsTheOuterFromBeingMade) {
    const std::pair<const char*, const char*> cases[] = {
        {"executeupdate('delete from t where a = ' + nosuch())", "there is no method nosuch"},
        {"executeupdate(removefilenamext('t'))", "there is no method removefilenamext; did you mean"},
        {"executeupdate(looptest('delete from t'))",
         "looptest raised, and what it was an argument of was not called"},
        {"executeupdate('delete from t where a > ' + getpid())", "only texts can be joined with +"},
    };
    exec(path, "insert into t values (1)");
    for (const auto& [call, error] : cases) {
        for (const Finished& run : {given({call}), on(path, {"call", call})}) {
            EXPECT_NE(run.status, 0) << call;
            EXPECT_EQ(run.out, "") << call;
            EXPECT_NE(run.err.find(error), std::string::npos) << run.err;
        }
    }
    EXPECT_EQ(stored(), "L\r\n1\r\n");
}

TEST_F(ShellScript, AreaIsTheIdOfThisSession) {
    on(path, {"call", "createtable('C', {{'NAME', 'C', 60, 0}})"});
    const Finished run = given(
        {"getuniqueareaid('ZMFB', 'SHELL')", "setrecordaslocked('C', :area, '3')", "getrlockareaid('C', '3')",
         ".locks", "insert into c (name) values (:AREA)", "select name from c where name = :area",
         "select ':area' as a, 1 as \":area\" /* :area */ from rdb$database -- :area",
         "execute block returns (n integer) as declare area integer = 5; begin n = :area; "
         "suspend; end",
         "unlockallrecords('C', :area)", ".mode csv",
         "select area from (select 1 as area from rdb$database)"});
    EXPECT_EQ(run.status, 0) << run.err;
    const std::vector<std::string> said = lines(run.out);
    const std::string id = said.at(0).substr(1, said.at(0).size() - 2);
    EXPECT_TRUE(id.starts_with("ZMFB:SHELL:")) << id;
    EXPECT_EQ(said.at(1), ".T.");
    EXPECT_EQ(said.at(2), said.at(0));
    EXPECT_NE(run.out.find("\nC      record       3  SHELL"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("done: insert, 1 row\nNAME"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("\n" + id + "\n(1 row)\nA      :area\n-----  -----\n:area      1\n"),
              std::string::npos)
        << run.out;
    EXPECT_TRUE(run.out.ends_with("N\n-\n5\n(1 row)\n.T.\nAREA\r\n1\r\n")) << run.out;
}

TEST_F(ShellScript, WhatIsLockedForAreaIsGivenBackAtTheEnd) {
    on(path, {"call", "createtable('C', {{'NAME', 'C', 60, 0}})"});
    const std::string locks =
        "setrecordaslocked('C', :area, '3')\nsettableaslocked('D', :area)\n"
        "settableusedbyarea(.T., 'C', :area, .T.)\n";
    const auto left = [&] { return on(path, {"locks"}).out + on(path, {"opens"}).out; };
    const std::pair<std::string, std::vector<std::string>> endings[] = {
        {"", {}}, {"exit\n", {}}, {"begin;\n", {}}, {"selct\nexit\n", {"--stop-on-error"}}};
    for (const auto& [ending, options] : endings) {
        std::vector<std::string> words{"shell"};
        words.insert(words.end(), options.begin(), options.end());
        const Finished run = on(path, words, locks + ".locks\n.opens\n" + ending);
        EXPECT_NE(run.out.find("C      record       3  SHELL"), std::string::npos) << run.out << run.err;
        EXPECT_NE(run.out.find("D      table           SHELL"), std::string::npos) << run.out;
        EXPECT_NE(run.out.find("C      shared"), std::string::npos) << run.out;
        EXPECT_EQ(left(), "no locks\nno tables are open\n") << ending;
    }
    EXPECT_EQ(given({"setrecordaslocked('C', :area, '4')"}).status, 0);
    EXPECT_EQ(left(), "no locks\nno tables are open\n");
    on(path, {"call", "setrecordaslocked('C', 'C:A1:7:afar', '4')"});
    EXPECT_EQ(given({"setrecordaslocked('C', :area, '5')"}).status, 0);
    EXPECT_NE(left().find("C      record       4  A1"), std::string::npos) << "that of another stays";
}

TEST_F(ShellScript, WhatIsNotRunIsCountedAsItWouldHaveBeenTaken) {
    const Finished run = from_file("selct\nbegin\ninsert into t values (1);;\ncommit\n-- the end\n", "");
    EXPECT_TRUE(run.err.ends_with("not run: 3 statements, calls and commands, 4 lines behind it\n"))
        << run.err;
}

TEST_F(ShellScript, WhatIsGivenLastAndFailsLeavesNothingOut) {
    EXPECT_TRUE(given({"istable('T')", "selct"}, true).err.ends_with("\nstopped in -c 2\n"));
}

// The engine would run what stands before it.
TEST_F(ShellScript, ALineWithAZeroByteIsRefusedWhole) {
    on(path, {"exec", "create table N (A integer)"});
    on(path, {"exec", "insert into N values (1)"});
    const std::string input = std::string("delete from N ") + '\0' + "where A = 2;\nselect A from N;\n";
    const Finished run = on(path, {"shell"}, input);
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "error: line 1: the line has a zero byte, which no statement and no call may have\n");
    EXPECT_NE(run.out.find("(1 row)"), std::string::npos) << run.out;
}

TEST_F(ShellScript, AByteOrderMarkAtTheBeginningIsPassedOver) {
    const std::string query = "\xEF\xBB\xBFselect 7 as n from rdb$database;\n";
    for (const Finished& run : {on(path, {"shell"}, query),
                                on(path, {"shell"}, ".read " + write_file("marked.sql", query) + "\n")}) {
        EXPECT_EQ(run.status, 0) << run.err;
        EXPECT_NE(run.out.find("7\n(1 row)"), std::string::npos) << run.out;
    }
}

}  // namespace
}  // namespace zmfb::test
