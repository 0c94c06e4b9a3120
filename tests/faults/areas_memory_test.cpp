// Every allocation made to fail, one at a time, in what work areas do.
#include <fmt/format.h>

#include <cstdlib>
#include <functional>
#include <new>

#include "host/moves.h"
#include "host/record.h"
#include "host/workarea.h"
#include "tests/faults/witness.h"
#include "tests/rdd/area_test.h"
#include "tests/support/failing_memory.h"

namespace zmfb::test {
namespace {

// How many allocations of an operation are made to fail; the environment variable says it for the long run.
long limit() {
    const char* given = std::getenv("ZMFB_FAULTS_OF_EACH");
    return given == nullptr ? 5 : std::atol(given);
}

class AreaMemory : public AreaTest {
  protected:
    AreaMemory() { fill(3); }

    // Does `work` with allocations failing, one at a time, and looks at what is left with `check`: told
    // whether the work went well.
    void with_each_failing(const char* what, const std::function<void()>& work,
                           const std::function<void(bool)>& check) {
        const long all = run(work, {}).allocations;
        check(true);
        run(work, {});
        check(true);
        forget_living_blocks();
        long thrown = 0;
        const long runs = std::min(all, limit());
        for (long i = 0; i < runs; ++i) {
            const long nth = runs == 1 ? 1 : 1 + i * (all - 1) / (runs - 1);
            SCOPED_TRACE(fmt::format("{}: allocation {} of {}", what, nth, all));
            const Ran ran = run(work, {.nth = nth});
            thrown += ran.went_well ? 0 : 1;
            check(ran.went_well);
        }
        fmt::print("{}: {} allocations, {} made to fail, {} of them thrown\n", what, all, runs, thrown);
        EXPECT_GT(thrown, 0);
    }

  private:
    struct Ran {
        bool went_well = true;
        long allocations = 0;
    };
    static Ran run(const std::function<void()>& work, MemoryFault fault) {
        Ran ran;
        const Witness witness;
        const CountedMemory memory(fault);
        try {
            work();
        } catch (const std::bad_alloc&) {
            ran.went_well = false;
        }
        ran.allocations = CountedMemory::count();
        return ran;
    }
};

TEST_F(AreaMemory, OfAnOpenLeavesNothing) {
    for (const OpenMode mode : {OpenMode::shared, OpenMode::exclusive}) {
        with_each_failing(
            "open", [&] { (void)stock({.mode = mode}); },
            [&](bool) {
                EXPECT_EQ(system_tables(), "");
                EXPECT_EQ(stock().count(), 3);
            });
    }
}

TEST_F(AreaMemory, OfAWalkLeavesTheAreaToGoOn) {
    Area area = stock();
    with_each_failing(
        "walk",
        [&] {
            area.top();
            while (area.skip()) (void)area["CODE"].as<std::string>();
            area.bottom();
            area.filter("ONHAND > 1");
            EXPECT_EQ(area.count(), 2);
            area.filter("");
        },
        [&](bool) {
            area.filter("");
            EXPECT_EQ(walked(area), (std::vector<std::int64_t>{1, 2, 3}));
        });
}

TEST_F(AreaMemory, OfALockLeavesItTakenByNobody) {
    Area area = stock();
    with_each_failing(
        "lock", [&] { (void)area.lock(); },
        [&](bool) {
            EXPECT_EQ(system_tables(), "STOCK T ; ");
            (void)area.lock();
        });
}

TEST_F(AreaMemory, OfATableLockLeavesItTakenOrNot) {
    Area area = stock();
    with_each_failing(
        "lock of the table",
        [&] {
            area.lock_table();
            area.lock_record(2);
            area.unlock();
        },
        [&](bool) {
            EXPECT_EQ(system_tables(), area.is_table_locked() ? "STOCK T ; STOCK ; " : "STOCK T ; ");
            area.unlock();
            EXPECT_EQ(system_tables(), "STOCK T ; ");
        });
}

TEST_F(AreaMemory, OfANewRecordLeavesAWholeOneOrNone) {
    Area area = stock();
    int added = 0;
    with_each_failing(
        "append",
        [&] {
            Held record = area.append();
            record["CODE"] = "NEW";
            record["ONHAND"] = 5;
            record.write();
        },
        [&](bool went_well) {
            EXPECT_EQ(system_tables(), "STOCK T ; ");
            const int now =
                std::stoi(rows("select count(*) from STOCK where CODE = 'NEW' and ONHAND = 5")[0][0]);
            EXPECT_EQ(rows("select count(*) from STOCK where CODE is null")[0][0], "0");
            EXPECT_TRUE(now == added + 1 || (now == added && !went_well));
            added = now;
        });
}

TEST_F(AreaMemory, OfAWriteLeavesWhatWasWrittenWholeOrNot) {
    Area area = stock();
    std::string before = "1";
    with_each_failing(
        "write",
        [&] {
            Held record = area.lock();
            record["ONHAND"] = record["ONHAND"].as<int>() + 1;
            record.write();
        },
        [&](bool went_well) {
            EXPECT_EQ(system_tables(), "STOCK T ; ");
            const std::string now = stored(1, "ONHAND");
            EXPECT_TRUE(now == std::to_string(std::stoi(before) + 1) || (now == before && !went_well)) << now;
            before = now;
        });
}

TEST_F(AreaMemory, OfTogetherUndoesAllOrKeepsAll) {
    Area area = stock();
    std::string before = "1 2";
    const auto both = [&] { return stored(1, "ONHAND") + " " + stored(2, "ONHAND"); };
    with_each_failing(
        "together",
        [&] {
            Together together(connection());
            for (const int recno : {1, 2}) {
                area.go(recno);
                Held record = area.lock();
                record["ONHAND"] = record["ONHAND"].as<int>() + 1;
                record.write();
            }
            together.commit();
        },
        [&](bool went_well) {
            EXPECT_EQ(system_tables(), "STOCK T ; ");
            const std::string now = both();
            const int first = std::stoi(now);
            EXPECT_EQ(now, fmt::format("{} {}", first, first + 1));
            EXPECT_TRUE(now != before || !went_well);
            before = now;
        });
}

TEST_F(AreaMemory, OfAnOrderLeavesItWholeOrAway) {
    Area area = stock();
    with_each_failing(
        "order",
        [&] {
            area.create_order("BYCODE", "UPPER(CODE)");
            area.order("BYCODE");
            EXPECT_TRUE(area.seek("A2"));
            EXPECT_EQ(area.place(), 2);
            area.order("");
            area.drop_order("BYCODE");
        },
        [&](bool) {
            area.order("");
            for (const AreaOrder& order : area.orders()) area.drop_order(order.name);
            EXPECT_EQ(walked(area), (std::vector<std::int64_t>{1, 2, 3}));
        });
}

// The same by the names of the runtime.
TEST_F(AreaMemory, OfWorkAreasOfTheRuntimeLeavesNothing) {
    connection()(m::setibrdd);
    with_each_failing(
        "work areas",
        [&] {
            host::dbusearea(true, "ZMRDDFIRE", "STOCK", "S", true, false);
            if (host::dbrlock()) host::fieldput(2, 7);
            host::dbskip(1);
            host::dbgobottom();
            host::dbclosearea("S");
        },
        [&](bool) {
            host::dbcloseall();
            forget_raised();
            EXPECT_EQ(system_tables(), "");
        });
}

}  // namespace
}  // namespace zmfb::test
