#include "tool/suggest.h"

#include <gtest/gtest.h>

#include <vector>

namespace zmfb::test {
namespace {

using tool::did_you_mean;
using tool::edit_distance;
using tool::nearest_name;

TEST(EditDistance, CountsLettersPutInTakenOutReplacedAndSwapped) {
    const std::tuple<const char*, const char*, std::size_t> cases[] = {{"", "", 0},
                                                                       {"", "abc", 3},
                                                                       {"abc", "", 3},
                                                                       {"tables", "tables", 0},
                                                                       {"tabls", "tables", 1},
                                                                       {"tablees", "tables", 1},
                                                                       {"tabkes", "tables", 1},
                                                                       {"tabels", "tables", 1},
                                                                       {"kitten", "sitting", 3},
                                                                       {"ca", "abc", 3}};
    for (const auto& [one, other, distance] : cases) {
        EXPECT_EQ(edit_distance(one, other), distance) << one << " " << other;
    }
}

TEST(NearestName, IsTheOneWithTheFewestDifferencesIfThereAreFew) {
    const std::vector<std::string> names{"istable", "isview", "isindex", "gettablesname"};
    EXPECT_EQ(nearest_name("istabel", names), "istable");
    EXPECT_EQ(nearest_name("IsTable", names), "istable");
    EXPECT_EQ(nearest_name("isindx", names), "isindex");
    EXPECT_EQ(nearest_name("gettablename", names), "gettablesname");
    EXPECT_EQ(nearest_name("frobnicate", names), "");
    EXPECT_EQ(nearest_name("x", names), "");
    EXPECT_EQ(nearest_name("", names), "");
}

TEST(NearestName, MakesAQuestion) {
    const std::vector<std::string> names{"tables"};
    EXPECT_EQ(did_you_mean("tabels", names), "; did you mean \"tables\"?");
    EXPECT_EQ(did_you_mean("xyz", names), "");
}

TEST(Completions, GoOnFromTheTypedLettersAsTheLastOfThemIs) {
    const std::vector<std::string> names{"CUSTOMERS", "CUSTARD", "ORDERS", "select"};
    const std::pair<const char*, std::vector<std::string>> cases[] = {
        {"cus", {"customers", "custard"}},
        {"CUS", {"CUSTOMERS", "CUSTARD"}},
        {"Cust", {"Customers", "Custard"}},
        {"CUSTO", {"CUSTOMERS"}},
        {"orders", {"orders"}},
        {"orderss", {}},
        {"", {"CUSTOMERS", "CUSTARD", "ORDERS", "select"}},
        {"SEL", {"SELect"}}};
    for (const auto& [typed, expected] : cases) EXPECT_EQ(tool::completions(typed, names), expected) << typed;
}

}  // namespace
}  // namespace zmfb::test
