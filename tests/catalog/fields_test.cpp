#include "host/latin1.h"
#include "host/value.h"
#include "tests/support/runtime.h"
#include "zmfbconn/connection.h"

namespace zmfb::test {
namespace {

using host::array_of;
using host::Value;

// The methods of this file need no database.
class Fields : public Runtime {
  protected:
    zmFBConn connection;

    std::string answer(std::string_view method, const Value& first, const Value& second = {}) {
        return show(connection.call(method, first, second));
    }
};

Value field(std::string_view name, std::string_view type = "C", int len = 10, int dec = 0) {
    return array_of(name, type, len, dec);
}

Value mixed_structure() {
    return array_of(field("RECNO", "N", 15), field("NAME"), field("RDD_AREAID", "C", 50),
                    field("RDDIDX_1", "C", 20), field("IDX_NAME", "C", 5), field("RDDLMB_OLD", "N", 8, 2));
}

TEST_F(Fields, FilterrddfieldsKeepsTheApplicationsFieldsAndLimboFields) {
    EXPECT_EQ(answer("filterrddfields", mixed_structure()),
              R"({{"NAME", "C", 10, 0}, {"RDDLMB_OLD", "N", 8, 2}})");
}

TEST_F(Fields, FilternormalfieldsKeepsTheDriversFieldsAndLimboFieldsInTheirOrder) {
    EXPECT_EQ(answer("filternormalfields", mixed_structure()),
              R"({{"RECNO", "N", 15, 0}, {"RDD_AREAID", "C", 50, 0}, {"RDDIDX_1", "C", 20, 0}, )"
              R"({"IDX_NAME", "C", 5, 0}, {"RDDLMB_OLD", "N", 8, 2}})");
}

TEST_F(Fields, FiltersCompareNamesExactly) {
    const Value structure = array_of(field("recno"), field("RECNO "), field("rddidx_1"), field("RDDIDX"),
                                     field("XRDDIDX_1"), field("rddlmb_x"), field("idx_a"));
    EXPECT_EQ(connection.call("filterrddfields", structure).size(), 7U);
    EXPECT_EQ(connection.call("filternormalfields", structure).size(), 0U);
}

TEST_F(Fields, FiltersCopyTheDescriptorsToFourElements) {
    const Value structure = array_of(array_of("NAME", "C", 10, 0, "more"), field("RECNO", "N"));
    const Value kept = connection.call("filterrddfields", structure);
    EXPECT_EQ(show(kept), R"({{"NAME", "C", 10, 0}})");
    kept[1][1] = "CHANGED";
    EXPECT_EQ(structure[1][1].text(), "NAME");
}

TEST_F(Fields, SetrddfieldsTagsEachFieldWithItsKind) {
    EXPECT_EQ(
        answer("setrddfields", mixed_structure()),
        R"({{{"RECNO", "N", 15, 0, 1}, {"NAME", "C", 10, 0, 0}, {"RDD_AREAID", "C", 50, 0, 3}, )"
        R"({"RDDIDX_1", "C", 20, 0, 2}, {"IDX_NAME", "C", 5, 0, 0}, {"RDDLMB_OLD", "N", 8, 2, 0}}, .T.})");
}

TEST_F(Fields, SetrddfieldsTakesADriverColumnOfAnotherTypeForTheApplications) {
    EXPECT_EQ(
        answer("setrddfields",
               array_of(field("RECNO", "C"), field("RDD_AREAID", "N"), field("RDDIDX_A", "D"))),
        R"({{{"RECNO", "C", 10, 0, 0}, {"RDD_AREAID", "N", 10, 0, 0}, {"RDDIDX_A", "D", 10, 0, 2}}, .F.})");
}

TEST_F(Fields, SetrddfieldsRaisesTheLimboFlagForOneLimboField) {
    EXPECT_EQ(answer("setrddfields", array_of(field("RDDLMB_X"))), R"({{{"RDDLMB_X", "C", 10, 0, 0}}, .T.})");
}

TEST_F(Fields, EmptyStructuresGiveEmptyArrays) {
    EXPECT_EQ(answer("filterrddfields", array_of()), "{}");
    EXPECT_EQ(answer("filternormalfields", array_of()), "{}");
    EXPECT_EQ(answer("setrddfields", array_of()), "{{}, .F.}");
    EXPECT_EQ(answer("isfieldinstru", "NAME", array_of()), ".F.");
}

TEST_F(Fields, IslimbofieldLooksAtTheFirstSevenLettersAsTheyAre) {
    EXPECT_EQ(answer("islimbofield", "RDDLMB_X"), ".T.");
    EXPECT_EQ(answer("islimbofield", "RDDLMB_"), ".T.");
    EXPECT_EQ(answer("islimbofield", "rddlmb_x"), ".F.");
    EXPECT_EQ(answer("islimbofield", " RDDLMB_X"), ".F.");
    EXPECT_EQ(answer("islimbofield", "RDDLMB"), ".F.");
    EXPECT_EQ(answer("islimbofield", ""), ".F.");
}

TEST_F(Fields, IsfieldinstruUpperCasesAndTrimsTheNameButNotTheStructures) {
    const Value structure = array_of(field("OTHER"), field("NAME"));
    EXPECT_EQ(answer("isfieldinstru", "NAME", structure), ".T.");
    EXPECT_EQ(answer("isfieldinstru", "  name ", structure), ".T.");
    EXPECT_EQ(answer("isfieldinstru", "NAM", structure), ".F.");
    EXPECT_EQ(answer("isfieldinstru", "NAMES", structure), ".F.");
    EXPECT_EQ(answer("isfieldinstru", "NAME", array_of(field("name"))), ".F.");
    EXPECT_EQ(answer("isfieldinstru", "NAME", array_of(field("NAME "))), ".F.");
}

TEST_F(Fields, WhatIsNoStructureIsRaisedAndGivesAnEmptyOne) {
    EXPECT_EQ(answer("filterrddfields", "NAME"), "{}");
    EXPECT_EQ(raised().size(), 1U);
    EXPECT_EQ(answer("filterrddfields", array_of(array_of("NAME"))).substr(0, 8), R"({{"NAME")");
    EXPECT_EQ(raised().size(), 4U);
}

}  // namespace
}  // namespace zmfb::test
