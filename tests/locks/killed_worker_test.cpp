// What a process leaves behind that was killed, and how it is cleaned up.
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <regex>
#include <thread>

#include "tests/locks/workers_test.h"
#include "tests/support/process.h"

namespace zmfb::test {
namespace {

constexpr int records = 20;
constexpr const char* table = "CUSTOMER";

class KilledWorker : public Workers {
  protected:
    /// Starts a worker that locks and unlocks as fast as it can, and kills it at a moment that the seed
    /// decides. Answers the id of its work area.
    std::string kill_one_at_work(unsigned seed, const std::string& victim_table) {
        std::vector<Worker> workers = start_workers(1, victim_table);
        if (workers.empty()) return "";
        Worker& worker = workers.front();
        worker.process.start("churn", victim_table, worker.area, records, seed);
        EXPECT_TRUE(worker.process.finish().logical());
        std::mt19937 random(seed);
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 60000));
        worker.process.kill();
        return worker.area;
    }

    /// What gfix says of a database; nothing when all is well.
    static std::string validation(const std::string& name) {
        const Finished gfix =
            run({"gfix", "-v", "-full", "-user", sysdba, "-password", sysdba_password, name});
        return gfix.out + gfix.err + (gfix.status == 0 ? "" : "status " + std::to_string(gfix.status));
    }

    void expect_sound() const {
        // A page that was taken and not yet used when its process died is an orphan: not an error, a warning.
        // gfix frees it.
        static const std::regex orphans(
            "(Summary of validation errors\n\\s+Number of database page warnings\\s+: \\d+\n)?");
        const std::string found = validation(database());
        EXPECT_TRUE(std::regex_match(found, orphans)) << found;
        EXPECT_EQ(validation(database()), "") << "once the orphans are freed";
    }
};

/// How many are killed: a few, or what the environment variable says for the long run.
unsigned rounds() {
    const char* given = std::getenv("ZMFB_KILLED_WORKERS");
    return given == nullptr ? 4 : static_cast<unsigned>(std::atoi(given));
}

TEST_F(KilledWorker, RowsStayUntilTheyAreReleasedAndClearedAndTheDatabaseIsSound) {
    for (unsigned seed = 1; seed <= rounds(); ++seed) {
        SCOPED_TRACE(seed);
        const std::string dead = kill_one_at_work(seed, table);
        ASSERT_NE(dead, "");

        EXPECT_EQ(registrations(), (Rows{{table, dead, "T"}}));
        EXPECT_TRUE(yes("isrecordlockedbyuser", table, dead, "1"));
        EXPECT_TRUE(yes("istableinuse", table));
        EXPECT_FALSE(yes("setrecordaslocked", table, b, "1"));
        EXPECT_FALSE(yes("settableaslocked", table, b));

        EXPECT_TRUE(yes("releaselocks", table));
        EXPECT_EQ(record_locks(), Rows{});
        EXPECT_EQ(table_locks(), Rows{});
        EXPECT_EQ(registrations(), (Rows{{table, dead, "T"}})) << "not a lock";
        EXPECT_TRUE(yes("setrecordaslocked", table, b, "1"));
        EXPECT_TRUE(yes("settableaslocked", table, b));

        EXPECT_TRUE(yes("clearsystemtables"));
        EXPECT_EQ(registrations(), Rows{});
        EXPECT_EQ(record_locks(), Rows{});
        EXPECT_EQ(table_locks(), Rows{});
        disconnect();
        expect_sound();
    }
}

TEST_F(KilledWorker, ClearingAloneRemovesEverything) {
    const std::string dead = kill_one_at_work(99, table);
    EXPECT_TRUE(yes("isrecordlockedbyuser", table, dead, "1"));
    EXPECT_TRUE(yes("clearsystemtables"));
    EXPECT_EQ(registrations(), Rows{});
    EXPECT_EQ(record_locks(), Rows{});
    EXPECT_EQ(table_locks(), Rows{});
    disconnect();
    expect_sound();
}

TEST_F(KilledWorker, OthersGoOnWhileItIsKilled) {
    std::vector<Worker> others = start_workers(2, table);
    ASSERT_EQ(others.size(), 2u);
    for (Worker& other : others) {
        other.process.start("contend", table, other.area, 60, records, 7, file("holds"));
    }
    for (unsigned seed = 200; seed < 204; ++seed) {
        EXPECT_NE(kill_one_at_work(seed, "OTHER" + std::to_string(seed)), "");
    }
    for (Worker& other : others) {
        const Value figures = other.process.finish();
        EXPECT_EQ(figures[1].number(), 60);
        EXPECT_EQ(figures[7].number(), 0) << "locks that could not be released";
    }
}

TEST_F(KilledWorker, ValidationNoticesABrokenDatabase) {
    const std::string broken = file("broken.fdb");
    std::filesystem::copy_file(file("database.fdb"), broken);
    EXPECT_EQ(validation(broken), "");
    std::fstream pages(broken, std::ios::in | std::ios::out | std::ios::binary);
    pages.seekp(static_cast<std::streamoff>(std::filesystem::file_size(broken) / 2));
    pages << std::string(65536, '\x55');
    pages.close();
    EXPECT_NE(validation(broken), "");
}

}  // namespace
}  // namespace zmfb::test
