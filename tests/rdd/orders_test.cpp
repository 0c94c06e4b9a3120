// Making, finding, dropping and rebuilding the orders of a table.
#include "tests/rdd/orders_test.h"

#include <array>
#include <chrono>
#include <thread>

#include "host/text.h"
#include "rdd/order_catalog.h"
#include "tests/sql/sql_error_of.h"
#include "tests/support/environment.h"
#include "tests/support/process.h"

namespace zmfb::test {
namespace {

using rdd::Direction;

TEST_F(Orders, AreFoundByEveryProgram) {
    create("byname", "UPPER(NAME)");
    create("CITY", "CITY + DTOS(BORN)", true);
    zmFBConn other = connect();
    const auto found = rdd::orders_of(other, "CUST", fields());
    ASSERT_EQ(found.size(), 2u);
    EXPECT_EQ(found[0].order.name, "BYNAME");
    EXPECT_EQ(found[0].order.expression, "UPPER(NAME)");
    EXPECT_EQ(found[0].order.only, "");
    EXPECT_EQ(found[1].order.name, "CITY");
    EXPECT_NE(found[1].order.only, "");
    EXPECT_TRUE(found[0].complete && found[1].complete);
    EXPECT_TRUE(rdd::orders_of(other, "RDDSYS_OPN", {}).empty());
}

TEST_F(Orders, AreTwoIndexesWhoseDescriptionsTellThem) {
    create("byname", "UPPER(NAME) + [it's]");
    const auto names = rdd::index_names("CUST", "BYNAME");
    const std::string description = "Order BYNAME: UPPER(NAME) + [it's]";
    EXPECT_EQ(indexes(), (Rows{{names[0], description}, {names[1], description}}));
    const host::Value read = connection()(m::getindexdescription, names[0]).at(0);
    EXPECT_EQ(host::trim(read).string(), description);
    EXPECT_EQ(
        rows("select rdb$index_type from rdb$indices where rdb$index_name starting with 'RDDORD_' order by "
             "rdb$index_name"),
        (Rows{{"0"}, {"1"}}));
}

TEST(OrderIndexes, HaveNamesOfTheirOwnThatFitEverywhere) {
    const std::string longest(31, 'N');
    const auto names = rdd::index_names(longest, longest);
    EXPECT_LE(names[0].size(), 30u);
    EXPECT_NE(names[0], names[1]);
    EXPECT_NE(names, rdd::index_names(longest, longest.substr(1)));
    EXPECT_NE(rdd::index_names("A", "B_C"), rdd::index_names("A_B", "C"));
    EXPECT_EQ(rdd::index_names("a\"b'", "X")[0].find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_"),
              std::string::npos);
}

TEST_F(Orders, ThatAreThereAlreadyAreLeftAlone) {
    create("BYNAME", "UPPER(NAME)");
    const Rows before =
        rows("select rdb$index_id from rdb$indices where rdb$index_name starting with 'RDDORD_'");
    create("byname", "UPPER(NAME)");
    EXPECT_EQ(rows("select rdb$index_id from rdb$indices where rdb$index_name starting with 'RDDORD_'"),
              before);
    EXPECT_EQ(order_error([this] { create("BYNAME", "NAME"); }),
              "CUST has another order BYNAME already: UPPER(NAME)");
    EXPECT_EQ(order_error([this] { create("BYNAME", "UPPER(NAME)", true); }),
              "CUST has another order BYNAME already: UPPER(NAME)");
}

TEST_F(Orders, LeaveNothingWhenDropped) {
    create("BYNAME", "UPPER(NAME)");
    create("BYCITY", "CITY");
    rdd::drop_order(connection(), "CUST", "byname");
    EXPECT_EQ(indexes().size(), 2u);
    EXPECT_EQ(kept().at(0).order.name, "BYCITY");
    EXPECT_EQ(order_error([this] { rdd::drop_order(connection(), "CUST", "BYNAME"); }),
              "CUST has no order BYNAME");
}

TEST_F(Orders, WithOneIndexAreKnownAndMended) {
    create("BYNAME", "NAME");
    const auto names = rdd::index_names("CUST", "BYNAME");
    disconnect();
    execute("drop index " + names[1]);
    EXPECT_FALSE(kept().at(0).complete);
    create("BYNAME", "NAME");
    EXPECT_TRUE(kept().at(0).complete);
    disconnect();
    execute("alter index " + names[0] + " inactive");
    EXPECT_FALSE(kept().at(0).complete);
    rdd::rebuild_order(connection(), "CUST", fields(), "byname");
    EXPECT_TRUE(kept().at(0).complete);
    EXPECT_EQ(indexes().size(), 2u);
}

TEST_F(Orders, OfIndexesWithoutADescriptionAreMadeAnew) {
    create("BYNAME", "NAME");
    disconnect();
    for (const std::string& name : rdd::index_names("CUST", "BYNAME"))
        execute("comment on index " + name + " is null");
    EXPECT_TRUE(kept().empty());
    EXPECT_EQ(order_error([this] { rdd::rebuild_order(connection(), "CUST", fields(), "BYNAME"); }),
              "CUST has no order BYNAME");
    create("BYNAME", "UPPER(NAME)");
    EXPECT_EQ(kept().at(0).order.expression, "UPPER(NAME)");
}

TEST_F(Orders, AreMadeOfATableThatOthersReadAndWrite) {
    zmFBConn other = connect();
    Transaction reads(other, Access::read_only, Isolation::read_committed);
    auto all = reads.prepare("select RECNO from CUST order by NAME");
    EXPECT_TRUE(all.query<double>().begin() == std::default_sentinel);
    const rdd::Order order = create("BYNAME", "NAME");
    {
        Transaction writes(other);
        writes.execute("insert into CUST (NAME) values ('b')");
        writes.execute("insert into CUST (NAME) values ('a')");
        writes.commit();
    }
    EXPECT_EQ(walk(order, Direction::forward, 10), (std::vector<int>{2, 1}));
}

TEST_F(Orders, WaitForThoseWhoChangeTheTable) {
    BareClient other(database());
    std::thread changes([&other] {
        other.execute(
            "execute block as declare i bigint = 0; begin insert into CUST (NAME) values ('a'); "
            "while (i < 400000) do i = i + 1; end");
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    const rdd::Order order = create("BYNAME", "NAME");
    changes.join();
    EXPECT_EQ(walk(order, Direction::backward, 10), std::vector<int>{1});
}

TEST_F(Orders, InUseAreNotDropped) {
    const rdd::Order order = create("BYNAME", "NAME");
    zmFBConn other = connect();
    Transaction reads(other, Access::read_only);
    (void)reads.prepare("select RECNO from CUST " + rdd::order_by(order, Direction::forward));
    auto all = reads.prepare("select RECNO from CUST " + rdd::order_by(order, Direction::forward));
    for (auto& [recno] : all.query<double>()) FAIL() << recno;
    const std::string why = order_error([this] { rdd::drop_order(connection(), "CUST", "BYNAME"); });
    EXPECT_TRUE(why.starts_with("The order BYNAME of CUST cannot be dropped: it is in use\n")) << why;
    EXPECT_TRUE(kept().at(0).complete);
}

TEST_F(Orders, ThatCannotBeMadeLeaveNothing) {
    EXPECT_EQ(order_error([this] { create("WIDE", "PADR(NAME, 4000)"); }),
              "The order WIDE of CUST cannot be made: its key is too long");
    EXPECT_EQ(order_error([this] { create("E", "NAME + '\xE9'"); }),
              "The expression of the order E has letters in it that are not of ASCII");
    EXPECT_EQ(order_error([this] { create("", "NAME"); }),
              "\"\" is no name of an order: 1 to 31 letters, digits and _ are");
    EXPECT_EQ(order_error([this] { create("A-B", "NAME"); }),
              "\"A-B\" is no name of an order: 1 to 31 letters, digits and _ are");
    EXPECT_EQ(order_error([this] { create("LONG", "NAME + '" + std::string(240, 'x') + "'"); }),
              "The expression of the order LONG is 6 characters too long");
    EXPECT_EQ(order_error([this] { create("DEEP", std::string(1000000, '(')); }),
              "The expression of the order DEEP is 999757 characters too long");
    EXPECT_EQ(indexes(), Rows{});
}

TEST_F(Orders, ThatTheRowsRefuseLeaveNothing) {
    disconnect();
    execute("alter table CUST add BIG numeric(18, 0) default 0 not null");
    execute("insert into CUST (BIG) values (9000000000000000000)");
    const SqlError error = error_of([this] { create("BIG", "BIG"); });
    EXPECT_NE(error.message().find("overflow"), std::string::npos) << error.what();
    EXPECT_EQ(indexes(), Rows{});
    EXPECT_TRUE(kept().empty());
}

// Who made such an order could add no record any more.
TEST_F(Orders, OfSumsTakeTheNumbersThatTheirFieldsAreFor) {
    EXPECT_EQ(order_error([this] {
                  create("SUM", "CREDIT + 0.12345678901");
              }).find("it may have more than 18 digits, those behind the point among them"),
              std::string("CREDIT + 0.12345678901 cannot be a key: ").size());
    const rdd::Order order = create("SUM", "CREDIT + 0.1234567890");
    for (const char* credit : {"99999999.99", "-9999999.99", "0"}) add("x", "Cork", credit);
    EXPECT_EQ(walk(order, Direction::forward, 10), (std::vector<int>{2, 3, 1}));
}

TEST_F(Orders, WhoseDescriptionsHaveNoKeyAreLeftOutAndCanBeDropped) {
    create("BYNAME", "NAME");
    create("BYCITY", "CITY");
    disconnect();
    for (const std::string& name : rdd::index_names("CUST", "BYNAME"))
        execute("comment on index " + name + " is 'Order BYNAME: NOSUCH'");
    ASSERT_EQ(kept().size(), 1u);
    EXPECT_EQ(kept()[0].order.name, "BYCITY");
    rdd::drop_order(connection(), "CUST", "BYNAME");
    EXPECT_EQ(indexes().size(), 2u);
}

TEST_F(Orders, KeepTheFieldsThatTheyAreMadeOf) {
    create("BYNAME", "UPPER(NAME)");
    EXPECT_FALSE(connection()(m::dropfield, "CUST", FieldDescriptor{"NAME", "C", 20, 0}));
    EXPECT_EQ(raised().size(), 1u);
    EXPECT_TRUE(kept().at(0).complete);
    rdd::drop_order(connection(), "CUST", "BYNAME");
    EXPECT_TRUE(connection()(m::dropfield, "CUST", FieldDescriptor{"NAME", "C", 20, 0}));
}

TEST_F(Orders, ComeBackFromABackup) {
    add("b");
    add("a");
    create("BYNAME", "UPPER(NAME) + STR(CREDIT, 12, 2)");
    disconnect();
    const std::string backup = file("backup.fbk"), database_made = database() + ".restored";
    for (const auto& [way, from, to] : {std::array{std::string("-b"), database(), backup},
                                        std::array{std::string("-c"), backup, database_made}}) {
        const Finished gbak = run({"gbak", way, "-user", sysdba, "-password", sysdba_password, from, to});
        ASSERT_EQ(gbak.status, 0) << gbak.err;
    }
    zmFBConn restored(database_made, sysdba, sysdba_password);
    ASSERT_TRUE(restored.isconnected());
    const auto found = rdd::orders_of(restored, "CUST", restored(m::gettablestruct, "CUST"));
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found[0].order.expression, "UPPER(NAME) + STR(CREDIT, 12, 2)");
    EXPECT_TRUE(found[0].complete);
}

TEST_F(Orders, ThatAreUniqueHaveTheFirstRecordOfEachValue) {
    for (const char* city : {"Faro", "Cork", "Faro", "Cork", "Bonn", "Faro"}) add("x", city);
    const rdd::Order order = create("CITY", "CITY", true);
    EXPECT_EQ(walk(order, Direction::forward, 2), (std::vector<int>{5, 2, 1}));
    EXPECT_EQ(walk(order, Direction::backward, 2), (std::vector<int>{1, 2, 5}));
    execute("delete from CUST where RECNO = 1");
    EXPECT_EQ(walk(order, Direction::forward, 2), (std::vector<int>{5, 2, 3}));
}

}  // namespace
}  // namespace zmfb::test
