#include <gtest/gtest.h>

#include "tool/transfer/names.h"

namespace zmfb::test {
namespace {

using tool::FieldNames;
using tool::NameChange;
using Texts = std::vector<std::string>;

FieldNames settled(const Texts& names, const std::set<std::string>& reserved = {},
                   const tool::Renames& renames = {}, std::size_t longest = 31) {
    FieldNames fields(names, renames);
    fields.settle(reserved, longest);
    return fields;
}

TEST(ImportNames, FieldsGetNamesThatCanBe) {
    const struct {
        const char* what;
        Texts from, to;
    } cases[] = {
        {"what can stay stays", {"NAME", "A_$1"}, {"NAME", "A_$1"}},
        {"reserved words", {"DATE", "PLAN"}, {"DATE_", "PLAN_"}},
        {"invalid characters",
         {"MY SHOP", "A-B",
          "\xC7"
          "A"},
         {"MY_SHOP", "A_B", "F__A"}},
        {"no letter in front", {"2ND", "_X", "$", ""}, {"F_2ND", "F__X", "F_$", "F_"}},
        {"names of the driver's own",
         {"RECNO", "RDD_AREAID", "IDX_A", "RDDIDX_A", "RDDLMB_A", "RDD_A"},
         {"F_RECNO", "F_RDD_AREAID", "F_IDX_A", "F_RDDIDX_A", "F_RDDLMB_A", "RDD_A"}},
        {"repeated ones", {"A", "A", "A"}, {"A", "A_2", "A_3"}},
        {"a name that can stay is not taken away",
         {"DATE", "A", "A", "DATE_", "A_2"},
         {"DATE__2", "A", "A_3", "DATE_", "A_2"}},
        {"invalid and repeated", {"A B", "A-B", "A_B"}, {"A_B_2", "A_B_3", "A_B"}},
    };
    for (const auto& one : cases) EXPECT_EQ(settled(one.from, {"DATE", "PLAN"}).names(), one.to) << one.what;
}

TEST(ImportNames, EachChangeSaysWhy) {
    EXPECT_EQ(settled({"NAME", "DATE", "2ND", "RECNO", "NAME"}, {"DATE"}).changes(),
              (std::vector<NameChange>{{"DATE", "DATE_", "is a reserved word"},
                                       {"2ND", "F_2ND", "is no valid name"},
                                       {"RECNO", "F_RECNO", "is the name of a column of the driver's own"},
                                       {"NAME", "NAME_2", "is there twice"}}));
}

TEST(ImportNames, ANameIsCutToTheEnginesLength) {
    const FieldNames fields =
        settled({std::string(32, 'A'), std::string(33, 'A'), "2" + std::string(30, 'B')});
    EXPECT_EQ(fields.names(),
              (Texts{std::string(31, 'A'), std::string(29, 'A') + "_2", "F_2" + std::string(28, 'B')}));
    EXPECT_EQ(fields.changes().at(0).why, "is longer than 31 characters");
}

TEST(ImportNames, ARepeatedNameStaysWithinTheEnginesLength) {
    const std::string longest(31, 'A');
    EXPECT_EQ(settled({longest, longest}).names(), (Texts{longest, std::string(29, 'A') + "_2"}));
}

TEST(ImportNames, AFieldIsRenamedByTheNameInTheFile) {
    const FieldNames fields = settled({"DATE", "A"}, {"DATE"}, {{"DATE", "BOUGHT"}, {"X", "Y"}});
    EXPECT_EQ(fields.names(), (Texts{"BOUGHT", "A"}));
    EXPECT_TRUE(fields.changes().empty());
}

TEST(ImportNames, WordsOfLaterEnginesCountToo) {
    EXPECT_EQ(tool::reserved_later({"LOCAL", "NAME", "WINDOW"}), (std::set<std::string>{"LOCAL", "WINDOW"}));
}

TEST(ImportNames, TablesGetNamesThatCanBe) {
    const std::string of_20 = "A2345678901234567890";
    const struct {
        std::string from;
        bool reserved;
        std::set<std::string> taken;
        std::string to, why;
    } cases[] = {
        {"PEOPLE", false, {}, "PEOPLE", ""},
        {"ORDER", true, {}, "ORDER_", "is a reserved word"},
        {"RDB$X", false, {}, "T_RDB$X", "is a name of the engine's own"},
        {"MON$X", false, {}, "T_MON$X", "is a name of the engine's own"},
        {"SEC$USERS", false, {}, "T_SEC$USERS", "is a name of the engine's own"},
        {"RDB", false, {}, "RDB", ""},
        {"2ND", false, {}, "T_2ND", "is no valid name"},
        {"MY SHOP", false, {}, "MY_SHOP", "is no valid name"},
        {"MY-SHOP", false, {"MY_SHOP"}, "MY_SHOP_2", "is no valid name"},
        {"", false, {}, "T_", "is no valid name"},
        {of_20, false, {}, of_20, ""},
        {of_20 + "1", false, {}, of_20, "is longer than 20 characters"},
        {of_20 + "1", false, {of_20}, "A23456789012345678_2", "is longer than 20 characters"},
        {"PEOPLE",
         false,
         {"PEOPLE"},
         "PEOPLE",
         ""},  // two files of one name are for whoever asks to tell apart
    };
    for (auto one : cases) {
        NameChange change;
        EXPECT_EQ(tool::table_name(one.from, one.reserved, one.taken, change), one.to);
        EXPECT_EQ(change, (NameChange{one.from, one.to, one.why})) << one.from;
        EXPECT_TRUE(one.taken.contains(one.to));
    }
}

}  // namespace
}  // namespace zmfb::test
