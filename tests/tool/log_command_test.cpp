#include <nlohmann/json.hpp>
#include <set>

#include "tests/support/dialogue.h"
#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

// A log of known entries, in the place of the one that the tests write.
class LogCommand : public Tool {
  protected:
    Finished log(std::vector<std::string> words) const {
        std::vector<std::string> all{"log"};
        all.insert(all.end(), words.begin(), words.end());
        return zmfb(all, "", {"ZMFB_TEST_LOG=" + file("log")});
    }
    void write(int level, const std::string& text) {
        content += "\t[" + std::to_string(level) + "] ana Sat Nov 21 06:45:33 2026\n " + text + "\n";
        write_file("log", content);
    }
    std::string content;
};

TEST_F(LogCommand, ShowsTheLastEntriesInUtf8) {
    for (int i = 1; i <= 25; ++i) write(0, "[EXIT] Disconnected from: " + std::to_string(i));
    write(1, "[ERROR] n\xE3o");
    const Finished run = log({});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    const auto shown = lines(run.out);
    ASSERT_EQ(shown.size(), 20U);
    EXPECT_EQ(shown[0], "Sat Nov 21 06:45:33 2026 [0] ana: [EXIT] Disconnected from: 7");
    EXPECT_EQ(shown[19], "Sat Nov 21 06:45:33 2026 [1] ana: [ERROR] não");
    EXPECT_EQ(lines(log({"--count", "3"}).out).size(), 3U);
    EXPECT_EQ(log({"-n", "0"}).out, "");
}

TEST_F(LogCommand, ControlsOfATextDoNotReachTheTerminal) {
    write(1, "[ERROR] a\x1b[2Jb\nset y = 1\x07");
    EXPECT_EQ(log({}).out, "Sat Nov 21 06:45:33 2026 [1] ana: [ERROR] a\\x1b[2Jb\n    set y = 1\\x07\n");
}

TEST_F(LogCommand, FiltersByLevelAndTag) {
    write(0, "[EXIT] Disconnected from: one");
    write(1, "[ERROR] SQLCODE=2 (two)");
    write(8, "[QURY] Statement: select three");
    EXPECT_EQ(lines(log({"--level", "1"}).out).size(), 2U);
    for (const char* tag : {"error", "ERROR", "[Error]"}) {
        EXPECT_EQ(log({"--tag", tag}).out, "Sat Nov 21 06:45:33 2026 [1] ana: [ERROR] SQLCODE=2 (two)\n")
            << tag;
    }
    EXPECT_EQ(log({"--tag", "QURY", "--level", "1"}).out, "");
    // The last one that fits, however far back it is.
    EXPECT_EQ(log({"--tag", "EXIT", "-n", "1"}).out,
              "Sat Nov 21 06:45:33 2026 [0] ana: [EXIT] Disconnected from: one\n");
}

TEST_F(LogCommand, JsonTakesEntriesApart) {
    write(-1, "no tag");
    write(7, "[UPDT] update x\nset y = 1");
    EXPECT_EQ(nlohmann::json::parse(zmfb({"--json", "log"}, "", {"ZMFB_TEST_LOG=" + file("log")}).out),
              nlohmann::json::parse(R"([
        {"level": -1, "user": "ana", "date": "Sat Nov 21 06:45:33 2026", "tag": "", "text": "no tag",
         "doubtful": false},
        {"level": 7, "user": "ana", "date": "Sat Nov 21 06:45:33 2026", "tag": "UPDT",
         "text": "[UPDT] update x\nset y = 1", "doubtful": true}])"));
}

// A value with the line ends of an entry in it, as anybody may send one who fills in a form.
TEST_F(LogCommand, MarksWhatAValueMayHaveForged) {
    const std::string path = database();
    exec(path, "create table t (a varchar(200))");
    const std::string value = "x\n\t[0] root Sat Nov 21 06:45:33 2026\n [EXIT] Disconnected from: nowhere";
    const std::string log = "ZMFB_TEST_LOG=" + file("log");
    EXPECT_EQ(
        zmfb({"--db", path, "--log-level", "7", "exec", "insert into t values ('" + value + "')"}, "", {log})
            .status,
        0);
    const Finished shown = zmfb({"log"}, "", {log});
    EXPECT_EQ(shown.err, "note: what begins with \"?\" may be a piece of the text of an entry before it\n");
    std::vector<std::string> marked;
    for (const std::string& line : lines(shown.out)) {
        if (line.starts_with("? ")) marked.push_back(line);
    }
    EXPECT_EQ(marked, (std::vector<std::string>{
                          "? Sat Nov 21 06:45:33 2026 [0] root: [EXIT] Disconnected from: nowhere')"}));
    EXPECT_NE(shown.out.find("[UPDT] Statement: insert into t values ('x\n? Sat Nov 21"), std::string::npos)
        << shown.out;
    const auto entries = nlohmann::json::parse(zmfb({"--json", "log"}, "", {log}).out);
    for (const auto& entry : entries) EXPECT_EQ(entry["doubtful"], entry["user"] == "root") << entry;
}

// A text cannot look like an entry in what is shown either.
TEST_F(LogCommand, FurtherLinesOfATextStandFurtherIn) {
    write(7, "[UPDT] Statement: x '\nSat Nov 21 06:45:33 2026 [0] root: [EXIT] forged'");
    EXPECT_EQ(log({}).out,
              "Sat Nov 21 06:45:33 2026 [7] ana: [UPDT] Statement: x '\n"
              "    Sat Nov 21 06:45:33 2026 [0] root: [EXIT] forged'\n");
}

// Otherwise the mark would soon mean nothing.
TEST_F(LogCommand, MarksNothingInTheLogOfOrdinaryWork) {
    const std::string path = database();
    const std::string log = "ZMFB_TEST_LOG=" + file("log");
    const std::string table = "createtable('T', {{'NAME', 'C', 20, 0}, {'BORN', 'D', 8, 0}})";
    const std::string record = "executeupdate(\"insert into t (name) values ('it''s')\")";
    const std::vector<std::vector<std::string>> commands{
        {"call", table, record, "getuniqueareaid('T', 'T')", "setglbskipmode(1)",
         "executeupdate('no statement')", "starttransaction()", "cachedupdate(\"update t\nset name = 'b'\")",
         "commitchanges()", "nosuchmethod()"},
        {"tables"},
        {"query", "select * from t"},
        {"export", "t", "-o", file("")},
        {"locks"},
        {"doctor"}};
    for (std::vector<std::string> words : commands) {
        words.insert(words.begin(), {"--db", path, "--log-level", "10"});
        zmfb(words, "", {log});
    }
    const auto entries = nlohmann::json::parse(zmfb({"--json", "log", "-n", "100000"}, "", {log}).out);
    std::set<std::string> tags;
    for (const auto& entry : entries) {
        EXPECT_EQ(entry["doubtful"], false) << entry;
        tags.insert(entry["tag"].get<std::string>());
    }
    EXPECT_EQ(tags, (std::set<std::string>{"AREAID", "CACHE", "COMMIT", "CONN", "ERROR", "EXIT", "GONE",
                                           "INFO", "LOG#", "QURY", "SET", "TRANS", "UPDT"}));
}

TEST_F(LogCommand, ShowsWhatTheToolItselfLogs) {
    const std::string path = database();
    zmfb({"--db", path, "call", "isconnected()"}, "", {"ZMFB_TEST_LOG=" + file("log")});
    EXPECT_NE(log({"--tag", "conn"}).out.find("[CONN] Connected to: " + path), std::string::npos);
}

TEST_F(LogCommand, FollowGoesOnUntilItIsInterrupted) {
    write(0, "[EXIT] Disconnected from: before");
    Dialogue talk({"env", "ZMFB_TEST_LOG=" + file("log"), ZMFB_TOOL, "log", "--follow"});
    EXPECT_EQ(talk.expect("before\r\n"),
              "Sat Nov 21 06:45:33 2026 [0] ana: [EXIT] Disconnected from: before\r\n");
    write(0, "[GONE] after");
    EXPECT_EQ(talk.expect("after\r\n"), "Sat Nov 21 06:45:33 2026 [0] ana: [GONE] after\r\n");
    talk.type("\x03");
    EXPECT_EQ(talk.end(), 130);
}

TEST_F(LogCommand, ALogThatIsNotThereAndWrongNumbersAreErrors) {
    const Finished missing = log({});
    EXPECT_EQ(missing.status, 1);
    EXPECT_TRUE(missing.err.starts_with("error: cannot read " + file("log") +
                                        "\n  No such file or directory\nhint: "))
        << missing.err;
    EXPECT_EQ(log({"--level", "high"}).status, 2);
    EXPECT_EQ(log({"--count", "-1"}).status, 2);
}

TEST_F(LogCommand, WhatIsNoEntryIsPassedOver) {
    write_file("log", "garbage\n\t[x] no head\n\t[0] half");
    EXPECT_EQ(log({}).out, "");
    EXPECT_EQ(log({}).status, 0);
}

// As a disk that was full leaves it.
TEST_F(LogCommand, ALineThatWasCutOffHidesNoEntry) {
    write(0, "[EXIT] Disconnected from: one");
    const std::string one = "Sat Nov 21 06:45:33 2026 [0] ana: [EXIT] Disconnected from: one\n";
    for (const auto& [line, shown] :
         {std::pair{"\t[0] an", one + "    \\t[0] an\n"},
          {"\t[1] ana Sat Nov 21 06:45:34 2026", one},
          {"\t[1] ana Sat Nov 21 06:45:34 2026\n [ERR", one + "Sat Nov 21 06:45:34 2026 [1] ana: [ERR\n"},
          {"more", one + "    more\n"}}) {
        write_file("log", content + line);
        EXPECT_EQ(log({}).out, shown);
        const auto entries =
            nlohmann::json::parse(zmfb({"--json", "log"}, "", {"ZMFB_TEST_LOG=" + file("log")}).out);
        EXPECT_EQ(entries[0]["user"], "ana");
    }
}

TEST_F(LogCommand, ADateOfOtherBytesIsNeitherSentToTheTerminalNorTheEndOfJson) {
    write_file("log", "\t[0] ana Sat Nov 21 06:4\xE3:3\x1b 2026\n [CONN] one\n");
    EXPECT_EQ(log({}).out, "Sat Nov 21 06:4ã:3\\x1b 2026 [0] ana: [CONN] one\n");
    const Finished run = zmfb({"--json", "log"}, "", {"ZMFB_TEST_LOG=" + file("log")});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(nlohmann::json::parse(run.out)[0]["date"], "Sat Nov 21 06:4ã:3\x1b 2026");
}

TEST_F(LogCommand, FollowedAsJsonEachEntryIsALineAndALogThatBecameShorterIsReadFromItsStart) {
    const auto line = [](const std::string& tag, const std::string& text, const char* doubtful = "false") {
        return R"({"level":0,"user":"ana","date":"Sat Nov 21 06:45:33 2026","tag":")" + tag +
               R"(","text":"[)" + tag + "] " + text + "\",\"doubtful\":" + doubtful + "}\r\n";
    };
    write(0, "[CONN] there before");
    Dialogue talk({"env", "ZMFB_TEST_LOG=" + file("log"), ZMFB_TOOL, "--json", "log", "--follow"});
    EXPECT_EQ(talk.expect("\n"), line("CONN", "there before"));
    write(0, "[GONE] later");
    EXPECT_EQ(talk.expect("\n"), line("GONE", "later", "true"));
    content.clear();
    write(0, "[CONN] new");
    EXPECT_EQ(talk.expect("\n"), line("CONN", "new"));
    talk.type("\x03");
    EXPECT_EQ(talk.end(), 130);
}

}  // namespace
}  // namespace zmfb::test
