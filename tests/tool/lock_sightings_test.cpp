#include "tool/browse/lock_sightings.h"

#include <gtest/gtest.h>

#include <thread>

namespace zmfb::test {
namespace {

using tool::Lock;
using tool::browse::LockSightings;
using tool::browse::Moment;

// Comes back when the clock shows a later time.
void wait_past(Moment moment) {
    while (std::chrono::system_clock::now() <= moment) std::this_thread::yield();
}

TEST(LockSightings, ALockThatWentAndCameAgainIsSeenSinceItCame) {
    const std::vector<Lock> both{{"STOCK", 1, {Holder("T:A:1:here"), tool::Alive::yes}},
                                 {"STOCK", 2, {Holder("T:A:1:here"), tool::Alive::yes}}};
    LockSightings sightings;
    sightings.see(both);
    const Moment stays = sightings.see(both[0]), goes = sightings.see(both[1]);
    wait_past(goes);
    sightings.see(std::span(both).first(1));
    sightings.see(both);
    EXPECT_EQ(sightings.see(both[0]), stays);
    EXPECT_GT(sightings.see(both[1]), goes);
}

}  // namespace
}  // namespace zmfb::test
