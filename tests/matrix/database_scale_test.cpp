// How the time for many tables grows, on a real database. ZMFB_MATRIX_TABLES says how many the larger run
// has.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "tests/matrix/cost.h"
#include "tests/matrix/round_trip.h"

namespace zmfb::test {
namespace {

constexpr int fields_per_table = 30;

int tables_asked_for() {
    const char* asked = std::getenv("ZMFB_MATRIX_TABLES");
    return asked == nullptr ? 32 : std::atoi(asked);
}

class MatrixOfManyTables : public RoundTrip {
  protected:
    struct Costs {
        Cost extract;
        Cost check;
        Cost apply;
    };

    void make_tables(int count) {
        Value fields = Value::array_of_size(0);
        for (int i = 1; i <= fields_per_table; ++i) {
            fields.push(i % 5 == 0 ? field({fmt::format("N{}", i), "N", 10, 2})
                                   : field({fmt::format("C{}", i), "C", 10}));
        }
        for (int i = 1; i <= count; ++i) create(table_name(i), fields);
    }

    Costs costs(int tables, int rounds) {
        Value names = Value::array_of_size(0);
        for (int i = 1; i <= tables; ++i) names.push(table_name(i));
        Value checked, applied;
        const Costs found{cost(rounds, [&] { call("extractmatrix", names, file("matrix")); }),
                          cost(rounds, [&] { checked = call("checkmatrix", file("matrix.tf")); }),
                          cost(rounds, [&] { applied = call("applymatrix", file("matrix.tf")); })};
        for (const Value& result : {checked, applied}) {
            EXPECT_TRUE(result[1].logical());
            EXPECT_EQ(result[2].size(), static_cast<std::size_t>(tables) + 1);
        }
        const auto per_field = [tables](const Cost& one) {
            return one.wall * 1e6 / (tables * fields_per_table);
        };
        fmt::print(
            "{:5} tables x {} fields: extract {:.3f} s, check {:.3f} s, apply unchanged {:.3f} s; "
            "microseconds a field: {:.0f}, {:.0f}, {:.0f}\n",
            tables, fields_per_table, found.extract.wall, found.check.wall, found.apply.wall,
            per_field(found.extract), per_field(found.check), per_field(found.apply));
        return found;
    }

  private:
    static std::string table_name(int number) { return fmt::format("TABLE_{:05}", number); }
};

TEST_F(MatrixOfManyTables, TakesTimeInProportionToTheFields) {
    constexpr double times_the_fields = 4, allowed = 1.8;
    const int many = tables_asked_for();
    const int few = many / 4;
    ASSERT_GE(few, 1);
    fmt::print("making {} tables took {:.1f} s\n", many, cost(1, [&] { make_tables(many); }).wall);
    const int rounds = many > 100 ? 2 : 4;
    const Costs small = costs(few, rounds);
    const Costs large = costs(many, rounds);
    EXPECT_LT(large.extract.processor, allowed * times_the_fields * small.extract.processor);
    EXPECT_LT(large.check.processor, allowed * times_the_fields * small.check.processor);
    EXPECT_LT(large.apply.processor, allowed * times_the_fields * small.apply.processor);
}

}  // namespace
}  // namespace zmfb::test
