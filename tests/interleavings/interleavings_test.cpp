// Sessions that work on one database at once, one step of one of them at a time, in every order.
//
// What they may answer and leave behind is what they do when only whole calls change places, and what a case
// says is known beside that.
#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <regex>

#include "tests/interleavings/case_file.h"
#include "tests/interleavings/explore.h"
#include "tests/interleavings/sessions.h"
#include "tests/support/database.h"
#include "tests/support/environment.h"
#include "tests/support/worker/wire.h"

namespace zmfb::test {

void PrintTo(const InterleavingCase& the_case, std::ostream* out) { *out << the_case.name; }

namespace {

// How many interleavings of a case: some, or what the environment variable says for the long run.
long limit() {
    const char* given = std::getenv("ZMFB_INTERLEAVINGS");
    return given == nullptr ? 12 : std::atol(given);
}

std::vector<InterleavingCase> all_cases() {
    std::vector<InterleavingCase> all;
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(ZMFB_INTERLEAVING_CASES))
        files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    for (const std::filesystem::path& file : files) {
        const std::vector<InterleavingCase> cases = read_interleavings(file);
        all.insert(all.end(), cases.begin(), cases.end());
    }
    return all;
}

class InterleavingTest : public Database {
  protected:
    void set_up(const InterleavingCase& of) {
        for (const std::string& line : of.setup) {
            const CallOfLiterals made = read_call(line);
            connection().call_with(made.method, host::Args(made.arguments));
        }
        disconnect();
    }
    // Walks a case, whole calls or every step.
    Walked walk(const InterleavingCase& of, bool whole_calls, long most) {
        Sessions sessions(of, database());
        return walk_interleavings([&](const Schedule& begin) { return sessions.run(begin, whole_calls); },
                                  most);
    }
};

class Interleavings : public InterleavingTest, public ::testing::WithParamInterface<InterleavingCase> {};

std::string in_words(const Schedule& schedule) {
    std::string text;
    for (const std::size_t session : schedule) text += session_name(session);
    return text;
}

void expect_never(const InterleavingCase& of, const Walked& walked) {
    for (const std::string& pattern : of.never) {
        for (const auto& [outcome, schedule] : walked.outcomes) {
            EXPECT_FALSE(std::regex_search(outcome, std::regex(pattern)))
                << outcome << "\n  comes of the steps " << in_words(schedule);
        }
    }
}

TEST_P(Interleavings, GiveWhatWholeCallsInSomeOrderGive) {
    const InterleavingCase& of = GetParam();
    set_up(of);
    const Walked serial = walk(of, true, 100000);
    ASSERT_TRUE(serial.whole);
    const Walked walked = walk(of, false, limit());
    fmt::print("{}: {}: {} interleavings{}, {} of them of whole calls, {} steps waited, {} outcomes\n",
               of.file, of.name, walked.runs + serial.runs,
               walked.whole ? "" : fmt::format(" (up to {} breaks in each)", walked.most_breaks), serial.runs,
               walked.blocked, walked.outcomes.size());
    expect_never(of, serial);
    expect_never(of, walked);
    for (const auto& [outcome, schedule] : walked.outcomes) {
        const bool known = serial.outcomes.contains(outcome) ||
                           std::find(of.also.begin(), of.also.end(), outcome) != of.also.end();
        EXPECT_TRUE(known) << outcome << "\n  comes of the steps " << in_words(schedule);
    }
    for (const std::string& known : of.also) {
        EXPECT_FALSE(serial.outcomes.contains(known)) << "whole calls give it, too: " << known;
        if (walked.whole) {
            EXPECT_TRUE(walked.outcomes.contains(known)) << "never met: " << known;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(All, Interleavings, ::testing::ValuesIn(all_cases()), [](const auto& info) {
    std::string name = info.param.file + "_" + info.param.name;
    for (char& letter : name) {
        if (std::isalnum(static_cast<unsigned char>(letter)) == 0) letter = '_';
    }
    return name;
});

using EveryInterleaving = InterleavingTest;

TEST_F(EveryInterleaving, OfTwoAndThreeStepsIsWalkedOnce) {
    InterleavingCase of;
    const std::string step = R"x(executequery("select 1 from rdb$database"))x";
    of.sessions = {{step, step}, {step, step, step}};
    const Walked walked = walk(of, false, 1000);
    EXPECT_EQ(walked.runs, 10);  // 5 over 2
    EXPECT_TRUE(walked.whole);
    EXPECT_EQ(walk(of, false, 9).whole, false);
}

TEST_F(EveryInterleaving, WaitsForAStepThatAnotherSessionIsInTheWayOf) {
    execute("create table T (N integer not null primary key)");
    InterleavingCase of;
    of.before = {"delete from T"};
    of.shows = {"select n from T"};
    of.sessions = {{R"x(executeupdate("insert into T values (1)"))x"},
                   {R"x(executeupdate("insert into T values (1)"))x"}};
    const Walked walked = walk(of, false, 1000);
    EXPECT_TRUE(walked.whole);
    EXPECT_GT(walked.blocked, 0);
    EXPECT_EQ(walked.outcomes.size(), 2u);  // one of them is refused
    const Walked serial = walk(of, true, 1000);
    EXPECT_EQ(serial.runs, 2);
    EXPECT_EQ(serial.blocked, 0);
}

}  // namespace
}  // namespace zmfb::test
