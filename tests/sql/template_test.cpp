// Filling statement templates.
#include "tests/support/runtime.h"
#include "zmfbconn/connection.h"

namespace zmfb::test {
namespace {

using host::array_of;
using host::Value;

class Template : public Runtime {
  protected:
    std::string fill(const Value& stmt, const Value& param) {
        return object_.call("assemblestatement", stmt, param).string();
    }
    zmFBConn object_;
};

TEST_F(Template, PlaceholderIsReplaced) {
    EXPECT_EQ(fill("DROP GENERATOR @@GENNAME", array_of(array_of("@@GENNAME", "G_CUSTOMER_I"))),
              "DROP GENERATOR G_CUSTOMER_I");
}

TEST_F(Template, TrailingBlankOfTheTemplateStays) {
    EXPECT_EQ(fill("SELECT GEN_ID(G_@@TABLENAME_I, 0) FROM RDB$DATABASE ",
                   array_of(array_of("@@TABLENAME", "CUSTOMER"))),
              "SELECT GEN_ID(G_CUSTOMER_I, 0) FROM RDB$DATABASE ");
}

TEST_F(Template, EveryOccurrenceIsReplaced) {
    EXPECT_EQ(fill("@@A, @@A and @@A", array_of(array_of("@@A", "x"))), "x, x and x");
}

TEST_F(Template, SuffixesGlueOn) {
    EXPECT_EQ(fill("G_@@TABLENAME_I G_@@TABLENAME_D @@TABLENAME_RECNO_DESC",
                   array_of(array_of("@@TABLENAME", "CUSTOMER"))),
              "G_CUSTOMER_I G_CUSTOMER_D CUSTOMER_RECNO_DESC");
    EXPECT_EQ(fill("T_@@TRIGGERNAME", array_of(array_of("@@TRIGGERNAME", "CUSTOMER_RECNO"))),
              "T_CUSTOMER_RECNO");
}

TEST_F(Template, PairsAreAppliedInTheirOrder) {
    EXPECT_EQ(fill("@@A", array_of(array_of("@@A", "@@B"), array_of("@@B", "done"))), "done");
    EXPECT_EQ(fill("@@A", array_of(array_of("@@B", "done"), array_of("@@A", "@@B"))), "@@B");
}

TEST_F(Template, ReplacementIsNotSearchedAgainForItsOwnPlaceholder) {
    EXPECT_EQ(fill("(@@COLUMNS)", array_of(array_of("@@COLUMNS", "A,@@COLUMNS"))), "(A,@@COLUMNS)");
}

TEST_F(Template, PlaceholderWithoutAPairStays) {
    EXPECT_EQ(fill("DROP TABLE @@TABLENAME", array_of(array_of("@@GENNAME", "G"))), "DROP TABLE @@TABLENAME");
}

TEST_F(Template, CaseCounts) { EXPECT_EQ(fill("@@a @@A", array_of(array_of("@@A", "x"))), "@@a x"); }

TEST_F(Template, ValueGoesInAsItStands) {
    EXPECT_EQ(fill("'@@V'", array_of(array_of("@@V", "it's ; -- %d %s"))), "'it's ; -- %d %s'");
}

TEST_F(Template, EmptyValueRemovesThePlaceholder) {
    EXPECT_EQ(fill("a@@V b", array_of(array_of("@@V", ""))), "a b");
}

TEST_F(Template, EmptyParameterArrayChangesNothing) {
    EXPECT_EQ(fill("DROP TABLE @@TABLENAME", array_of()), "DROP TABLE @@TABLENAME");
}

TEST_F(Template, NoParameterArrayChangesNothing) {
    EXPECT_EQ(fill("DROP TABLE @@TABLENAME", {}), "DROP TABLE @@TABLENAME");
}

TEST_F(Template, ParameterArrayIsLeftAsItWas) {
    const Value param = array_of(array_of("@@A", "@@B"), array_of("@@B", "x"));
    fill("@@A", param);
    EXPECT_EQ(show(param), R"({{"@@A", "@@B"}, {"@@B", "x"}})");
}

TEST_F(Template, LongTemplateAndValues) {
    const std::string body(100000, 'v');
    EXPECT_EQ(fill("<@@V|@@V>", array_of(array_of("@@V", body))), "<" + body + "|" + body + ">");
}

TEST_F(Template, ValueThatIsNoTextIsRaisedAndEndsTheFilling) {
    for (const Value& value : {Value(), Value(7), Value(true), array_of("x")}) {
        forget_raised();
        const Value param = array_of(array_of("@@V", value), array_of("@@W", value));
        EXPECT_TRUE(object_.call("assemblestatement", "a@@V b@@W", param).is_nil());
        EXPECT_EQ(raised(), std::vector<std::string>{"Argument error: STRTRAN of @@V"});
    }
}

TEST_F(Template, ValueThatIsNoTextIsRaisedWhereItsPlaceholderDoesNotOccurToo) {
    EXPECT_TRUE(object_.call("assemblestatement", "a", array_of(array_of("@@V", 7))).is_nil());
    EXPECT_EQ(raised(), std::vector<std::string>{"Argument error: STRTRAN of @@V"});
}

TEST_F(Template, PlaceholderThatIsNoTextIsRaised) {
    answer_errors_with("substituted");
    EXPECT_EQ(fill("x@@A", array_of(array_of(7, "y"))), "substituted");
    EXPECT_EQ(raised(), std::vector<std::string>{"Argument error: STRTRAN"});
}

}  // namespace
}  // namespace zmfb::test
