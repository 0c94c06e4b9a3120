// Two processes that open one table at the same moment, and two whose area ids were cut.
#include <fmt/format.h>

#include <cstdlib>

#include "tests/locks/workers_test.h"

namespace zmfb::test {
namespace {

constexpr const char* table = "CUSTOMER";

// How many rounds: a few, or what the environment variable says for the long run.
int rounds() {
    const char* given = std::getenv("ZMFB_OPEN_ROUNDS");
    return given == nullptr ? 60 : std::atoi(given);
}

class Opens : public Workers {
  protected:
    // How many processes got their open in a round, counted over the rounds.
    struct Outcome {
        int none = 0, one = 0, both = 0;
    };

    // Lets two processes open the table at once, the first exclusively, and close it again.
    Outcome open_at_once(bool second_is_shared, bool safely) {
        Outcome outcome;
        std::vector<Worker> workers = start_workers(2, table);
        EXPECT_EQ(workers.size(), 2u);
        for (int round = 0; round < rounds() && workers.size() == 2; ++round) {
            bool shared = false;
            for (Worker& worker : workers) {
                worker.process.start("opentable", table, worker.area, shared, safely);
                shared = second_is_shared;
            }
            int opened = 0;
            for (Worker& worker : workers) opened += worker.process.finish().logical() ? 1 : 0;
            ++(opened == 2 ? outcome.both : opened == 1 ? outcome.one : outcome.none);
            for (Worker& worker : workers) worker.process.call("closetable", table, worker.area);
        }
        fmt::print("{}, {}, {}: both {}, one {}, none {}\n", on_server() ? "server" : "embedded",
                   second_is_shared ? "exclusive and shared" : "both exclusive",
                   safely ? "safely" : "asked first", outcome.both, outcome.one, outcome.none);
        EXPECT_EQ(registrations(), Rows{});
        EXPECT_EQ(table_locks(), Rows{});
        return outcome;
    }
};

TEST_F(Opens, InTheSafeOrderNobodyElseHasATableThatIsOpenExclusively) {
    for (const bool second_is_shared : {false, true}) {
        open_at_once(second_is_shared, false);  // what asking first gives, to compare with
        const Outcome outcome = open_at_once(second_is_shared, true);
        EXPECT_EQ(outcome.both, 0);
        EXPECT_GT(outcome.one, 0);
    }
}

using CutAreaIds = Workers;

TEST_F(CutAreaIds, OfTwoProcessesAreOneAreaWhichHoldsOneRecordTwice) {
    std::vector<Worker> workers = start_workers(2, table);
    ASSERT_EQ(workers.size(), 2u);
    const std::string area(45, 'A');
    std::vector<std::string> ids;
    for (Worker& worker : workers) {
        ids.push_back(worker.process.call("getuniqueareaid", table, area).string());
        EXPECT_EQ(ids.back().size(), 50u);
        EXPECT_TRUE(worker.process.call("setrecordaslocked", table, ids.back(), "1").logical());
    }
    EXPECT_EQ(ids[0], ids[1]);
    EXPECT_EQ(record_locks(), (Rows{{table, "1", ids[0]}}));
}

TEST_F(CutAreaIds, WithAShortAreaNameEachProcessHasItsOwn) {
    std::vector<Worker> workers = start_workers(2, table);
    ASSERT_EQ(workers.size(), 2u);
    EXPECT_NE(workers[0].area, workers[1].area);
    EXPECT_TRUE(workers[0].process.call("setrecordaslocked", table, workers[0].area, "1").logical());
    EXPECT_FALSE(workers[1].process.call("setrecordaslocked", table, workers[1].area, "1").logical());
}

}  // namespace
}  // namespace zmfb::test
