#include "host/settings.h"

#include <gtest/gtest.h>

#include "host/compare.h"
#include "host/date.h"
#include "values.h"

namespace zmfb::host {
namespace {

using host_test::expect_argument_error;
using host_test::expect_rows;

TEST(Set, IsNilUntilItWasSet) {
    expect_rows({{set(87), {}}, {set(87, true), {}}, {set(87), true}, {set(87, {}), true}, {set(87), {}}});
}

TEST(Set, OneIsExact) {
    expect_rows({{set(1), false}, {set(1, true), false}});
    EXPECT_TRUE(set_exact());
    expect_rows({{set(1, "no logical"), true}, {set(1, false), true}});
    EXPECT_FALSE(set_exact());
}

TEST(Set, ThreeIsDecimals) {
    expect_rows(
        {{set(3, 4), 2}, {set(3), 4}, {set(3, 99), 4}, {set(3, -1), 15}, {set(3, "2"), 0}, {set(3, 2), 0}});
    EXPECT_EQ(set_decimals(), 2);
}

TEST(Set, FourIsTheDateFormat) {
    expect_rows({{set(4, "yyyy-mm-dd"), "mm/dd/yy"}, {set_date_format(), "yyyy-mm-dd"}});
    expect_rows({{set(4, 7), "yyyy-mm-dd"}, {set(4, "mm/dd/yy"), "yyyy-mm-dd"}});
}

TEST(Set, FiveIsTheEpoch) {
    expect_rows({{set(5, 1950), 1900}, {ctod("01/01/49"), stod("20490101")}, {set(5, 1900), 1950}});
}

TEST(Set, WithoutANumberRaises) {
    expect_argument_error(Subcode::set, "SET", [] { return set("87"); });
    expect_argument_error(Subcode::set, "SET", [] { return set({}, 1); });
}

}  // namespace
}  // namespace zmfb::host
