#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "zmfbconn/area_error.h"

namespace zmfb::test {
namespace {

TEST(Holders, AreTakenOutOfAreaIds) {
    struct Case {
        std::string id, table, area, process, host;
    };
    for (const Case& one : std::vector<Case>{
             {"CUSTOMER:A1:4242:host1", "CUSTOMER", "A1", "4242", "host1"},
             {"CUSTOMER:A:1:4242:host1", "CUSTOMER", "A:1", "4242", "host1"},
             {"CUSTOMER:A1:4242:", "CUSTOMER", "A1", "4242", ""},
             {"CUSTOMER::4242:h", "CUSTOMER", "", "4242", "h"},
             {"CUSTOMER:A1:42", "CUSTOMER", "A1:42", "", ""},
             {"STOCK:DESK~0a1b2c3d:4242:h", "STOCK", "DESK", "4242", "h"},
             {"STOCK:A:B~0a1b2c3d:4242:h", "STOCK", "A:B", "4242", "h"},
             {"STOCK:DESK~1:4242:h", "STOCK", "DESK~1", "4242", "h"},
             {"X", "", "X", "", ""},
             {"", "", "", "", ""},
             {":", "", "", "", ""},
             {"A:B:C:D", "A", "B:C:D", "", ""},
         }) {
        const Holder found(one.id);
        EXPECT_EQ(found.id, one.id);
        EXPECT_EQ(found.table, one.table) << one.id;
        EXPECT_EQ(found.area, one.area) << one.id;
        EXPECT_EQ(found.process, one.process) << one.id;
        EXPECT_EQ(found.host, one.host) << one.id;
    }
}

TEST(Holders, AreNamedByTheirIdWhenItIsNone) {
    EXPECT_EQ(Holder("STOCK:A:B~0a1b2c3d:4242:h").words(), "A:B, process 4242 on h");
    EXPECT_EQ(Holder("STOCK:A1:42").words(), "STOCK:A1:42");
}

}  // namespace
}  // namespace zmfb::test
