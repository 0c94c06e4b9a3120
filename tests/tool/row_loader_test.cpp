#include "tool/import/row_loader.h"

#include "tests/support/database.h"
#include "tests/support/faulty_client.h"

namespace zmfb::test {
namespace {

using tool::LoadColumn;

class RowLoaderTest : public Database {};

TEST_F(RowLoaderTest, FindsTheRowsThatTheEngineRefusesAndNumbersTheOthersWithoutAGap) {
    execute(
        "create table probe (c char(10) not null, n numeric(8,2) check (n <> 7), recno double precision)");
    Transaction work(connection());
    std::vector<std::uint64_t> refused;
    tool::RowLoader loader(work, "PROBE",
                           {{"C", LoadColumn::Kind::fixed, 10}, {"N", LoadColumn::Kind::fixed, 8}},
                           [&](std::uint64_t record, const std::string& why) {
                               EXPECT_FALSE(why.empty());
                               refused.push_back(record);
                           });
    for (std::uint64_t record = 1; record <= 5000; ++record) {
        std::vector<std::optional<std::string>> values{
            "name", std::to_string(static_cast<double>(record) / 4).substr(0, 8)};
        if (record == 3778) values[1] = "12,5";
        if (record == 4002 || record == 5000) values[1] = "7.00";
        loader.add(record, values);
    }
    loader.flush();
    EXPECT_EQ(refused, (std::vector<std::uint64_t>{28, 3778, 4002, 5000}));  // 28 is 7.00 itself
    EXPECT_EQ(loader.rows(), 4996U);
    const auto [rows, last, sum] =
        work.one<std::int64_t, double, double>("select count(*), max(recno), sum(recno) from probe");
    EXPECT_EQ(rows, 4996);
    EXPECT_EQ(last, 4996);
    EXPECT_EQ(sum, 4996.0 * 4997 / 2);
}

// Each text takes 32 rows, each call two texts.
TEST_F(RowLoaderTest, AsksTheServerOnceForTwoTextsFullOfRows) {
    execute("create table probe (c char(994) not null, v varchar(10), recno double precision)");
    Transaction work(connection());
    tool::RowLoader loader(
        work, "PROBE",
        {{"C", LoadColumn::Kind::fixed, 990}, {"V", LoadColumn::Kind::varying, 0, "VARCHAR(10)"}},
        [](std::uint64_t, const std::string& why) { ADD_FAILURE() << why; });
    const FaultyClient client;
    for (std::uint64_t record = 1; record <= 200; ++record) {
        std::vector<std::optional<std::string>> values{"row " + std::to_string(record), std::nullopt};
        if (record % 3 != 0) values[1] = record % 3 == 1 ? "" : "v" + std::to_string(record % 100);
        loader.add(record, values);
    }
    loader.flush();
    EXPECT_EQ(loader.rows(), 200U);
    EXPECT_EQ(client.count(ClientCall::execute), 4);
    EXPECT_EQ(client.count(ClientCall::prepare), 1);
    EXPECT_EQ(client.count(ClientCall::affected_records), 0);
    EXPECT_EQ(work.one<int>("select count(*) from probe where c = 'row ' || cast(recno as integer) and "
                            "v is not distinct from case mod(recno, 3) when 0 then null when 1 then '' else "
                            "'v' || mod(recno, 100) end"),
              200);
}

TEST_F(RowLoaderTest, AFailureThatIsNoRowsIsThrown) {
    execute("create table probe (c char(10), recno double precision)");
    Transaction work(connection());
    tool::RowLoader loader(work, "NOWHERE", {{"C", LoadColumn::Kind::fixed, 10}},
                           [](std::uint64_t, const std::string& why) { ADD_FAILURE() << why; });
    loader.add(1, std::vector<std::optional<std::string>>{"name"});
    EXPECT_THROW(loader.flush(), SqlError);
}

}  // namespace
}  // namespace zmfb::test
