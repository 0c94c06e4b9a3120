#include "tool/import/row_loader.h"

#include "tests/support/database.h"

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
