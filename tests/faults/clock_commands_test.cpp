// Commands for which the time of day jumps by hours: logs, seconds, rates, and what is read again and again.
#include <functional>
#include <nlohmann/json.hpp>
#include <regex>
#include <set>

#include "tests/support/dbf_builder.h"
#include "tests/support/dialogue.h"
#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

constexpr int an_hour = 3600;  // which the time of day jumps by at least

class JumpingClockOfCommands : public Tool {
  protected:
    Finished zmfb_then(std::vector<std::string> words, const std::string& input = "") const {
        words.insert(words.begin(), {"--db", path});
        const Finished run = zmfb(words, input, jumping);
        EXPECT_EQ(run.status, 0) << run.err;
        return run;
    }
    // The same on a terminal.
    [[nodiscard]] std::vector<std::string> words_then(std::vector<std::string> words) const {
        words.insert(words.begin(), {"--db", path});
        return command(words, jumping);
    }
    // All that the pattern finds, the part in parentheses of it.
    static std::vector<std::string> found(const std::string& text, const char* pattern) {
        const std::regex parts(pattern);
        std::vector<std::string> all;
        for (std::sregex_iterator one(text.begin(), text.end(), parts), none; one != none; ++one)
            all.push_back((*one)[1].str());
        return all;
    }

    const std::vector<std::string> jumping{"LD_PRELOAD=" ZMFB_JUMPING_CLOCK,
                                           "ASAN_OPTIONS=verify_asan_link_order=0"};
    const std::string path = database();
};

TEST_F(JumpingClockOfCommands, ShowsTheSecondsThatPassed) {
    // That it jumps shows in the log of a matrix: hours lie between two of its blocks.
    zmfb_then({"import", ZMFB_EXAMPLE_DBF});
    const std::string matrix = zmfb_then({"matrix", "extract", "customers", "customers"}).out;
    const std::size_t first = matrix.find("   Data: "), second = matrix.rfind("   Data: ");
    ASSERT_LT(first, second) << matrix;
    EXPECT_NE(matrix.substr(first, 26), matrix.substr(second, 26));

    std::string shown = zmfb_then({"import", "--drop-existing", "--yes", ZMFB_EXAMPLE_DBF}).out;
    shown += zmfb_then({"export", "customers", "-o", file("")}).out;
    shown += zmfb_then({"shell"}, ".timer on\nselect 1 from rdb$database;\n").err;
    const auto seconds = found(shown, R"((\S+\.[0-9]+) s\b)");
    EXPECT_EQ(seconds.size(), 3U) << shown;
    for (const std::string& one : seconds) {
        EXPECT_GE(std::stod(one), 0) << shown;
        EXPECT_LT(std::stod(one), an_hour) << shown;
    }
    const Finished json = zmfb_then({"--json", "export", "customers", "--yes", "-o", file("")});
    EXPECT_GE(nlohmann::json::parse(json.out)["seconds"].get<double>(), 0);
}

// As they were written, one behind the other, whatever their dates.
TEST_F(JumpingClockOfCommands, LeavesEntriesOfTheLogAsTheyAre) {
    const std::vector<std::string> logged{"--log-level", "8", "call", "istable('CLIENT')",
                                          "istable('STOCK')"};
    const auto entries_of = [&](const std::function<void()>& work) {
        clear_log();
        work();
        return nlohmann::json::parse(zmfb({"--json", "log", "--count", "1000"}).out);
    };
    const auto expected = entries_of([&] { on(path, logged); });
    const auto entries = entries_of([&] { zmfb_then(logged); });
    ASSERT_EQ(entries.size(), expected.size());
    EXPECT_GT(entries.size(), 3U);
    const auto without_pointer = [](const std::string& text) { return text.substr(0, text.find("Pointer")); };
    const std::regex date(R"([A-Z][a-z]{2} [A-Z][a-z]{2} [ 1-3]\d \d\d:\d\d:\d\d \d{4})");
    std::set<std::string> hours;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        EXPECT_EQ(entries[i]["level"], expected[i]["level"]);
        EXPECT_EQ(without_pointer(entries[i]["text"]), without_pointer(expected[i]["text"]));
        EXPECT_EQ(entries[i]["doubtful"], expected[i]["doubtful"]);
        const std::string written = entries[i]["date"];
        EXPECT_TRUE(std::regex_match(written, date)) << written;
        hours.insert(written.substr(0, 13));
    }
    EXPECT_GT(hours.size(), 1U) << "it did not jump";
}

TEST_F(JumpingClockOfCommands, ShowsRatesAndTimesLeftAsTheyAre) {
    DbfBuilder dbf = DbfBuilder().field("CODE", 'N', 8).field("NAME", 'C', 60);
    for (int i = 0; i < 100000; ++i) dbf.record({std::to_string(i), "name"});
    dbf.write(file("big.dbf"));
    for (const std::vector<std::string>& words :
         {std::vector<std::string>{"import", file("big.dbf")}, {"export", "BIG", "-o", file("")}}) {
        SCOPED_TRACE(words[0]);
        Dialogue talk(words_then(words));
        const std::string shown = talk.expect(": 100000 records, ");
        EXPECT_EQ(talk.end(), 0);
        const auto rates = found(shown, R"(, (\S+)/s)"), left = found(shown, R"(/s, (\S+) s left)");
        EXPECT_FALSE(left.empty()) << shown;
        for (const auto& numbers : {rates, left}) {
            for (const std::string& number : numbers)
                EXPECT_TRUE(std::regex_match(number, std::regex("[0-9]+"))) << number;
        }
        for (const std::string& seconds : left) EXPECT_LT(std::stol(seconds), an_hour);
    }
}

TEST_F(JumpingClockOfCommands, IsNotWhatBrowseAndTheListOfLocksWaitBy) {
    zmfb_then({"import", ZMFB_EXAMPLE_DBF});
    Dialogue table(words_then({"browse", "customers", "--refresh", "1"}));
    Dialogue locks(words_then({"locks", "--watch", "--refresh", "1"}));
    table.expect("record 1 ");
    locks.expect("no locks");
    for (const char* name : {"7418529630", "9630741852"}) {
        exec(path, std::string("update customers set name = '") + name + "' where recno = 3");
        table.expect(name);
    }
    EXPECT_EQ(on(path, {"call", "setrecordaslocked('CUSTOMERS', 'CUSTOMERS:TILL:1:afar', '3')"}).out,
              ".T.\n");
    locks.expect("TILL");
    for (Dialogue* shown : {&table, &locks}) {
        shown->type("q");
        EXPECT_EQ(shown->end(), 0);
    }
}

}  // namespace
}  // namespace zmfb::test
