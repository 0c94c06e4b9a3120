#include "tool/alive.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

namespace zmfb::test {
namespace {

using tool::is_alive;

TEST(Alive, IsToldOfAProcessOfThisHost) {
    const std::string mine = "T:A:" + std::to_string(getpid()) + ":here";
    EXPECT_EQ(is_alive(Holder(mine), "here"), tool::Alive::yes);
    EXPECT_EQ(is_alive(Holder(mine), "there"), tool::Alive::unknown);
    const std::string nobodys = "T:A:999999999:here";  // beyond the highest process id
    EXPECT_EQ(is_alive(Holder(nobodys), "here"), tool::Alive::no);
    EXPECT_EQ(is_alive(Holder("T:A"), "here"), tool::Alive::unknown);
    const std::string beyond_numbers = "T:A:" + std::string(30, '9') + ":here";
    EXPECT_EQ(is_alive(Holder(beyond_numbers), "here"), tool::Alive::unknown);
}

TEST(Alive, AHostThatWasCutIsComparedByItsBeginning) {
    std::string id = "T:" + std::string(30, 'A') + ":" + std::to_string(getpid()) + ":a-very-long-host-name";
    id.resize(50);
    EXPECT_EQ(is_alive(Holder(id), "a-very-long-host-name"), tool::Alive::yes);
    EXPECT_EQ(is_alive(Holder(id), "another"), tool::Alive::unknown);
}

}  // namespace
}  // namespace zmfb::test
