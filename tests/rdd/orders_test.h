/// A table with orders, and how the engine walks it.
#pragma once

#include <fmt/format.h>

#include <string>
#include <string_view>
#include <vector>

#include "rdd/key_range.h"
#include "rdd/orders.h"
#include "tests/support/database.h"
#include "zmfbconn/methods.h"
#include "zmfbconn/transaction.h"

namespace zmfb::test {

class Orders : public Database {
  protected:
    Orders() {
        const Structure fields{{"NAME", "C", 20, 0},
                               {"CITY", "C", 8, 0},
                               {"CREDIT", "N", 10, 2},
                               {"BORN", "D", 8, 0},
                               {"GOOD", "L", 1, 0}};
        EXPECT_TRUE(connection()(m::createtable, "CUST", fields));
    }

    Structure fields() { return connection()(m::gettablestruct, "CUST"); }
    rdd::Order create(const std::string& name, const std::string& expression, bool unique = false) {
        rdd::create_order(connection(), "CUST", fields(), {name, expression, unique});
        return kept().back().order;
    }
    std::vector<rdd::KeptOrder> kept() { return rdd::orders_of(connection(), "CUST", fields()); }
    /// The indexes of orders, with their descriptions.
    [[nodiscard]] Rows indexes() const {
        return rows(
            "select rdb$index_name, cast(rdb$description as varchar(255)) from rdb$indices where "
            "rdb$index_name "
            "starting with 'RDDORD_' order by rdb$index_name");
    }
    void add(const std::string& name, const std::string& city = "Cork",
             const std::string& credit = "0") const {
        execute(
            fmt::format("insert into CUST (NAME, CITY, CREDIT) values ('{}', '{}', {})", name, city, credit));
    }

    /// What a walk through an order meets: the record numbers, read in blocks of so many rows.
    std::vector<int> walk(const rdd::Order& order, rdd::Direction direction, int block) {
        Transaction work(connection(), Access::read_only);
        const std::string all = order.only.empty() ? "1 = 1" : order.only;
        const std::string by = rdd::order_by(order, direction);
        const std::string read =
            fmt::format("select first {} RECNO, {} from CUST where {}", block, rdd::key_column(order), all);
        auto first = work.prepare(fmt::format("{} {}", read, by));
        auto next = work.prepare(
            fmt::format("{} and {} {}", read, rdd::condition_beyond(order, direction, false), by));
        std::vector<int> met;
        Bytes key;
        for (std::size_t before = 1; before != met.size();) {
            before = met.size();
            for (auto& [recno, at] :
                 met.empty() ? first.query<double, Bytes>() : next.query<double, Bytes>(key)) {
                met.push_back(static_cast<int>(recno));
                key = at;
            }
        }
        return met;
    }
};

/// The message of the OrderError that something throws.
template <class Action>
std::string order_error(const Action& action) {
    try {
        action();
    } catch (const rdd::OrderError& error) {
        return error.what();
    }
    ADD_FAILURE() << "nothing was thrown";
    return "";
}

}  // namespace zmfb::test
