#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <map>
#include <string>

#include "tests/conn/expected_methods.h"
#include "tests/support/runtime.h"
#include "zmfbconn/connection.h"

namespace zmfb::test {
namespace {

TEST(MethodTable, HasEveryMethodWithItsParametersAndKind) {
    std::vector<ExpectedMethod> found;
    for (std::size_t i = 0; i < method_count(); ++i) {
        const MethodRow row = method_row(i);
        found.push_back({row.name, row.parameters, row.kind});
    }
    const std::vector<ExpectedMethod> expected(expected_methods.begin(), expected_methods.end());
    EXPECT_EQ(found, expected);
}

TEST(MethodTable, IsOrderedByNameInByteOrder) {
    for (std::size_t i = 1; i < method_count(); ++i) EXPECT_LE(method_row(i - 1).name, method_row(i).name);
}

TEST(MethodTable, TellsEveryMethodInOneLine) {
    for (std::size_t i = 0; i < method_count(); ++i) {
        const MethodRow row = method_row(i);
        EXPECT_FALSE(row.help.empty()) << row.name;
        EXPECT_EQ(row.help.find('\n'), std::string_view::npos) << row.name;
    }
}

}  // namespace
}  // namespace zmfb::test
