#include "tool/area_id.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

namespace zmfb::test {
namespace {

using tool::AreaId;
using tool::split_area_id;

struct SplitCase {
    std::string id;
    AreaId parts;
};

TEST(AreaIds, AreTakenApart) {
    for (const auto& [id, parts] : std::vector<SplitCase>{
             {"CUSTOMER:A1:4242:host1", {"CUSTOMER", "A1", 4242, "host1"}},
             {"CUSTOMER:A:1:4242:host1", {"CUSTOMER", "A:1", 4242, "host1"}},
             {"CUSTOMER:A1:4242:", {"CUSTOMER", "A1", 4242, ""}},
             {"CUSTOMER::4242:h", {"CUSTOMER", "", 4242, "h"}},
             {"CUSTOMER:A1:42", {"CUSTOMER", "A1:42", {}, ""}},
             {"X", {"", "X", {}, ""}},
             {"", {"", "", {}, ""}},
             {":", {"", "", {}, ""}},
             {"A:B:C:D", {"A", "B:C:D", {}, ""}},
         }) {
        const AreaId found = split_area_id(id);
        EXPECT_EQ(found.table, parts.table) << id;
        EXPECT_EQ(found.area, parts.area) << id;
        EXPECT_EQ(found.process, parts.process) << id;
        EXPECT_EQ(found.host, parts.host) << id;
    }
}

TEST(AreaIds, TellWhetherTheirProcessLives) {
    const std::string mine = "T:A:" + std::to_string(getpid()) + ":here";
    EXPECT_EQ(is_alive(split_area_id(mine), mine, "here"), tool::Alive::yes);
    EXPECT_EQ(is_alive(split_area_id(mine), mine, "there"), tool::Alive::unknown);
    const std::string nobodys = "T:A:999999999:here";  // beyond the highest process id
    EXPECT_EQ(is_alive(split_area_id(nobodys), nobodys, "here"), tool::Alive::no);
    EXPECT_EQ(is_alive(split_area_id("T:A"), "T:A", "here"), tool::Alive::unknown);
}

TEST(AreaIds, AHostThatWasCutIsComparedByItsBeginning) {
    std::string id = "T:" + std::string(30, 'A') + ":" + std::to_string(getpid()) + ":a-very-long-host-name";
    id.resize(50);
    EXPECT_EQ(is_alive(split_area_id(id), id, "a-very-long-host-name"), tool::Alive::yes);
    EXPECT_EQ(is_alive(split_area_id(id), id, "another"), tool::Alive::unknown);
}

}  // namespace
}  // namespace zmfb::test
