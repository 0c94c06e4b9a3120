// Processes that fight for the records and the lock of one table.
#include "tests/support/worker/contention.h"

#include <fmt/format.h>

#include <chrono>
#include <cstdlib>

#include "tests/locks/workers_test.h"

namespace zmfb::test {
namespace {

constexpr int processes = 8;
constexpr int records = 20;
constexpr const char* table = "CONTESTED";

/// How often each process tries: a few, or what the environment variable says for the long run.
int attempts() {
    const char* given = std::getenv("ZMFB_CONTENTION_ATTEMPTS");
    return given == nullptr ? 100 : std::atoi(given);
}

/// What `contend` answers, and the sum of it over several processes.
struct Figures {
    long attempts = 0, grants = 0, table_grants = 0, refusals = 0, wrong_rows = 0, retries = 0, kept = 0;

    void add(const Value& answer) {
        long* const sums[] = {&attempts, &grants, &table_grants, &refusals, &wrong_rows, &retries, &kept};
        ASSERT_EQ(answer.size(), std::size(sums)) << show(answer);
        for (std::size_t i = 0; i < std::size(sums); ++i)
            *sums[i] += static_cast<long>(answer[i + 1].integer());
    }
};

using Contention = Workers;

TEST_F(Contention, NoTwoAreasEverHoldOneRecordOrTheTable) {
    std::vector<Worker> workers = start_workers(processes, table);
    ASSERT_EQ(workers.size(), processes);
    const std::string events = file("holds");

    const auto begin = std::chrono::steady_clock::now();
    int seed = 1;
    for (Worker& worker : workers) {
        worker.process.start("contend", table, worker.area, attempts(), records, seed++, events);
    }
    Figures sum;
    for (Worker& worker : workers) sum.add(worker.process.finish(std::chrono::minutes(30)));
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;

    fmt::print(
        "{} processes, {} records and one table lock, {}: {} attempts, {} grants ({} of them the table), "
        "{} refusals, {} releases tried again, {:.1f} s\n",
        processes, records, on_server() ? "server" : "embedded", sum.attempts, sum.grants, sum.table_grants,
        sum.refusals, sum.retries, took.count());

    EXPECT_EQ(sum.attempts, processes * attempts());
    EXPECT_EQ(sum.grants + sum.refusals, sum.attempts);
    EXPECT_GT(sum.grants - sum.table_grants, 0);
    EXPECT_GT(sum.table_grants, 0);
    EXPECT_GT(sum.refusals, 0) << "the processes did not meet";
    EXPECT_EQ(sum.wrong_rows, 0) << "grants without a row of their own";
    EXPECT_EQ(sum.kept, 0) << "locks that could not be released";

    const std::vector<Hold> holds = recorded_holds(events);
    EXPECT_EQ(static_cast<long>(holds.size()), sum.grants);
    if (const auto two = overlap_in(holds)) {
        ADD_FAILURE() << two->first.resource << " held by " << two->first.area << " until "
                      << two->first.until << " and by " << two->second.area << " from " << two->second.from;
    }
    EXPECT_EQ(record_locks(), Rows{});
    EXPECT_EQ(table_locks(), Rows{});
}

TEST(ContentionWitness, OverlappingHoldsOfOneResourceAreFound) {
    const Hold early{"7", "a", 100, 200}, late{"7", "b", 199, 300}, inside{"7", "c", 120, 130};
    const Hold after{"7", "b", 200, 300}, elsewhere{"8", "b", 100, 200}, whole{"table", "b", 100, 200};
    EXPECT_TRUE(overlap_in({late, early}).has_value());
    EXPECT_TRUE(overlap_in({early, after, inside}).has_value());
    EXPECT_FALSE(overlap_in({after, early, elsewhere, whole}).has_value());
}

TEST_F(Runtime, RecordedHoldsAreReadBack) {
    const std::string events = file("holds");
    ASSERT_TRUE(record_hold(events, {"7", "CUSTOMER:1:22:beta", 100, 200}));
    ASSERT_TRUE(record_hold(events, {"table", "CUSTOMER:1:11:alpha", 150, 250}));
    const std::vector<Hold> holds = recorded_holds(events);
    ASSERT_EQ(holds.size(), 2u);
    EXPECT_EQ(holds[0].area, "CUSTOMER:1:22:beta");
    EXPECT_EQ(holds[1].resource, "table");
    EXPECT_EQ(holds[1].until, 250);
    EXPECT_FALSE(record_hold(file("no such folder/holds"), {"7", "a", 1, 2}));
}

}  // namespace
}  // namespace zmfb::test
