#include <algorithm>

#include "tests/support/runtime.h"
#include "zmfbconn/connection.h"

namespace zmfb::test {
namespace {

TEST(MethodTable, IsOrderedByNameInByteOrderAndAccessStandsBeforeAssign) {
    EXPECT_TRUE(std::ranges::is_sorted(methods(), {},
                                       [](const MethodRow& row) { return std::pair(row.name, row.kind); }));
}

TEST(MethodTable, HasEveryNameOnceButForThePropertiesThatCanBeAssigned) {
    for (const MethodRow& row : methods()) {
        const auto times = std::ranges::count(methods(), row.name, &MethodRow::name);
        EXPECT_EQ(times, row.name == "bconn" || row.name == "dbhndl" ? 2 : 1) << row.name;
    }
}

TEST(MethodTable, TellsEveryMethodInOneLine) {
    for (const MethodRow& row : methods()) {
        EXPECT_FALSE(row.help.empty()) << row.name;
        EXPECT_EQ(row.help.find('\n'), std::string_view::npos) << row.name;
    }
}

TEST(MethodTable, NamesEveryParameterAndItsKind) {
    for (const MethodRow& row : methods()) {
        for (const ParameterRow& one : row.parameters) {
            EXPECT_FALSE(one.name.empty() || one.kind.empty()) << row.name;
        }
        EXPECT_TRUE(std::ranges::is_sorted(row.parameters, {}, &ParameterRow::optional))
            << row.name << ": what may be left out stands at the end";
    }
}

}  // namespace
}  // namespace zmfb::test
