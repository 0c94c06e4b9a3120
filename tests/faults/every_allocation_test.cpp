// Every allocation made to fail, one at a time, in every method.
#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <new>
#include <set>

#include "tests/faults/walk.h"
#include "tests/support/failing_memory.h"
#include "tests/support/worker/wire.h"

namespace zmfb::test {
namespace {

// How many allocations of a scenario are made to fail, the first and the last among them; the environment
// variable says it for the long run.
long limit(const Scenario& scenario) {
    if (const char* given = std::getenv("ZMFB_FAULTS_OF_EACH")) return std::atol(given);
    return scenario.uses == Uses::changes ? 1 : 8;
}

// DBF files that this process has open.
long open_tables() {
    const std::filesystem::directory_iterator open("/proc/self/fd");
    return std::count_if(begin(open), end(open), [](const std::filesystem::directory_entry& entry) {
        std::error_code gone;
        return std::filesystem::read_symlink(entry, gone).extension() == ".dbf";
    });
}

class EveryAllocation : public Walk {
  protected:
    struct Ran {
        bool thrown = false;
        std::string answer;
        std::vector<std::string> raised;
        std::string state;
        Balance balance;
        long allocations = 0;
    };

    // Runs a scenario with that fault in the call itself.
    Ran run_with(const Scenario& scenario, MemoryFault fault) {
        for (const std::string& call : scenario.before) evaluate(call);
        const CallOfLiterals parsed = scenario.act ? CallOfLiterals{} : read_call(filled(scenario.call));
        Ran ran;
        forget_raised();
        Witness witness;
        {
            Value answer;
            const CountedMemory memory(fault);
            try {
                answer = scenario.act ? scenario.act(*this)
                                      : object().call_with(parsed.method, Args(parsed.arguments));
            } catch (const std::bad_alloc&) {
                ran.thrown = true;
            }
            ran.allocations = CountedMemory::count();
            ran.answer = shown(answer);
        }
        ran.raised = raised();
        forget_raised();
        for (const std::string& call : scenario.after) evaluate(call);
        // What could not detach does so when it goes.
        if (scenario.method == "disconnect" || scenario.method == "axit") let_object_go();
        ran.balance = balance_of(witness);
        if (scenario.uses == Uses::changes) ran.state = state_of_database();
        return ran;
    }

    void fail_one(const Scenario& scenario, const Ran& good, long nth) {
        SCOPED_TRACE(fmt::format("{} {}: allocation {}", scenario.method, scenario.variant, nth));
        if (scenario.uses == Uses::changes) restore(scenario);
        const Ran ran = run_with(scenario, {.nth = nth});
        ++failed_;
        thrown_ += ran.thrown ? 1 : 0;
        EXPECT_EQ(ran.balance, good.balance);
        EXPECT_EQ(open_tables(), 0);
        if (!ran.thrown) {
            EXPECT_EQ(ran.answer, good.answer) << "answered as if nothing had failed";
            EXPECT_EQ(ran.raised, good.raised);
            EXPECT_EQ(ran.state, good.state);
        }
        expect_usable(scenario);
        if (scenario.uses == Uses::changes) return;
        const Ran again = run_with(scenario, {});
        EXPECT_EQ(again.answer, good.answer) << "the next call";
        EXPECT_EQ(again.balance, good.balance) << "the next call";
    }

    void walk_memory(const Scenario& scenario) {
        SCOPED_TRACE(scenario.method + " " + scenario.variant);
        restore(scenario);
        run_with(scenario, {});  // what is made once
        if (scenario.uses == Uses::changes) restore(scenario);
        const Ran good = run_with(scenario, {});
        forget_living_blocks();
        const long runs = std::min(good.allocations, limit(scenario));
        allocations_ += good.allocations;
        for (long i = 0; i < runs; ++i)
            fail_one(scenario, good,
                     runs == 1 ? (good.allocations + 1) / 2 : 1 + i * (good.allocations - 1) / (runs - 1));
        let_object_go();
        EXPECT_LE(living_blocks(), kept_to_the_end) << "blocks not given back";
    }

    void walk_all(const char* what, const std::vector<Scenario>& scenarios) {
        std::set<std::string> methods;
        for (const Scenario& scenario : scenarios) {
            walk_memory(scenario);
            methods.insert(scenario.method);
        }
        fmt::print("{}: {} methods, {} allocations, {} made to fail, {} of them thrown\n", what,
                   methods.size(), allocations_, failed_, thrown_);
        EXPECT_GT(failed_, 0);
    }

  private:
    // Of what is kept for the next call, such as the message of the engine, a little may have grown.
    static constexpr std::size_t kept_to_the_end = 4;
    long allocations_ = 0, failed_ = 0, thrown_ = 0;
};

TEST_F(EveryAllocation, OfAttachingAndDetaching) { walk_all("conn", connection_scenarios()); }
TEST_F(EveryAllocation, OfQueriesAndStatements) { walk_all("sql", sql_scenarios()); }
TEST_F(EveryAllocation, OfCatalogQuestions) { walk_all("catalog", catalog_scenarios()); }
TEST_F(EveryAllocation, OfRegistrationsAndLocks) { walk_all("locks", lock_scenarios()); }
TEST_F(EveryAllocation, OfTablesMadeAndDropped) { walk_all("schema", schema_scenarios()); }
TEST_F(EveryAllocation, OfFieldsChanged) { walk_all("schema, fields", change_scenarios()); }
TEST_F(EveryAllocation, OfTransfers) { walk_all("transfer", transfer_scenarios()); }
TEST_F(EveryAllocation, OfMatrices) { walk_all("matrix", matrix_scenarios()); }
TEST_F(EveryAllocation, OfTheOtherMethods) { walk_all("quiet", quiet_scenarios()); }

}  // namespace
}  // namespace zmfb::test
