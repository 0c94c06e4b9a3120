// What an order says in SQL, without a database.
#include "rdd/order.h"

#include <gtest/gtest.h>

namespace zmfb::test {
namespace {

using rdd::Direction;

TEST(Order, NaturalOneGoesByRecordNumber) {
    const rdd::Order order = rdd::natural_order();
    EXPECT_EQ(order.name, "");
    EXPECT_EQ(rdd::order_by(order, Direction::forward), "order by RECNO");
    EXPECT_EQ(rdd::order_by(order, Direction::backward), "order by RECNO desc");
}

TEST(Order, RowsBehindAPositionAreThoseOfGreaterOrSmallerKeys) {
    const rdd::Order order = rdd::natural_order();
    EXPECT_EQ(rdd::condition_beyond(order, Direction::forward, false), "RECNO > ?");
    EXPECT_EQ(rdd::condition_beyond(order, Direction::forward, true), "RECNO >= ?");
    EXPECT_EQ(rdd::condition_beyond(order, Direction::backward, false), "RECNO < ?");
    EXPECT_EQ(rdd::condition_beyond(order, Direction::backward, true), "RECNO <= ?");
}

TEST(Order, KeysOfAnExpressionAreBytes) {
    rdd::Order order;
    order.key = "NAME || NUMBER";
    order.width = 20;
    EXPECT_EQ(rdd::key_column(order), "cast(NAME || NUMBER as char(36) character set octets)");
    EXPECT_EQ(rdd::condition_beyond(order, Direction::backward, false),
              "NAME || NUMBER < cast(? as char(36) character set octets)");
    EXPECT_EQ(rdd::order_by(order, Direction::backward), "order by NAME || NUMBER desc");
    EXPECT_EQ(rdd::key_column(rdd::natural_order()), "RECNO");
}

}  // namespace
}  // namespace zmfb::test
