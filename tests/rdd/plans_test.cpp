// What the engine does for a walk through an order: it goes along the index, and reads no more than it gives.
#include <algorithm>
#include <array>

#include "rdd/order_catalog.h"
#include "tests/rdd/orders_test.h"

namespace zmfb::test {
namespace {

using rdd::Direction;

constexpr int records = 20000, block = 100;

class Plans : public Orders {
  protected:
    // Every city has two thousand records.
    Plans() {
        execute(fmt::format(
            "execute block as declare i integer = 0; begin while (i < {}) do begin insert into CUST "
            "(NAME, CITY, CREDIT, BORN) values ('Name ' || mod(:i * 7919, {}), 'C' || mod(:i, 10), "
            "mod(:i * 31, 2000) - 1000, iif(mod(:i, 10) = 0, null, dateadd(mod(:i, 5000) day to "
            "timestamp '2000-01-01'))); i = i + 1; end end",
            records, records));
    }

    static std::string plan_of(BareClient& client, const std::string& query) {
        ISC_STATUS_ARRAY status = {};
        isc_tr_handle work = 0;
        isc_stmt_handle statement = 0;
        std::array<char, 2000> plan{};
        const char item = isc_info_sql_get_plan;
        isc_start_transaction(status, &work, 1, client.handle(), 0, nullptr);
        isc_dsql_allocate_statement(status, client.handle(), &statement);
        if (isc_dsql_prepare(status, &work, &statement, 0, query.c_str(), SQL_DIALECT_V6, nullptr) != 0)
            ADD_FAILURE() << query;
        isc_dsql_sql_info(status, &statement, 1, &item, static_cast<short>(plan.size()), plan.data());
        isc_dsql_free_statement(status, &statement, DSQL_drop);
        isc_commit_transaction(status, &work);
        const auto length = static_cast<std::size_t>(isc_vax_integer(plan.data() + 1, 2));
        return {plan.data() + 3, length};
    }

    static long fetches_of(BareClient& client, const std::string& query) {
        const auto count = [&client] {
            return std::stol(client.rows(
                "select S.MON$PAGE_FETCHES from MON$ATTACHMENTS A join MON$IO_STATS S on "
                "S.MON$STAT_ID = A.MON$STAT_ID where A.MON$ATTACHMENT_ID = CURRENT_CONNECTION")[0][0]);
        };
        (void)count();
        const long before = count(), asking = count() - before;
        (void)client.rows(query);
        return count() - before - 2 * asking;
    }

    // A block from the middle of an order on.
    static std::string block_of(BareClient& client, const rdd::Order& order, Direction direction) {
        const std::string middle =
            client.rows(fmt::format("select first 1 skip {} {} from CUST {}", records / 2, order.key,
                                    rdd::order_by(order, direction)))[0][0];
        std::string beyond = rdd::condition_beyond(order, direction, false);
        beyond.replace(beyond.find('?'), 1, "'" + middle + "'");
        return fmt::format("select first {} NAME from CUST where {}{} {}", block, beyond,
                           order.only.empty() ? "" : " and " + order.only, rdd::order_by(order, direction));
    }
};

TEST_F(Plans, OfAWalkGoAlongTheIndexOfItsDirection) {
    const auto names = rdd::index_names("CUST", "MAIN");
    for (const char* expression : {"NAME", "CITY", "CREDIT", "BORN", "GOOD",
                                   "UPPER(NAME) + STR(CREDIT, 10, 2)", "DTOS(BORN) + SUBSTR(NAME, 6, 3)"}) {
        SCOPED_TRACE(expression);
        const rdd::Order order = create("MAIN", expression);
        disconnect();
        {
            BareClient client(database());
            for (const Direction direction : {Direction::forward, Direction::backward}) {
                const std::string query = block_of(client, order, direction);
                EXPECT_EQ(
                    plan_of(client, query),
                    fmt::format("\nPLAN (CUST ORDER {})", names[direction == Direction::forward ? 0 : 1]));
                EXPECT_EQ(client.rows(query).size(), static_cast<std::size_t>(block));
                const long fetches = fetches_of(client, query);
                EXPECT_GT(fetches, block);
                EXPECT_LT(fetches, 10 * block);
            }
        }
        rdd::drop_order(connection(), "CUST", "MAIN");
    }
}

TEST_F(Plans, WithoutTheIndexesGiveTheSameRows) {
    const rdd::Order order = create("MAIN", "CITY + NAME");
    const std::vector<int> forward = walk(order, Direction::forward, 2000);
    EXPECT_EQ(forward.size(), static_cast<std::size_t>(records));
    rdd::drop_order(connection(), "CUST", "MAIN");
    EXPECT_EQ(walk(order, Direction::forward, 2000), forward);
}

TEST_F(Plans, OfAUniqueOrderLookEachRowUpInTheIndex) {
    const rdd::Order order = create("MAIN", "CITY", true);
    EXPECT_EQ(walk(order, Direction::forward, 3).size(), 10u);
    disconnect();
    BareClient client(database());
    const std::string names = rdd::index_names("CUST", "MAIN")[0];
    const std::string plan = plan_of(
        client, "select NAME from CUST where " + order.only + " " + rdd::order_by(order, Direction::forward));
    EXPECT_NE(plan.find("ORDER " + names), std::string::npos) << plan;
    EXPECT_NE(plan.find("INDEX (" + names), std::string::npos) << plan;
}

}  // namespace
}  // namespace zmfb::test
