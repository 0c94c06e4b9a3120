// Rows as tuples of types and with fields by name, through a real engine.
#include "tests/sql/sql_error_of.h"
#include "tests/support/database.h"
#include "zmfbconn/transaction.h"

namespace zmfb::test {
namespace {

constexpr const char* by_code = "select NAME, CREDIT from CUSTOMERS order by CODE";

class TypedRowsOfCustomers : public Database {
  protected:
    TypedRowsOfCustomers() {
        execute("create table CUSTOMERS (CODE integer, NAME varchar(20), CITY char(8), CREDIT numeric(9,2))");
        for (const char* row :
             {"(1, 'Anna', 'Cork', 10.50)", "(2, 'Bo', 'Cork', null)", "(3, 'Cid', 'Faro', -0.05)"})
            execute(std::string("insert into CUSTOMERS values ") + row);
    }

    Transaction& work() {
        if (!work_) work_.emplace(connection(), Access::read_only);
        return *work_;
    }

  private:
    std::optional<Transaction> work_;
};

using Credit = std::optional<Decimal>;

TEST_F(TypedRowsOfCustomers, ComeAsTuplesOfTypes) {
    std::string seen;
    for (auto& [name, credit] : work().query<std::string, Credit>(
             "select NAME, CREDIT from CUSTOMERS where CITY = ? order by CODE", "Cork"))
        seen += name + "=" + (credit ? to_string(*credit) : "NULL") + " ";
    EXPECT_EQ(seen, "Anna=10.50 Bo=NULL ");
}

TEST_F(TypedRowsOfCustomers, ComeWithFieldsByName) {
    std::string seen;
    for (const auto& row : work().rows("select * from CUSTOMERS order by CODE"))
        seen += row["name"].as<std::string>() + row["CITY"].as<std::string>() + row[0].text().value() + " ";
    EXPECT_EQ(seen, "AnnaCork1 BoCork2 CidFaro3 ");
}

TEST_F(TypedRowsOfCustomers, FieldsKnowWhetherTheyAreNull) {
    for (const auto& row : work().rows("select CREDIT from CUSTOMERS where CODE = 2")) {
        EXPECT_TRUE(row["credit"].is_null());
        EXPECT_EQ(row["credit"].as<Credit>(), std::nullopt);
        EXPECT_EQ(row["credit"].text(), std::nullopt);
    }
}

TEST_F(TypedRowsOfCustomers, ColumnsAreDescribed) {
    const auto rows = work().rows("select CODE, NAME as WHO, CREDIT, CITY from CUSTOMERS");
    ASSERT_EQ(rows.columns().size(), 4u);
    EXPECT_EQ(rows.columns()[1].name, "WHO");
    EXPECT_EQ(rows.columns()[1].type, SqlType::text);
    EXPECT_EQ(rows.columns()[1].type_name, "VARCHAR(20)");
    EXPECT_EQ(rows.columns()[2].type, SqlType::decimal);
    EXPECT_EQ(rows.columns()[2].decimals, 2);
    EXPECT_EQ(rows.columns()[3].type_name, "CHAR(8)");
}

TEST_F(TypedRowsOfCustomers, NoneAtAllIsAnEmptyRange) {
    for (auto& [code] : work().query<int>("select CODE from CUSTOMERS where CODE > 100")) FAIL() << code;
    for (const auto& row : work().rows("select CODE from CUSTOMERS where CODE > 100")) FAIL() << row.size();
}

TEST_F(TypedRowsOfCustomers, OneRowIsAValueOrATuple) {
    EXPECT_EQ(work().one<std::int64_t>("select count(*) from CUSTOMERS"), 3);
    const auto [code, name] =
        work().one<int, std::string>("select CODE, NAME from CUSTOMERS where CODE = ?", 3);
    EXPECT_EQ(code, 3);
    EXPECT_EQ(name, "Cid");
}

TEST_F(TypedRowsOfCustomers, PerhapsOneRowIsEmptyWhenThereIsNone) {
    constexpr const char* query = "select NAME from CUSTOMERS where CODE = ?";
    EXPECT_EQ(work().maybe_one<std::string>(query, 1), "Anna");
    EXPECT_EQ(work().maybe_one<std::string>(query, 7), std::nullopt);
}

TEST_F(TypedRowsOfCustomers, AnotherNumberOfRowsThanOneIsThrown) {
    EXPECT_EQ(state_of([&] { (void)work().one<int>("select CODE from CUSTOMERS where CODE > 5"); }), "02000");
    EXPECT_EQ(state_of([&] { (void)work().one<int>("select CODE from CUSTOMERS"); }), "21000");
    EXPECT_EQ(state_of([&] { (void)work().maybe_one<int>("select CODE from CUSTOMERS"); }), "21000");
}

TEST_F(TypedRowsOfCustomers, NullIntoATypeThatIsNotOptionalIsThrown) {
    const auto error = error_of([&] {
        for (auto& [name, credit] : work().query<std::string, Decimal>(by_code)) EXPECT_EQ(name, "Anna");
    });
    EXPECT_EQ(error.sqlstate(), "22002");
    EXPECT_EQ(error.message(), "Column CREDIT is NULL, which std::optional holds");
    EXPECT_EQ(error.statement(), by_code);
}

TEST_F(TypedRowsOfCustomers, AnotherNumberOfTypesThanColumnsIsThrownBeforeTheStatementRuns) {
    const auto error = error_of([&] { (void)work().query<std::string>(by_code); });
    EXPECT_EQ(error.sqlstate(), "07002");
    EXPECT_EQ(error.message(), "The statement returns 2 columns, not 1");
}

TEST_F(TypedRowsOfCustomers, TypesThatDoNotFitAreThrownBeforeTheStatementRuns) {
    const auto error = error_of([&] { (void)work().query<std::string, double>(by_code); });
    EXPECT_EQ(error.sqlstate(), "07006");
    EXPECT_EQ(
        error.message(),
        "Column CREDIT is NUMERIC with 2 decimals, which cannot be read as double, but as zmfb::Decimal");
}

TEST_F(TypedRowsOfCustomers, AFieldOfAnotherTypeIsThrown) {
    for (const auto& row : work().rows(by_code))
        EXPECT_EQ(state_of([&] { (void)row["name"].as<std::int64_t>(); }), "07006");
}

TEST_F(TypedRowsOfCustomers, ColumnsThatAreNotThereAreThrown) {
    for (const auto& row :
         work().rows("select CODE as A, CODE as \"a\", CODE as B from CUSTOMERS where CODE = 1")) {
        EXPECT_EQ(row["A"].as<int>(), 1);
        EXPECT_EQ(row["a"].as<int>(), 1);
        EXPECT_EQ(row["b"].as<int>(), 1);
        EXPECT_EQ(state_of([&] { (void)row["c"]; }), "42S22");
        EXPECT_EQ(state_of([&] { (void)row[3]; }), "42S22");
    }
}

TEST_F(TypedRowsOfCustomers, TwoColumnsOfOneNameAreReachedByTheirPlacesOnly) {
    for (const auto& row : work().rows("select 1 as N, 2 as N from rdb$database")) {
        EXPECT_EQ(state_of([&] { (void)row["N"]; }), "42S22");
        EXPECT_EQ(row[1].as<int>(), 2);
    }
}

TEST_F(TypedRowsOfCustomers, AFailureAmongTheRowsIsThrown) {
    int rows = 0;
    const auto error = error_of([&] {
        for (auto& [quotient] : work().query<int>("select 6 / (3 - CODE) from CUSTOMERS order by CODE"))
            rows += quotient;
    });
    EXPECT_EQ(rows, 3 + 6);
    EXPECT_EQ(error.sqlcode(), -802);
    EXPECT_EQ(error.sqlstate(), "22012");
    EXPECT_NE(error.message().find("Integer divide by zero"), std::string::npos) << error.message();
}

TEST_F(TypedRowsOfCustomers, AViewLivesToTheNextRowAndATextLonger) {
    std::vector<std::string> kept;
    for (auto& [name] : work().query<std::string_view>("select NAME from CUSTOMERS order by CODE"))
        kept.emplace_back(name);
    EXPECT_EQ(kept, (std::vector<std::string>{"Anna", "Bo", "Cid"}));
}

TEST_F(TypedRowsOfCustomers, AreGoneThroughOnce) {
    auto rows = work().query<int>("select CODE from CUSTOMERS");
    EXPECT_EQ(std::get<0>(*rows.begin()), 1);
    EXPECT_EQ(state_of([&] { rows.begin(); }), "24000");
}

TEST_F(TypedRowsOfCustomers, AFieldOfAnEarlierRowIsThrown) {
    auto rows = work().rows("select CODE from CUSTOMERS order by CODE");
    auto at = rows.begin();
    const Field first = (*at)["code"];
    EXPECT_EQ(first.as<int>(), 1);
    ++at;
    EXPECT_EQ(state_of([&] { (void)first.as<int>(); }), "24000");
    EXPECT_EQ((*at)["code"].as<int>(), 2);
}

TEST_F(TypedRowsOfCustomers, RowsOfOneStatementEndWhereItIsRunAgain) {
    auto statement = work().prepare("select CODE from CUSTOMERS where CODE >= ? order by CODE");
    auto first = statement.query<int>(1);
    auto at = first.begin();
    EXPECT_EQ(statement.one<int>(3), 3);
    const auto error = error_of([&] { ++at; });
    EXPECT_EQ(error.sqlstate(), "24000");
    EXPECT_EQ(error.message(), "The statement was run again");
}

TEST_F(TypedRowsOfCustomers, SeveralStatementsAreReadSideBySide) {
    auto outer = work().query<int>("select CODE from CUSTOMERS order by CODE");
    auto name = work().prepare("select NAME from CUSTOMERS where CODE = ?");
    std::string seen;
    for (auto& [code] : outer) seen += name.one<std::string>(code);
    EXPECT_EQ(seen, "AnnaBoCid");
}

TEST_F(TypedRowsOfCustomers, ManyTablesRowsAreReadWhole) {
    std::int64_t sum = 0, rows = 0;
    constexpr const char* thousand =
        "with recursive N (I) as (select 1 from rdb$database union all select I + 1 from N where I < 1000) "
        "select I, lpad('', 300, 'x') from N";
    for (auto& [i, text] : work().query<std::int64_t, std::string>(thousand)) {
        sum += i;
        rows += text.size() == 300;
    }
    EXPECT_EQ(sum, 500500);
    EXPECT_EQ(rows, 1000);
}

TEST_F(TypedRowsOfCustomers, AStatementWithoutRowsIsNoQuery) {
    const auto error = error_of([&] { (void)work().query<int>("delete from CUSTOMERS"); });
    EXPECT_EQ(error.sqlstate(), "07005");
    EXPECT_EQ(state_of([&] { (void)work().rows("delete from CUSTOMERS"); }), "07005");
    EXPECT_EQ(state_of([&] { (void)work().execute("select CODE from CUSTOMERS"); }), "07005");
}

TEST_F(TypedRowsOfCustomers, WhatTheEngineHasAgainstAStatementIsThrownWhole) {
    const auto error = error_of([&] { (void)work().prepare("select NOSUCH from CUSTOMERS"); });
    EXPECT_EQ(error.sqlcode(), -206);
    EXPECT_EQ(error.sqlstate(), "42S22");
    EXPECT_EQ(error.message(),
              "Dynamic SQL Error\nSQL error code = -206\nColumn unknown\nNOSUCH\nAt line 1, column 8");
    EXPECT_EQ(error.statement(), "select NOSUCH from CUSTOMERS");
    EXPECT_EQ(error.method_text(), "[ERROR] SQLCODE=-206 (Column does not belong to referenced table)");
    EXPECT_EQ(std::string(error.what()),
              error.message() + "\nSQLSTATE 42S22, SQLCODE -206\nin: select NOSUCH from CUSTOMERS");
}

}  // namespace
}  // namespace zmfb::test
