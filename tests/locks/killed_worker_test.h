/// What the tests that kill workers share.
#pragma once

#include <chrono>
#include <random>
#include <string>
#include <thread>

#include "tests/locks/workers_test.h"
#include "tests/support/validation.h"

namespace zmfb::test {

inline constexpr int records = 20;
inline constexpr const char* table = "CUSTOMER";

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
    /// Clears the system tables, after which nothing is in them, and the database is sound.
    void clear_all() {
        EXPECT_TRUE(yes("clearsystemtables"));
        EXPECT_EQ(registrations(), Rows{});
        EXPECT_EQ(record_locks(), Rows{});
        EXPECT_EQ(table_locks(), Rows{});
        disconnect();
        expect_sound(database());
    }
};

}  // namespace zmfb::test
