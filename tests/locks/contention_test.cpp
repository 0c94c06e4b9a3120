// Processes that fight for the records and the lock of one table.
#include "tests/support/worker/contention.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>

#include "tests/locks/workers_test.h"

namespace zmfb::test {
namespace {

constexpr int records = 20;
constexpr const char* table = "CONTESTED";

// How often all processes together try: a few hundred times, or what the environment variable says for the
// long run.
int attempts() {
    const char* given = std::getenv("ZMFB_CONTENTION_ATTEMPTS");
    return given == nullptr ? 800 : std::atoi(given);
}

// What `contend` answers, and the sum of it over several processes; of the longest call the longest.
struct Figures {
    long attempts = 0, grants = 0, table_grants = 0, refusals = 0, wrong_rows = 0, retries = 0, kept = 0,
         given_back = 0, longest = 0;

    void add(const Value& answer) {
        long* const sums[] = {&attempts,   &grants,  &table_grants, &refusals,
                              &wrong_rows, &retries, &kept,         &given_back};
        ASSERT_EQ(answer.size(), std::size(sums) + 1) << show(answer);
        for (std::size_t i = 0; i < std::size(sums); ++i)
            *sums[i] += static_cast<long>(answer[i + 1].integer());
        longest = std::max(longest, static_cast<long>(answer[answer.size()].integer()));
    }
};

class Contention : public Workers {
  protected:
    // Lets that many processes contend; the holds that they recorded are in `holds` then.
    void contend(int processes, bool look_again) {
        std::vector<Worker> workers = start_workers(processes, table);
        ASSERT_EQ(workers.size(), static_cast<std::size_t>(processes));
        for (Worker& worker : workers) worker.process.call("setloglevel", 1);
        clear_log();
        const auto begin = std::chrono::steady_clock::now();
        int seed = 1;
        for (Worker& worker : workers) {
            worker.process.start("contend", table, worker.area, attempts() / processes, records, seed++,
                                 file("holds"), look_again);
        }
        for (Worker& worker : workers) sum.add(worker.process.finish(std::chrono::minutes(50)));
        const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
        holds = recorded_holds(file("holds"));
        fmt::print(
            "{} processes, {} records and one table lock, {}: {} attempts, {} grants ({} of them the table), "
            "{} refusals, {} given back, {} times a record and the table at once, {} releases tried again, "
            "longest call {} ms, {:.1f} s\n",
            processes, records, on_server() ? "server" : "embedded", sum.attempts, sum.grants,
            sum.table_grants, sum.refusals, sum.given_back, record_and_table_overlaps(holds), sum.retries,
            sum.longest, took.count());
    }

    // What holds for every run.
    void expect_exclusion() const {
        EXPECT_EQ(sum.attempts, attempts());
        EXPECT_EQ(sum.grants + sum.refusals + sum.given_back, sum.attempts);
        EXPECT_GT(sum.grants - sum.table_grants, 0);
        EXPECT_GT(sum.table_grants, 0);
        EXPECT_GT(sum.refusals, 0) << "the processes did not meet";
        EXPECT_EQ(sum.wrong_rows, 0) << "grants without a row of their own";
        EXPECT_EQ(sum.kept, 0) << "locks that could not be released";
        EXPECT_EQ(static_cast<long>(holds.size()), sum.grants);
        if (const auto two = overlap_in(holds)) {
            ADD_FAILURE() << two->first.resource << " held by " << two->first.area << " until "
                          << two->first.until << " and by " << two->second.area << " from "
                          << two->second.from;
        }
        EXPECT_EQ(record_locks(), Rows{});
        EXPECT_EQ(table_locks(), Rows{});
        // Refused by the index, or as the loser of a deadlock; that is what a release is tried again for.
        for (const LogEntry& entry : log_lines()) {
            EXPECT_TRUE(entry.level != 1 || entry.text.starts_with("[ERROR] SQLCODE=-803 (") ||
                        entry.text.starts_with("[ERROR] SQLCODE=-913 ("))
                << entry.text;
        }
    }

    Figures sum;
    std::vector<Hold> holds;
};

TEST_F(Contention, NoTwoAreasEverHoldOneRecordOrTheTable) {
    // A record and the table may be granted together to two areas; how often is printed.
    contend(8, false);
    expect_exclusion();
}

TEST_F(Contention, WhoLooksAgainNeverHoldsARecordWhileAnotherHoldsTheTable) {
    contend(2, true);  // so few that the table is free now and then
    expect_exclusion();
    EXPECT_EQ(record_and_table_overlaps(holds), 0);
}

TEST(ContentionWitness, OverlappingHoldsOfOneResourceAreFound) {
    const Hold early{"7", "a", 100, 200}, late{"7", "b", 199, 300}, inside{"7", "c", 120, 130};
    const Hold after{"7", "b", 200, 300}, elsewhere{"8", "b", 100, 200}, whole{"table", "b", 100, 200};
    EXPECT_TRUE(overlap_in({late, early}).has_value());
    EXPECT_TRUE(overlap_in({early, after, inside}).has_value());
    EXPECT_FALSE(overlap_in({after, early, elsewhere, whole}).has_value());
}

TEST(ContentionWitness, HoldsOfARecordAndOfTheTableThatOverlapAreCounted) {
    const Hold table{"table", "a", 100, 200}, later{"table", "b", 300, 400};
    const Hold own{"1", "a", 100, 200}, inside{"2", "b", 150, 160}, across{"3", "c", 199, 301};
    const Hold before{"4", "c", 50, 100}, between{"5", "c", 200, 300}, after{"6", "c", 400, 500};
    EXPECT_EQ(record_and_table_overlaps({after, later, own, table, before, between}), 0);
    EXPECT_EQ(record_and_table_overlaps({inside, later, table}), 1);
    EXPECT_EQ(record_and_table_overlaps({later, across, inside, table}), 3);
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
