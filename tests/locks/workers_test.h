/// What the tests with several processes share.
#pragma once

#include <string>
#include <vector>

#include "tests/locks/locks_test.h"
#include "tests/support/environment.h"
#include "tests/support/worker/worker_process.h"

namespace zmfb::test {

/// A database and worker processes that are attached to it.
class Workers : public Locks {
  protected:
    struct Worker {
        WorkerProcess process;
        std::string area;  ///< the id of its work area 1 with the table
    };

    /// Starts `count` processes, attaches them and asks each for the id of its work area on `table`.
    std::vector<Worker> start_workers(int count, const std::string& table) {
        std::vector<Worker> workers;
        for (int i = 0; i < count; ++i) {
            WorkerProcess process;
            if (!process.call("attach", database(), sysdba, sysdba_password).logical()) {
                ADD_FAILURE() << "worker " << i << " could not attach\n" << log_text();
                continue;
            }
            std::string area = process.call("getuniqueareaid", table, "1").string();
            workers.push_back({std::move(process), std::move(area)});
        }
        return workers;
    }
};

}  // namespace zmfb::test
