// Processes that work on one table through work areas at once.
#include "tests/support/worker/crowd.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <random>

#include "tests/locks/workers_test.h"
#include "tests/support/validation.h"
#include "tests/support/worker/contention.h"
#include "tests/support/worker/ledger.h"
#include "zmfbconn/area.h"
#include "zmfbconn/methods.h"

namespace zmfb::test {
namespace {

constexpr int processes = 8;
constexpr int anchors = 20;
constexpr const char* table = "CROWD";
// Of the counts that workers answer, those that a short run may be without: the table is seldom free of all
// others' locks, and fast processes are seldom in each other's way.
constexpr std::array<std::size_t, 2> counts_of_luck = {5, 6};

// How long they work: a few seconds, or what the environment variable says for the long run.
int seconds() {
    const char* given = std::getenv("ZMFB_CROWD_SECONDS");
    return given == nullptr ? 4 : std::atoi(given);
}

class Crowd : public Workers {
  protected:
    void SetUp() override {
        const Structure fields = {{"NAME", "C", 10, 0}, {"AMOUNT", "N", 12, 0}};
        ASSERT_TRUE(connection()(m::createtable, table, fields));
        Area(connection(), table).create_order("NAME", "NAME");
        execute(
            "execute block as declare i integer = 1; begin while (i <= 60) do begin insert into CROWD (NAME, "
            "AMOUNT) values ('N' || lpad(mod(:i * 37, 100) * 20, 4, '0'), 100); i = i + 1; end end");
        before = table_now();
    }

    [[nodiscard]] Change table_now() const {
        const Row row = rows("select cast(sum(AMOUNT) as bigint), count(*) from CROWD")[0];
        return {std::stoll(row[0]), std::stoll(row[1])};
    }
    [[nodiscard]] std::string ledger(int number) const { return file("ledger" + std::to_string(number)); }

    void start(Worker& worker, int number, int milliseconds) {
        worker.process.start("crowd", table, milliseconds, number, anchors, ledger(number), file("holds"));
    }

    void add(const Value& answer) {
        ASSERT_EQ(answer.size(), sums.size() + 1) << show(answer);
        for (std::size_t i = 0; i < sums.size(); ++i) sums[i] += static_cast<long>(answer[i + 1].integer());
        EXPECT_EQ(answer[answer.size()].string(), "");
    }

    void expect_sound_books(int ledgers) {
        Account account;
        for (int number = 1; number <= ledgers; ++number) add_ledger(ledger(number), account);
        const Change now = table_now();
        EXPECT_TRUE(accounts_for(account, {now.amount - before.amount, now.records - before.records}))
            << "the amounts changed by " << now.amount - before.amount << ", the ledgers say "
            << account.made.amount << "; the records by " << now.records - before.records
            << ", the ledgers say " << account.made.records;
        EXPECT_GT(account.changes, 0);
        const std::vector<Hold> holds = recorded_holds(file("holds"));
        EXPECT_GT(holds.size(), 0u);
        if (const auto two = overlap_in(holds)) {
            ADD_FAILURE() << two->first.resource << " held by " << two->first.area << " and by "
                          << two->second.area;
        }
        EXPECT_EQ(record_and_table_overlaps(holds), 0);
        fmt::print(
            "{}: {} s, {} changes, {} transfers, {} appends, {} deletions, {} walks, {} table locks, {} "
            "times "
            "in the way, {} killed in the middle of a change\n",
            on_server() ? "server" : "embedded", seconds(), sums[0], sums[1], sums[2], sums[3], sums[4],
            sums[5], sums[6], account.unfinished.size());
    }

    Change before;
    std::array<long, 7> sums{};
};

TEST_F(Crowd, EightProcessesLoseNothingAndMeetEachRecordOnce) {
    std::vector<Worker> workers = start_workers(processes, table);
    ASSERT_EQ(workers.size(), static_cast<std::size_t>(processes));
    int number = 0;
    for (Worker& worker : workers) start(worker, ++number, seconds() * 1000);
    for (Worker& worker : workers) add(worker.process.finish(std::chrono::seconds(seconds() + 300)));
    for (std::size_t i = 0; i < sums.size(); ++i) {
        if (seconds() < 60 && std::ranges::count(counts_of_luck, i) > 0) continue;
        EXPECT_GT(sums[i], 0) << i;
    }
    expect_sound_books(number);
    EXPECT_EQ(record_locks(), Rows{});
    EXPECT_EQ(table_locks(), Rows{});
    EXPECT_EQ(registrations(), Rows{});
}

// What a killed process leaves in the system tables is removed as an administrator would.
TEST_F(Crowd, ProcessesThatAreKilledTakeNothingWithThem) {
    if (!on_server()) GTEST_SKIP() << "embedded, a killed process can take the others with it";
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds());
    const auto left = [&] {
        return static_cast<int>(std::max<std::int64_t>(
            0, std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now()).count()));
    };
    std::vector<Worker> workers = start_workers(processes - 2, table);
    int number = 0;
    for (Worker& worker : workers) start(worker, ++number, left());
    std::mt19937 random(7);
    int kills = 0;
    while (left() > 0) {
        std::vector<Worker> victims = start_workers(2, table);
        for (Worker& victim : victims) start(victim, ++number, left() + 60000);
        std::this_thread::sleep_for(std::chrono::milliseconds(50 + random() % 700));
        for (Worker& victim : victims) {
            const std::string process = std::to_string(victim.process.pid());
            victim.process.kill();
            ++kills;
            for (const char* leftover : {"RDDSYS_RLK where RLK_AREAID", "RDDSYS_FLK where FLK_AREAID",
                                         "RDDSYS_OPN where OPN_AREAID"}) {
                execute(fmt::format("delete from {} like '%:{}:%'", leftover, process));
            }
        }
    }
    for (Worker& worker : workers) add(worker.process.finish(std::chrono::seconds(300)));
    workers.clear();
    EXPECT_GT(kills, 0);
    expect_sound_books(number);
    EXPECT_EQ(record_locks(), Rows{});
    EXPECT_EQ(table_locks(), Rows{});
    EXPECT_EQ(registrations(), Rows{});
    disconnect();
    expect_sound(database());
}

TEST_F(Runtime, LedgersAddUpAndUnfinishedChangesCountEitherWay) {
    Ledger first(file("first")), second(file("second"));
    first.begin({5, 1});
    first.end(true);
    first.begin({100, 0});
    first.end(false);
    second.begin({-3, 0});
    second.end(true);
    second.begin({7, 1});
    Account account;
    add_ledger(file("first"), account);
    add_ledger(file("second"), account);
    EXPECT_EQ(account.made, (Change{2, 1}));
    EXPECT_EQ(account.changes, 2);
    ASSERT_EQ(account.unfinished, (std::vector<Change>{{7, 1}}));
    EXPECT_TRUE(accounts_for(account, {2, 1}));
    EXPECT_TRUE(accounts_for(account, {9, 2}));
    EXPECT_FALSE(accounts_for(account, {9, 1}));
    EXPECT_FALSE(accounts_for(account, {3, 1}));

    for (int i = 0; i < 100; ++i) account.unfinished.push_back({i % 2 == 0 ? 2 : -4, i % 2});
    EXPECT_TRUE(accounts_for(account, {2 + 7 - 4 * 50, 1 + 1 + 50}));
    EXPECT_TRUE(accounts_for(account, {2 + 2 * 50, 1}));
    EXPECT_FALSE(accounts_for(account, {2 + 2 * 50 + 2, 1}));
    EXPECT_FALSE(accounts_for(account, {2 + 1, 1}));
}

}  // namespace
}  // namespace zmfb::test
