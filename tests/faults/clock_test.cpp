// Waits while the time of day jumps by hours: what this test links has it jump.
#include <unistd.h>

#include <chrono>
#include <ctime>
#include <optional>

#include "host/driver.h"
#include "host/record.h"
#include "host/workarea.h"
#include "tests/host/on_screen.h"
#include "tests/rdd/area_test.h"
#include "tests/support/dbf_builder.h"

namespace zmfb::test {
namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

constexpr milliseconds wait{200};
// Much more than anything here takes, much less than the time of day jumps.
constexpr milliseconds never{60000};

template <class Work>
milliseconds taken(const Work& work) {
    const Clock::time_point start = Clock::now();
    work();
    return std::chrono::duration_cast<milliseconds>(Clock::now() - start);
}

TEST(JumpingClock, IsWhatThisTestRunsUnder) {
    bool back = false, forth = false;
    std::time_t before = std::time(nullptr);
    for (int i = 0; i < 10; ++i) {
        const std::time_t now = std::time(nullptr);
        back = back || now < before - 1800;
        forth = forth || now > before + 1800;
        before = now;
    }
    EXPECT_TRUE(back && forth);
}

TEST(JumpingClock, LetsAKeyBeWaitedForAsLongAsIsSaid) {
    const Performance performance = host_test::on_screen([](const Stage& stage) {
        ::alarm(std::chrono::duration_cast<std::chrono::seconds>(never).count());
        for (int i = 0; i < 4; ++i) {
            host::Value key;
            const milliseconds waited = taken([&] { key = host::inkey(0.1); });
            stage.report(show(key) + (waited < milliseconds(100) ? " too early" : " later"));
        }
        stage.report(show(host::inkey({})));
        stage.type("k");
        stage.report(show(host::inkey(0)));
    });
    EXPECT_EQ(performance.report, "0 later\n0 later\n0 later\n0 later\n0\n107\n");
}

class JumpingClockOfAreas : public AreaTest {
  protected:
    JumpingClockOfAreas() { fill(3); }
};

TEST_F(JumpingClockOfAreas, LetsALockBeWaitedForAsLongAsIsSaid) {
    Area holder = stock(), waiter = stock();
    std::optional<Held> held(holder.lock());
    const auto refused = [&](const auto& lock) {
        const milliseconds waited = taken([&] { EXPECT_EQ(holder_of(lock).id, holder.id()); });
        EXPECT_GE(waited, wait);
        EXPECT_LT(waited, never);
    };
    refused([&] { (void)waiter.lock(wait); });
    refused([&] { waiter.lock_table(wait); });
    held.reset();
    EXPECT_LT(taken([&] { (void)waiter.lock(never); }), never);
    EXPECT_LT(taken([&] { waiter.lock_table(never); }), never);
}

TEST_F(JumpingClockOfAreas, LetsARecordOfADbfFileBeWaitedForAsLongAsIsSaid) {
    DbfBuilder().field("NAME", 'C', 10).record({"Ana"}).write(file("t.dbf"));
    host::dbusearea(true, "DBFIDX", file("t.dbf"), "FIRST", true);
    EXPECT_TRUE(host::dbrlock());
    host::dbusearea(true, "DBFIDX", file("t.dbf"), "SECOND", true);
    const milliseconds waited = taken([&] { EXPECT_FALSE(host::dbrlock({}, wait)); });
    EXPECT_GE(waited, wait);
    EXPECT_LT(waited, never);
    host::dbcloseall();
}

}  // namespace
}  // namespace zmfb::test
