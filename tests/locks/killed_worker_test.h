/// What the tests that kill workers share.
#pragma once

#include <chrono>
#include <random>
#include <regex>
#include <string>
#include <thread>

#include "tests/locks/workers_test.h"
#include "tests/support/process.h"

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

}  // namespace zmfb::test
