// What an order says in SQL, without a database.
#include "rdd/order.h"

#include <gtest/gtest.h>

namespace zmfb::test {
namespace {

using rdd::Direction;
using Places = std::vector<std::size_t>;

rdd::Order order_by_name() {
    rdd::Order order;
    order.keys = {"NAME", "RECNO"};
    return order;
}

TEST(Order, NaturalOneGoesByRecordNumber) {
    const rdd::Order order = rdd::natural_order();
    EXPECT_EQ(order.name, "");
    EXPECT_EQ(rdd::order_by(order, Direction::forward), "order by RECNO");
    EXPECT_EQ(rdd::order_by(order, Direction::backward), "order by RECNO desc");
    const rdd::Condition behind = rdd::condition_beyond(order, Direction::forward, false);
    EXPECT_EQ(behind.sql, "RECNO > ?");
    EXPECT_EQ(behind.values, Places{0});
    EXPECT_EQ(rdd::condition_beyond(order, Direction::backward, true).sql, "RECNO <= ?");
}

TEST(Order, OfAFieldGoesByTheRecordNumberAmongEqualOnes) {
    const rdd::Order order = order_by_name();
    EXPECT_EQ(rdd::order_by(order, Direction::backward), "order by NAME desc, RECNO desc");
    const rdd::Condition behind = rdd::condition_beyond(order, Direction::forward, false);
    EXPECT_EQ(behind.sql, "NAME >= ? and (NAME > ? or RECNO > ?)");
    EXPECT_EQ(behind.values, (Places{0, 0, 1}));
    EXPECT_EQ(rdd::condition_beyond(order, Direction::backward, true).sql,
              "NAME <= ? and (NAME < ? or RECNO <= ?)");
}

}  // namespace
}  // namespace zmfb::test
