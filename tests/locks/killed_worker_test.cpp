// What a process leaves behind that was killed, and how it is cleaned up.
#include "tests/locks/killed_worker_test.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "tests/support/server.h"

namespace zmfb::test {
namespace {

// How many are killed: a few, or what the environment variable says for the long run.
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

        clear_all();
    }
}

TEST_F(KilledWorker, ClearingAloneRemovesEverything) {
    const std::string dead = kill_one_at_work(99, table);
    EXPECT_TRUE(yes("isrecordlockedbyuser", table, dead, "1"));
    clear_all();
}

TEST_F(KilledWorker, DatabaseOfWhichEveryUserWasKilledIsCleanedUp) {
    // Embedded, one killed process can leave the others standing still: it may have died with the mutex of
    // the engine's shared lock table, which is not a robust one in every build of the engine. Once all are
    // gone the table is made anew.
    std::vector<Worker> workers = start_workers(3, table);
    ASSERT_EQ(workers.size(), 3u);
    int seed = 300;
    for (Worker& worker : workers) {
        worker.process.start("contend", table, worker.area, 1000000, records, seed++, file("holds"));
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    for (Worker& worker : workers) worker.process.kill();

    EXPECT_TRUE(yes("clearsystemtables"));
    EXPECT_EQ(record_locks(), Rows{});
    EXPECT_EQ(table_locks(), Rows{});
    disconnect();
    expect_sound(database());
}

TEST_F(KilledWorker, ValidationNoticesABrokenDatabase) {
    const std::string path = file("broken.fdb");
    const std::string broken = on_server() ? Server::shared().name_of(path) : path;
    std::filesystem::copy_file(file("database.fdb"), path);
    EXPECT_EQ(validation(broken), "");
    std::fstream pages(path, std::ios::in | std::ios::out | std::ios::binary);
    pages.seekp(static_cast<std::streamoff>(std::filesystem::file_size(path) / 2));
    pages << std::string(65536, '\x55');
    pages.close();
    EXPECT_NE(validation(broken), "");
}

}  // namespace
}  // namespace zmfb::test
