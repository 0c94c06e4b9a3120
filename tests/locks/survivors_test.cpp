// Processes that go on while others on the same server are killed.
#include "tests/locks/killed_worker_test.h"

namespace zmfb::test {
namespace {

using Survivors = KilledWorker;

TEST_F(Survivors, GoOnWhileOthersAreKilled) {
    ASSERT_TRUE(on_server()) << "embedded, a killed process can take the others with it";
    std::vector<Worker> others = start_workers(2, table);
    ASSERT_EQ(others.size(), 2u);
    for (Worker& other : others) {
        other.process.start("contend", table, other.area, 400, records, 7, file("holds"));
    }
    for (unsigned seed = 200; seed < 204; ++seed) {
        EXPECT_NE(kill_one_at_work(seed, "OTHER" + std::to_string(seed)), "");
    }
    for (Worker& other : others) {
        const Value figures = other.process.finish();
        EXPECT_EQ(figures[1].number(), 400);
        EXPECT_EQ(figures[5].number(), 0) << "grants without a row of their own";
        EXPECT_EQ(figures[7].number(), 0) << "locks that could not be released";
    }
}

}  // namespace
}  // namespace zmfb::test
