// Types that came with Firebird 4, on the Firebird that ZMFB_TEST_FIREBIRD names.
#include <cstdlib>

#include "tests/support/environment.h"
#include "tests/support/runtime.h"
#include "tests/support/server.h"
#include "tests/support/show.h"
#include "zmfbconn/connection.h"
#include "zmfbconn/database.h"
#include "zmfbconn/transaction.h"

namespace zmfb::test {
namespace {

class NewTypes : public Runtime {
  protected:
    void SetUp() override {
        const char* const given = std::getenv("ZMFB_TEST_FIREBIRD");
        if (given == nullptr) GTEST_SKIP() << "ZMFB_TEST_FIREBIRD names no folder of an unpacked Firebird";
        server_.emplace(ServerSetup{.firebird = given, .as_it_comes = true, .settings = {}});
        const std::string name = server_->name_of(file("given.fdb"));
        must_succeed(create_database(name, sysdba, sysdba_password));
        must_succeed(run_script(name, sysdba, sysdba_password,
                                "create table T (PRICE numeric(10,2), COUNTED bigint, WIDE numeric(38,4), "
                                "FLOATING decfloat(34), ZONED timestamp with time zone, HOUR_THERE time with "
                                "time zone, BORN timestamp);\n"
                                "insert into T values (1.25, 3, 1234567890123456789012345678901234.5678, "
                                "1.234567890123456789012345678901234e100, '2020-01-02 03:04:05.6789 "
                                "Europe/Berlin', '01:02:03 +02:00', '2007-03-01');\n"
                                "insert into T values (2.50, 4, -1, -0.5, '2020-01-02 03:04:05 UTC', "
                                "'01:02:03 +02:00', null);\n"));
        connection_.emplace(name, sysdba, sysdba_password);
        ASSERT_TRUE(connection_->isconnected());
    }
    [[nodiscard]] std::string selected(const std::string& query) {
        return show(connection_->call("executequery", query));
    }
    [[nodiscard]] std::vector<std::string> texts(const std::string& query) {
        Transaction work(*connection_);
        std::vector<std::string> all;
        for (const zmfb::Row& row : work.rows(query)) {
            for (std::size_t i = 0; i < row.size(); ++i) all.push_back(row[i].text().value_or("NULL"));
        }
        return all;
    }

    // What a piece of work is refused with.
    template <class Work>
    std::string refusal(const Work& work) {
        try {
            Transaction transaction(*connection_);
            work(transaction);
        } catch (const SqlError& error) {
            return std::string(error.sqlstate()) + ' ' + error.message();
        }
        return "";
    }

    std::optional<Server> server_;
    std::optional<zmFBConn> connection_;
};

TEST_F(NewTypes, OfMethodsAreThoseOfBefore) {
    EXPECT_EQ(
        selected(
            "select sum(PRICE) S, sum(COUNTED) C, PRICE * COUNTED P from T where COUNTED = 3 group by 3"),
        R"({{{"SUM", "N", 8, 2}, {"SUM", "N", 8, 0}, {"MULTIPLY", "N", 8, 2}}, {"1.25", "3", "3.75"}})");
    EXPECT_EQ(
        selected("select FLOATING, ZONED from T where COUNTED = 4"),
        R"({{{"FLOATING", "N", 8, 0}, {"ZONED", "D", 8, 0}}, {"-0.500000", "2020-01-02 03:04:05.0000"}})");
}

// As with every failure of a fetch, the rows before it stay.
TEST_F(NewTypes, OfMethodsFailWhereAnInt128HasNoRoomInABigint) {
    log_at(1);
    EXPECT_EQ(selected("select WIDE from T where COUNTED = 4"), R"({{{"WIDE", "N", 8, 4}}, {"-1.0000"}})");
    for (const auto& [query, given] : std::vector<std::pair<std::string, std::string>>{
             {"select WIDE from T order by COUNTED desc", R"({{{"WIDE", "N", 8, 4}}, {"-1.0000"}})"},
             {"select sum(A) from (select 9223372036854775807 A from rdb$database union all select 1 from "
              "rdb$database)",
              R"({{{"SUM", "N", 8, 0}}})"},
         }) {
        SCOPED_TRACE(query);
        clear_log();
        EXPECT_EQ(selected(query), given);
        ASSERT_EQ(log_lines().size(), 1U);
        EXPECT_EQ(log_lines()[0].text, "[ERROR] SQLCODE=-303 (Incompatible column/host variable data type)");
        EXPECT_NE(last_engine_message().find("Integer overflow."), std::string::npos)
            << last_engine_message();
    }
}

TEST_F(NewTypes, OfProgramsHaveAllTheirDigitsAndZones) {
    EXPECT_EQ(texts("select WIDE, FLOATING, ZONED, HOUR_THERE, WIDE * 10 from T where COUNTED = 3"),
              (std::vector<std::string>{"1234567890123456789012345678901234.5678",
                                        "1.234567890123456789012345678901234E+100",
                                        "2020-01-02 03:04:05.6789 Europe/Berlin", "01:02:03.0000 +02:00",
                                        "12345678901234567890123456789012345.6780"}));
}

TEST_F(NewTypes, AreReadAsTheValuesThatTheyAre) {
    Transaction work(*connection_);
    EXPECT_EQ(work.one<std::int64_t>("select sum(COUNTED) from T"), 7);
    EXPECT_EQ(work.one<Decimal>("select sum(PRICE) from T"), Decimal(375, 2));
    EXPECT_EQ(work.one<Decimal>("select PRICE * COUNTED from T where COUNTED = 4"), Decimal(1000, 2));
    EXPECT_EQ(work.one<double>("select FLOATING from T where COUNTED = 4"), -0.5);
    EXPECT_EQ(work.one<std::string>("select ZONED from T where COUNTED = 4"), "2020-01-02 03:04:05.0000 UTC");
    EXPECT_EQ(work.one<std::optional<std::int64_t>>("select sum(COUNTED) from T where 1 = 0"), std::nullopt);
    EXPECT_THROW((void)work.one<Decimal>("select WIDE from T where COUNTED = 3"), SqlError);
    EXPECT_THROW((void)work.one<std::int64_t>("select sum(PRICE) from T"), SqlError);
    EXPECT_EQ(work.prepare("select WIDE, FLOATING, ZONED from T").columns().at(0).type_name,
              "NUMERIC of up to 38 digits");
}

TEST_F(NewTypes, AreTakenAsParameters) {
    Transaction work(*connection_);
    work.execute("insert into T (WIDE, FLOATING, ZONED) values (?, ?, ?)", Decimal(-5, 1), 0.25,
                 "2021-01-01 00:00:00 UTC");
    work.execute("insert into T (WIDE, FLOATING) values (?, ?)", "12345678901234567890", 7);
    work.commit();
    EXPECT_EQ(texts("select WIDE, FLOATING, ZONED from T where COUNTED is null order by 1"),
              (std::vector<std::string>{"-0.5000", "0.25", "2021-01-01 00:00:00.0000 UTC",
                                        "12345678901234567890.0000", "7", "NULL"}));
}

TEST_F(NewTypes, OfTimesWithAZoneAreTextsAsParameters) {
    Transaction work(*connection_);
    EXPECT_EQ(work.one<int>("select COUNTED from T where ZONED = ?", "2020-01-02 04:04:05 +01:00"), 4);
    work.execute("insert into T (COUNTED, ZONED, HOUR_THERE) values (5, ?, ?)",
                 "2021-07-01 12:00:00.5 Europe/Berlin", "23:59:59 -03:30");
    work.execute("insert into T (COUNTED, ZONED, HOUR_THERE) values (6, ?, ?)", std::nullopt, std::nullopt);
    work.commit();
    EXPECT_EQ(texts("select ZONED, HOUR_THERE from T where COUNTED > 4 order by COUNTED"),
              (std::vector<std::string>{"2021-07-01 12:00:00.5000 Europe/Berlin", "23:59:59.0000 -03:30",
                                        "NULL", "NULL"}));
}

TEST_F(NewTypes, OfTimesWithAZoneTakeNothingElse) {
    const std::string insert = "insert into T (ZONED) values (?)";
    const Timestamp noon(std::chrono::hours(12));
    EXPECT_EQ(refusal([&](Transaction& work) { work.execute(insert, noon); }),
              "07006 Parameter 1 is a time WITH TIME ZONE and does not take a time stamp");
    EXPECT_EQ(refusal([&](Transaction& work) { work.execute(insert, 7); }),
              "07006 Parameter 1 is a time WITH TIME ZONE and does not take a whole number");
    EXPECT_EQ(refusal([&](Transaction& work) {
                  work.execute(insert, "2020-01-02 03:04:05 Nowhere/City");
              }).substr(0, 45),
              "42000 Dynamic SQL Error\nSQL error code = -303");
    EXPECT_EQ(refusal([&](Transaction& work) {
                  (void)work.one<Timestamp>("select ZONED from T where COUNTED = 4");
              }),
              "07006 Column ZONED is a time WITH TIME ZONE, which cannot be read as zmfb::Timestamp, but as "
              "std::string");
}

TEST_F(NewTypes, OfMethodsAndProgramsMayComeInTurn) {
    for (int round = 0; round < 3; ++round) {
        EXPECT_EQ(selected("select sum(COUNTED) from T"), R"({{{"SUM", "N", 8, 0}}, {"7"}})");
        EXPECT_EQ(texts("select sum(COUNTED) from T"), std::vector<std::string>{"7"});
    }
}

TEST_F(NewTypes, LeaveTheOthersAsTheyAre) {
    EXPECT_EQ(texts("select PRICE, COUNTED, BORN, count(*) from T where COUNTED = 3 group by 1, 2, 3"),
              (std::vector<std::string>{"1.25", "3", "2007-03-01 00:00:00.0000", "1"}));
}

}  // namespace
}  // namespace zmfb::test
