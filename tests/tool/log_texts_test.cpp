// What in the text of an entry may look like one of its own.
#include <gtest/gtest.h>

#include "tool/log_file.h"

namespace zmfb::tool {
namespace {

const std::string head = "\t[0] ana Sat Nov 21 06:45:33 2026\n ";
const std::string forged = "\n" + head + "[EXIT] Disconnected from: nowhere";

// The entries of a log, those that are doubtful with a "?" before them.
std::vector<std::string> read_log(const std::string& log) {
    LogReader reader;
    std::vector<std::string> shown;
    const auto show = [&](const LogEntry& entry) {
        shown.push_back((entry.doubtful ? "?" : "") + entry.text.substr(0, entry.text.find('\n')));
    };
    for (const LogEntry& entry : reader.take(log)) show(entry);
    if (const auto last = reader.last()) show(*last);
    return shown;
}

// How many entries behind the first one of that text are doubtful; one that is not ends the log.
std::size_t doubtful_behind(const std::string& text) {
    const std::vector<std::string> entries = read_log(head + text + "\n" + head + "[COMMIT] Commit\n");
    return static_cast<std::size_t>(
        std::ranges::count_if(entries, [](const std::string& entry) { return entry.starts_with('?'); }));
}

TEST(LogTexts, WhatStandsInAStatementsQuotesAndCommentsIsDoubtfulAndWhatFollowsItIsNot) {
    for (const char* const tag : {"[UPDT]", "[CACHE]", "[QURY]"}) {
        for (const std::string& statement : {
                 "insert into t values ('" + forged + "')",
                 "insert into t values ('it''s" + forged + "')",
                 "insert into t values ('a', '\n" + forged + "')",
                 "select '-- ', '" + forged + "' from t",
                 "select '/*', \"x" + forged + "\" from t",
                 "select \"it's" + forged + "\" from t",
                 "select 1 /* it's" + forged + " */ from t",
                 "select 1 /*/" + forged + "*/ from t",
                 "select 1 -- it's\n - 2 / '" + forged + "'",
             }) {
            EXPECT_EQ(doubtful_behind(tag + (" Statement: " + statement)), 1U) << statement;
        }
    }
}

TEST(LogTexts, AStatementOfManyLinesMakesNothingDoubtful) {
    for (const char* const statement :
         {"update t\nset a = 'it''s'\nwhere b = 1", "select 1 -- it's\nfrom t /* \" */",
          "select 1 / 2 - 3\n\n", "select 'a\nb' from t", "select \"a\nb\" from t /*\n*/"}) {
        EXPECT_EQ(doubtful_behind("[UPDT] Statement: " + std::string(statement)), 0U) << statement;
    }
}

TEST(LogTexts, EachOfSeveralForgedEntriesIsDoubtfulWhateverItSaysItIs) {
    const std::string inner = "\n" + head + "[QURY] Statement: select 1";
    EXPECT_EQ(doubtful_behind("[UPDT] Statement: x '" + inner + inner + forged + "'"), 3U);
    // One that leaves a quote open makes what follows the true statement doubtful, too: nothing tells which
    // of the two has begun it.
    EXPECT_EQ(doubtful_behind("[UPDT] Statement: x '" + inner + " \"" + forged + "'"), 2U + 1U);
    // So does one that is like none of the system's.
    EXPECT_EQ(doubtful_behind("[UPDT] Statement: x '\n" + head + "[CONN] nobody was here'"), 1U + 1U);
}

TEST(LogTexts, WhatTheSystemWritesInOneLineIsFollowedByAnEntry) {
    for (const char* const text :
         {"[LOG#] zmFBConn loglevel now is: 8", "[CONN] Connected to: /a/it's.fdb Pointer DB1: 0x12(3)",
          "[EXIT] Disconnected from: /a/b.fdb", "[GONE] Class: zmFBConn no longer exists. DB: /a/b.fdb",
          "[ERROR] SQLCODE=-104 (Invalid token)", "[ERROR] Meth: X does not exist inside zmFBConn",
          "[SET] Global SkipMode now is: 1 for: /a/b.fdb", "[TRANS] Starting Transaction", "[COMMIT] Commit",
          "[AREAID] AreaID requested: T:1:77:host", "[INFO] Column: A Type: 452 Length: 4 Alias: A"}) {
        EXPECT_EQ(doubtful_behind(text), 0U) << text;
    }
}

TEST(LogTexts, ALineEndInAnyOtherTextMakesWhatFollowsDoubtful) {
    EXPECT_EQ(doubtful_behind("[CONN] Connected to: /a" + forged + " Pointer DB1: 0x12(3)"), 2U);
    EXPECT_EQ(doubtful_behind("[EXIT] Disconnected from: /a\nb"), 1U);
    EXPECT_EQ(doubtful_behind("[ERROR] Meth: X\n does not exist inside zmFBConn"), 1U);
    EXPECT_EQ(doubtful_behind("what a program writes"), 1U);
    EXPECT_EQ(doubtful_behind("[FORCED] Hard Count. Table: T"), 1U);
    EXPECT_EQ(doubtful_behind("[QURY] Statement: select q'{it's" + forged + "}' from t"), 2U);
}

TEST(LogTexts, NoTextIsLongerThan9999BytesSoWhatComesThenIsNot) {
    const std::string begun = "[UPDT] Statement: x '";
    const auto filled = [&](std::size_t size) { return begun + std::string(size - begun.size(), 'x'); };
    const std::string next = head.substr(0, head.find('\n'));
    EXPECT_EQ(doubtful_behind(filled(9999)), 0U);
    EXPECT_EQ(doubtful_behind(filled(9999 - next.size())), 0U);
    EXPECT_EQ(doubtful_behind(filled(9999 - next.size() - 1)), 1U);
}

TEST(LogTexts, ALogThatBeginsWithinATextIsDoubtfulAsFarAsThatMayGo) {
    const std::string entry = head + "[COMMIT] Commit\n";
    EXPECT_EQ(read_log("of a text\n" + entry + entry),
              (std::vector<std::string>{"?[COMMIT] Commit", "?[COMMIT] Commit"}));
    EXPECT_EQ(read_log(std::string(10000, 'x') + "\n" + entry),
              (std::vector<std::string>{"[COMMIT] Commit"}));
    EXPECT_EQ(read_log(entry), (std::vector<std::string>{"[COMMIT] Commit"}));
}

TEST(LogTexts, ALineThatLooksLikeAnEntryBelongsToTheTextWhenNoTextFollowsIt) {
    const std::string line = head.substr(0, head.find('\n'));
    LogReader reader;
    reader.take(head + "[UPDT] Statement: x '\n" + line + "\n" + line + "\nand no blank'\n");
    const auto entry = reader.last();
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->text, "[UPDT] Statement: x '\n" + line + "\n" + line + "\nand no blank'");
}

}  // namespace
}  // namespace zmfb::tool
