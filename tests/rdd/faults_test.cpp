// Each call of the client that fails, once, as a deadlock has it.
#include "tests/rdd/area_test.h"
#include "tests/support/faulty_client.h"

namespace zmfb::test {
namespace {

constexpr ClientCall calls[] = {ClientCall::start_transaction,
                                ClientCall::commit_transaction,
                                ClientCall::prepare,
                                ClientCall::execute,
                                ClientCall::execute_immediate,
                                ClientCall::open,
                                ClientCall::fetch};

class AreaFaults : public AreaTest {
  protected:
    AreaFaults() { fill(3); }

    // Does `work` with each of the calls that it makes failing, and looks at what is left with `check`.
    template <class Work, class Check>
    void with_each_failing(const Work& work, const Check& check) {
        int failures = 0;
        for (const ClientCall call : calls) {
            bool failed = true;
            for (int nth = 1; failed; ++nth) {
                {
                    FaultyClient client;
                    client.fail(call, nth, isc_deadlock);
                    try {
                        work();
                    } catch (const std::exception&) {  // or it was tried again
                    }
                    failed = client.all_failed();
                }
                SCOPED_TRACE(name_of(call) + " " + std::to_string(nth));
                check();
                failures += failed ? 1 : 0;
            }
        }
        EXPECT_GT(failures, 20);
    }
};

TEST_F(AreaFaults, OfAnOpenLeaveNothing) {
    for (const OpenMode mode : {OpenMode::shared, OpenMode::exclusive}) {
        with_each_failing([&] { (void)stock({.mode = mode}); }, [&] { EXPECT_EQ(system_tables(), ""); });
    }
}

TEST_F(AreaFaults, OfALockLeaveItTakenByNobody) {
    Area area = stock();
    with_each_failing([&] { (void)area.lock(); }, [&] { EXPECT_EQ(system_tables(), "STOCK T ; "); });
}

TEST_F(AreaFaults, OfANewRecordLeaveAWholeOneOrNone) {
    Area area = stock();
    int added = 0;
    with_each_failing(
        [&] {
            Held record = area.append();
            record["CODE"] = "NEW";
            record.write();
            ++added;
        },
        [&] {
            EXPECT_EQ(system_tables(), "STOCK T ; ");
            EXPECT_EQ(rows("select count(*) from STOCK where CODE = 'NEW'")[0][0], std::to_string(added));
        });
}

TEST_F(AreaFaults, OfAWriteLeaveWhatWasWrittenWholeOrNot) {
    Area area = stock();
    int written = 1;
    with_each_failing(
        [&] {
            Held record = area.lock();
            const int before = record["ONHAND"].as<int>();
            EXPECT_EQ(before, written);
            record["ONHAND"] = before + 1;
            record.write();
            ++written;
        },
        [&] {
            EXPECT_EQ(system_tables(), "STOCK T ; ");
            EXPECT_EQ(stored(1, "ONHAND"), std::to_string(written));
        });
}

TEST_F(AreaFaults, OfALockThatIsLostInADeadlockAreMended) {
    Area area = stock();
    FaultyClient client;
    client.fail(ClientCall::execute_immediate, 1, isc_deadlock);
    std::optional<Held> held(area.lock());
    EXPECT_TRUE(client.all_failed());
    EXPECT_EQ(held->recno(), 1);
    client.fail(ClientCall::execute_immediate, 1, isc_deadlock);
    held.reset();
    EXPECT_TRUE(client.all_failed());
    EXPECT_EQ(system_tables(), "STOCK T ; ");
}

TEST_F(AreaFaults, OfReadingAreToldAndTheWalkGoesOn) {
    Area area = stock();
    {
        FaultyClient client;
        client.fail(ClientCall::open, 1, isc_deadlock);
        EXPECT_THROW(area.go(2), SqlError);
        EXPECT_TRUE(client.all_failed());
    }
    EXPECT_EQ(area.recno(), 1);
    EXPECT_TRUE(area.go(2));
    EXPECT_EQ(area["CODE"].as<std::string>(), "A2");
    for (const int mode : {0, 1, 2}) {
        connection()(m::setglbskipmode, mode);
        connection()(m::setglbskipcachesize, 1);
        area.top();
        FaultyClient client;
        client.fail(ClientCall::fetch, 1, isc_deadlock);
        EXPECT_THROW(area.skip(), SqlError);
        EXPECT_TRUE(client.all_failed());
        EXPECT_EQ(area.recno(), 1);
        EXPECT_TRUE(area.skip());
        EXPECT_EQ(area.recno(), 2);
    }
}

TEST_F(AreaFaults, ReadingOnIsOneQuery) {
    connection()(m::setglbskipcachesize, 3);
    Area area = stock();
    area.read_on();
    const FaultyClient client;
    area.skip(2);
    area.skip(-2);
    EXPECT_EQ(area.read_on(), 3u);
    EXPECT_EQ(client.count(ClientCall::open), 1);
    EXPECT_EQ(client.count(ClientCall::start_transaction), 0);
}

}  // namespace
}  // namespace zmfb::test
