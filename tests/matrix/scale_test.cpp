// How the time for many tables grows, on tables in memory: the part that is our own.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include "tests/matrix/cost.h"
#include "tests/matrix/matrix_test.h"

namespace zmfb::test {
namespace {

constexpr int fields_per_table = 30;

class MatrixScale : public MatrixTest {
  protected:
    struct Costs {
        Cost extract;
        Cost check;
        Cost apply;
    };

    Costs costs(int tables) {
        Value structure = Value::array_of_size(0);
        for (int i = 1; i <= fields_per_table; ++i)
            structure.push(field({fmt::format("FIELD_{}", i), "C", 10}));
        db.tables.clear();
        for (int i = 1; i <= tables; ++i) db.add(fmt::format("TABLE_{:05}", i), structure);
        Value checked, applied;
        const Costs found{cost(5, [&] { db.call("extractmatrix", Value(), file("m")); }),
                          cost(5, [&] { checked = db.call("checkmatrix", file("m.tf")); }),
                          cost(5, [&] { applied = db.call("applymatrix", file("m.tf")); })};
        EXPECT_TRUE(checked[1].logical() && applied[1].logical());
        EXPECT_EQ(applied[2].size(), static_cast<std::size_t>(tables) + 1);
        EXPECT_TRUE(db.changes.empty());
        const auto per_field = [tables](const Cost& one) {
            return one.wall * 1e6 / (tables * fields_per_table);
        };
        fmt::print(
            "{:5} tables x {} fields in memory, microseconds a field: extract {:.2f}, check {:.2f}, apply "
            "unchanged {:.2f}\n",
            tables, fields_per_table, per_field(found.extract), per_field(found.check),
            per_field(found.apply));
        return found;
    }
};

TEST_F(MatrixScale, TimeGrowsInProportionToTheFields) {
    constexpr double times_the_fields = 10, allowed = 2;
    const Costs small = costs(100);
    const Costs large = costs(1000);
    EXPECT_LT(large.extract.processor, allowed * times_the_fields * small.extract.processor);
    EXPECT_LT(large.check.processor, allowed * times_the_fields * small.check.processor);
    EXPECT_LT(large.apply.processor, allowed * times_the_fields * small.apply.processor);
}

}  // namespace
}  // namespace zmfb::test
