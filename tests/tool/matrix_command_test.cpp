#include "tests/tool/matrix_command.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "tests/support/dialogue.h"
#include "tests/support/environment.h"

namespace zmfb::test {
namespace {

const std::string header_line = "- - - - - - - - - - - - - - - - - - - - - - - - - ";

TEST_F(MatrixCommand, ExtractWritesTheFileAndPrintsTheSameBytesWithoutOne) {
    const Finished written = on(path, {"matrix", "extract", "CLIENT", "-o", file("m")});
    EXPECT_EQ(written.status, 0) << written.err;
    EXPECT_EQ(written.out, file("m.tf") + ": 1 table\n");
    const std::string text = read_file(file("m.tf"));
    EXPECT_NE(text.find(" CLIENT>>001::NAME::C::10::0"), std::string::npos);
    const std::string printed = on(path, {"matrix", "extract", "client"}).out;
    const auto without_date = [](std::string all) { return all.replace(all.find("   Data: "), 26, ""); };
    EXPECT_EQ(without_date(printed), without_date(text));
}

TEST_F(MatrixCommand, AnOutputNameThatHasTheExtensionKeepsIt) {
    on(path, {"matrix", "extract", "-o", file("all.tf")});
    EXPECT_TRUE(std::filesystem::exists(file("all.tf")));
    EXPECT_FALSE(std::filesystem::exists(file("all.tf.tf")));
}

TEST_F(MatrixCommand, ExtractAsksBeforeItReplacesAFile) {
    const std::string kept = write_file("m.tf", "precious");
    const Finished refused = on(path, {"matrix", "extract", "client", "-o", file("m")}, "n\n");
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.out, "");
    EXPECT_EQ(refused.err,
              "Replace " + kept + "? [y/N] error: " + kept +
                  " is there already\n  Nothing was changed. --yes replaces it without asking.\n");
    EXPECT_EQ(read_file(kept), "precious");
    EXPECT_EQ(on(path, {"matrix", "extract", "client", "-o", file("m")}, "y\n").out, kept + ": 1 table\n");
    EXPECT_NE(read_file(kept), "precious");
    write_file("m.tf", "precious");
    const Finished unasked = on(path, {"matrix", "extract", "client", "--yes", "-o", file("m")});
    EXPECT_EQ(unasked.err, "");
    EXPECT_NE(read_file(kept), "precious");
}

TEST_F(MatrixCommand, ExtractRefusesATableThatIsNotThereAndAFileItCannotWrite) {
    const Finished missing = on(path, {"matrix", "extract", "nosuch"});
    EXPECT_EQ(missing.status, 1);
    EXPECT_EQ(missing.err, "error: there is no table nosuch\n");
    const Finished unwritable = on(path, {"matrix", "extract", "client", "-o", file("nowhere/m")});
    EXPECT_EQ(unwritable.status, 1);
    EXPECT_EQ(unwritable.err,
              "error: cannot write " + file("nowhere/m.tf") + ": No such file or directory\n");
}

TEST_F(MatrixCommand, CheckTellsAndChangesNothing) {
    const std::string matrix = edited("=> 001::NAME::C::10::0", "=> 001::FULLNAME::C::20::0");
    const Finished run = on(path, {"matrix", "check", matrix});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, header_line + "[  ]\n" + header_line +
                           "[ CLIENT ]\n[OK] Alter Field: NAME\n[OK] Reorder: 001 Field: FULLNAME\n"
                           "[OK] Reorder: 002 Field: PRICE\n");
    EXPECT_NE(on(path, {"struct", "client"}).out.find("\nNAME "), std::string::npos);
}

TEST_F(MatrixCommand, ApplyShowsThePlanAsksAndKeepsTheData) {
    const std::string matrix = edited("=> 001::NAME::C::10::0", "=> 001::FULLNAME::C::20::0");
    const Finished refused = on(path, {"matrix", "apply", matrix}, "n\n");
    EXPECT_EQ(refused.status, 1);
    EXPECT_TRUE(refused.out.starts_with("What would be done:\n"));
    EXPECT_EQ(refused.err, "Apply it? [y/N] error: nothing was changed\n");
    const Finished done = on(path, {"matrix", "apply", matrix}, "y\n");
    EXPECT_EQ(done.status, 0) << done.err;
    const std::size_t log = done.out.find("What was done:\n");
    ASSERT_NE(log, std::string::npos);
    EXPECT_EQ(done.out.substr(20, log - 20), done.out.substr(log + 15));
    EXPECT_NE(on(path, {"query", "select fullname from client"}).out.find("Ana"), std::string::npos);
}

TEST_F(MatrixCommand, ApplyingAnUnchangedMatrixDoesNothingAndAsksNothing) {
    const Finished run = on(path, {"matrix", "apply", edited("CLIENT", "CLIENT")});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_NE(run.out.find("Nothing.\n"), std::string::npos);
}

TEST_F(MatrixCommand, ADamagedMatrixEndsWithOneAndSaysWhat) {
    const std::string matrix = edited("=> 002::PRICE::N::8::2", "=> 002::PRICE::X::8::2");
    const Finished run = on(path, {"--json", "matrix", "check", matrix});
    EXPECT_EQ(run.status, 1);
    const auto json = nlohmann::json::parse(run.out);
    EXPECT_EQ(json["ok"], false);
    EXPECT_EQ(json["log"], nlohmann::json::array({header_line + "[  ]"}));
    EXPECT_EQ(json["raised"],
              nlohmann::json::array({"[FBCONN Error];Os dados para esta tabela parecem corrompidos;Campo:  "
                                     "002::PRICE::X::8::2;Tabela: CLIENT"}));
}

TEST_F(MatrixCommand, JsonNeedsYes) {
    EXPECT_EQ(on(path, {"--json", "matrix", "apply", edited("CLIENT", "CLIENT")}).status, 2);
    const Finished run = on(path, {"--json", "matrix", "apply", "--yes", file("m.tf")});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(nlohmann::json::parse(run.out)["ok"], true);
}

TEST_F(MatrixCommand, AGroupWithoutACommandIsWrongUsage) { EXPECT_EQ(on(path, {"matrix"}).status, 2); }

TEST_F(MatrixCommand, AFileMayHaveAnyName) {
    const Finished run = on(path, {"matrix", "extract", "client", "-o", file("Łódź")});
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out, file("Łódź.tf") + ": 1 table\n");
    EXPECT_NE(read_file(file("Łódź.tf")).find("CLIENT>>001::NAME"), std::string::npos);
}

// A matrix but for its times.
std::string without_times(const std::string& matrix) {
    std::string text;
    for (const std::string& line : lines(matrix)) {
        if (!line.starts_with("   Data: ")) text += line + "\n";
    }
    return text;
}

TEST_F(MatrixCommand, WhatIsAskedForAtOnceMakesTheMatrixThatTheMethodMakes) {
    on(path, {"call",
              "createtable('KINDS', {{'C1', 'C', 40, 0}, {'N1', 'N', 15, 4}, {'D1', 'D', 8, 0}, {'L1', 'L', "
              "1, 0}})"});
    exec(path,
         "alter table kinds add i1 integer, add i2 integer, add d2 date, add b1 blob, add v1 varchar(5), "
         "add f1 double precision, add n2 numeric(9,3)");
    exec(path, "comment on column kinds.i1 is ' NUMERIC(7,1) '");
    exec(path, "create table elsewhere (a integer)");
    exec(path, "create view seen as select name from client");
    on(path, {"call", "extractmatrix({'CLIENT', 'ELSEWHERE', 'KINDS', 'RDDSYS_OPN', 'SEEN'}, '" +
                          file("method") + "')"});
    const std::string by_method = without_times(read_file(file("method.tf")));
    EXPECT_NE(by_method.find("KINDS>>004::L1::L::1::0"), std::string::npos) << by_method;
    on(path, {"matrix", "extract", "-o", file("all")});
    EXPECT_EQ(without_times(read_file(file("all.tf"))), by_method);
    on(path, {"matrix", "extract", "client", "elsewhere", "kinds", "seen", "-o", file("named")});
    EXPECT_EQ(without_times(read_file(file("named.tf"))), by_method);
}

TEST_F(MatrixCommand, HowManyTablesThereAreDoesNotMatterToTheNumberOfQuestions) {
    const auto questions = [&](std::vector<std::string> words) {
        words.insert(words.begin(), {"--db", path, "--log-level", "8", "matrix"});
        std::filesystem::remove(file("log"));
        EXPECT_EQ(zmfb(words, "", {"ZMFB_TEST_LOG=" + file("log")}).status, 0);
        const auto log = lines(read_file(file("log")));
        return std::ranges::count_if(
            log, [](const std::string& line) { return line.find("[QURY]") != line.npos; });
    };
    const auto all = [&] {
        return std::vector{questions({"extract", "--yes", "-o", file("m")}),
                           questions({"check", file("m.tf")}), questions({"apply", "--yes", file("m.tf")})};
    };
    const auto make = [&](int from, int to) {
        for (int i = from; i <= to; ++i) {
            on(path, {"call", "createtable('T" + std::to_string(i) + "', {{'NAME', 'C', 10, 0}})"});
        }
    };
    make(1, 12);
    const auto few = all();
    make(13, 16);
    EXPECT_TRUE(has_table(path, "T16"));
    EXPECT_EQ(all(), few);
    EXPECT_LT(*std::ranges::max_element(few), 30);
}

TEST_F(MatrixCommand, OutcomesHaveColoursOnATerminal) {
    const std::string matrix = edited("=> 002::PRICE::N::8::2", "=> DROP FIELD");
    exec(path, "alter table client add extra integer");
    forbid(path, "alter table", "CLIENT");
    const auto apply = [&](const std::string& setting) {
        return command({"--db", path, "matrix", "apply", matrix}, {setting});
    };
    {
        Dialogue talk(apply("NO_COLOR=1"));
        EXPECT_EQ(talk.expect("Apply it?").find('\x1b'), std::string::npos);
        talk.type("n\n");
        EXPECT_EQ(talk.end(), 1);
    }
    Dialogue talk(apply("NO_COLOR="));
    const std::string plan = talk.expect("Apply it?");
    EXPECT_NE(plan.find("\x1b[33m[WARN] Add LimboField: EXTRA\x1b[0m\r\n"), std::string::npos) << plan;
    EXPECT_NE(plan.find("\x1b[32m[OK] Drop Field: PRICE\x1b[0m\r\n"), std::string::npos) << plan;
    talk.type("y\n");
    talk.expect("\x1b[31m[ERROR] Drop Field: PRICE\x1b[0m\r\n");
    EXPECT_EQ(talk.end(), 1);
}

}  // namespace
}  // namespace zmfb::test
