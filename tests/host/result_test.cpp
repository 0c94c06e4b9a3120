#include "host/result.h"

#include <gtest/gtest.h>

#include "values.h"

namespace zmfb::host_test {
namespace {

using namespace host;

TEST(Result, HasRowsBehindItsHeader) {
    const Value result = array_of(array_of("the header"), array_of(1), array_of(2));
    ASSERT_TRUE(has_row(result));
    ASSERT_EQ(data_rows(result).size(), 2U);
    EXPECT_TRUE(data_rows(result)[0].same(result[2]));
    EXPECT_TRUE(data_rows(result)[1].same(result[3]));
}

TEST(Result, HasNoneWhenThereIsNoneOrNothingCouldBeRun) {
    for (const Value& result :
         {array_of(array_of("the header")), array_of(), Value(), Value("text of some length"), Value(7)}) {
        EXPECT_FALSE(has_row(result));
        EXPECT_TRUE(data_rows(result).empty());
        EXPECT_TRUE(is_same(array_of_rows(result), array_of()));
    }
}

TEST(Result, GivesItsRowsAsAnArrayThatGrowsByItself) {
    const Value result = array_of(array_of("the header"), array_of(1));
    const Value rows = array_of_rows(result);
    rows.push(7);
    EXPECT_TRUE(is_same(rows, array_of(array_of(1), 7)));
    EXPECT_EQ(result.size(), 2U);
    EXPECT_TRUE(rows[1].same(result[2]));
}

}  // namespace
}  // namespace zmfb::host_test
