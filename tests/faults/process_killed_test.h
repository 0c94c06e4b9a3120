/// What the tests that kill a process in the middle of an operation share.
#pragma once

#include <fmt/format.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <random>
#include <string>
#include <thread>

#include "tests/faults/recovery.h"
#include "tests/support/dbf_builder.h"

namespace zmfb::test {

/// How many processes are killed in each operation: a few, or what the environment variable says.
inline int kills() {
    const char* given = std::getenv("ZMFB_KILLED_PROCESSES");
    return given == nullptr ? 3 : std::atoi(given);
}

/// The seed of the moments: a fixed one, or what the environment variable says.
inline unsigned first_seed() {
    const char* given = std::getenv("ZMFB_SEED");
    return given == nullptr ? 1 : static_cast<unsigned>(std::atoi(given));
}

/// A database, and a worker process that is killed while it works on it. Nobody else is attached meanwhile.
class KilledProcess : public Recovery {
  protected:
    struct Figures {
        int killed = 0;    ///< processes that were at work when they were killed
        int finished = 0;  ///< processes that had answered by then
        int refusals = 0;  ///< after which the engine refused new tables
        int damaged = 0;   ///< after which validation found damage
        std::chrono::microseconds whole{};

        void print(const char* what) const {
            fmt::print(
                "{}: {} killed at work, {} after they had answered, new tables refused {} times, damaged {} "
                "times; seeds {} to {}; undisturbed {} ms\n",
                what, killed, finished, refusals, damaged, first_seed(),
                first_seed() + static_cast<unsigned>(kills()) - 1, whole.count() / 1000);
        }
    };

    [[nodiscard]] std::string data_file() const { return file("data.dat"); }

    /// Kills one process after another, each on a database of its own, at moments that the seeds decide.
    /// `before` makes what the operation starts with, `start` starts it, `after` finds out what was left,
    /// cleans up, does the operation again and takes its result away.
    Figures kill_many(
        const std::function<void(WorkerProcess&)>& start, const std::function<void()>& after,
        const std::function<void()>& before = [] {}) {
        disconnect();
        std::filesystem::copy_file(file("database.fdb"), file("fresh.fdb"));
        Figures figures;
        figures.whole = run_one(start, after, before, nullptr, figures);
        for (int i = 0; i < kills(); ++i) {
            const unsigned seed = first_seed() + static_cast<unsigned>(i);
            SCOPED_TRACE(fmt::format("seed {}", seed));
            run_one(start, after, before, &seed, figures);
            if (HasFatalFailure()) break;
        }
        figures.refusals = refusals();
        EXPECT_LE(figures.damaged, 1 + kills() / 20);
        return figures;
    }

  private:
    /// Puts the backup in the place of the database.
    void start_afresh(const std::function<void()>& before) {
        disconnect();
        std::filesystem::copy_file(file("fresh.fdb"), file("database.fdb"),
                                   std::filesystem::copy_options::overwrite_existing);
        before();
        disconnect();
    }

    /// A killed client of a server damages nothing. Embedded, the engine itself is killed: now and then it
    /// leaves its own tables damaged, and only a backup helps. That is counted.
    bool is_sound(int& damaged) {
        const std::string found = damage(database());
        if (found.empty()) return true;
        ++damaged;
        if (on_server()) {
            ADD_FAILURE() << found;
        } else {
            fmt::print("damaged: {}", found);
        }
        return false;
    }

    /// Runs the operation and kills its process when there is a seed; how long it took without.
    std::chrono::microseconds run_one(const std::function<void(WorkerProcess&)>& start,
                                      const std::function<void()>& after, const std::function<void()>& before,
                                      const unsigned* seed, Figures& figures) {
        using std::chrono::steady_clock;
        start_afresh(before);
        WorkerProcess worker;
        EXPECT_TRUE(worker.call("attach", database(), sysdba, sysdba_password).logical());
        worker.call("setfullpathdatfile", data_file());
        const auto begin = steady_clock::now();
        start(worker);
        auto taken = std::chrono::microseconds(0);
        if (seed == nullptr) {
            worker.finish();
            taken = std::chrono::duration_cast<std::chrono::microseconds>(steady_clock::now() - begin);
            worker.call("disconnect");
        } else {
            std::mt19937 random(*seed);
            std::this_thread::sleep_for(
                std::chrono::microseconds(random() % static_cast<unsigned>(figures.whole.count())));
            ++(worker.has_answered() ? figures.finished : figures.killed);
            worker.kill();
        }
        if (!is_sound(figures.damaged)) {
            start_afresh(before);
        }
        call("setfullpathdatfile", data_file());
        after();
        disconnect();
        is_sound(figures.damaged);
        EXPECT_EQ(raised(), std::vector<std::string>{});
        forget_raised();
        return taken;
    }
};

}  // namespace zmfb::test
