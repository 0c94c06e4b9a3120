#include "zmfbconn/status.h"

#include <gtest/gtest.h>

namespace zmfb::test {
namespace {

struct Case {
    Status status;
    bool ok;
    int sqlcode;
    const char* message;
};

TEST(Status, TellsWhetherAllWentWellAndWhatWasWrong) {
    const Case cases[] = {
        {Status(), true, 0, ""},
        {Status("no room"), false, 0, "no room"},
        {Status(""), false, 0, ""},
        {Status(0, ""), true, 0, ""},
        {Status(-204, "Table unknown"), false, -204, "Table unknown"},
        {Status(100, "a warning"), true, 100, "a warning"},
    };
    for (const Case& one : cases) {
        SCOPED_TRACE(one.message);
        EXPECT_EQ(one.status.ok(), one.ok);
        EXPECT_EQ(one.status.sqlcode(), one.sqlcode);
        EXPECT_EQ(one.status.message(), one.message);
    }
}

}  // namespace
}  // namespace zmfb::test
