#include "catalog/comment.h"
#include "host/latin1.h"
#include "tests/catalog/engines.h"
#include "tests/support/database.h"

namespace zmfb::test {
namespace {

using host::operator""_l1;
using Names = std::vector<std::string>;

// Which engine is attached decides how a description is written.
class Engine : public Database {
  protected:
    Engine() {
        execute("create table CLIENT (NAME char(10))");
        execute("create index I_NAME on CLIENT (NAME)");
    }

    std::string describe_table(std::string_view descr) {
        return call("settabledescription", "client", descr).string();
    }
};

const Names updates = {
    "update rdb$relations set rdb$description = 'O''Brien''s table' where rdb$relation_name = 'CLIENT' ",
    "update rdb$indices set rdb$description = '' where rdb$index_name = 'I_NAME' ",
    "update rdb$relation_fields set rdb$description = 'NUMERIC(10,2)' where rdb$field_name = 'NAME' and      "
    " "
    "rdb$relation_name = 'CLIENT' ",
    "update rdb$relations set rdb$description = 'x' where rdb$relation_name = 'NONE' "};

class OlderEngine : public Engine, public ::testing::WithParamInterface<const char*> {};

TEST_P(OlderEngine, HasItsSystemTablesUpdatedWhetherTheObjectExistsOrNot) {
    OtherEngine engine(GetParam());
    engine.that_updates_system_tables();
    connection();
    log_at(7);
    EXPECT_EQ(describe_table("O'Brien's table"), "");
    EXPECT_EQ(call("setindexdescription", "i_name", "").string(), "");
    EXPECT_EQ(call("setfielddescription", "client", "name", "NUMERIC(10,2)").string(), "");
    EXPECT_EQ(call("settabledescription", "none", "x").string(), "");
    EXPECT_EQ(engine.updates, updates);
    EXPECT_EQ(sql_log(), updates);
    EXPECT_EQ(engine.questions, 1);
}

INSTANTIATE_TEST_SUITE_P(Versions, OlderEngine, ::testing::Values("2.5.9.27139", "2.1.7", "1.5"));

class NewerEngine : public Engine, public ::testing::WithParamInterface<const char*> {};

TEST_P(NewerEngine, IsCommentedOn) {
    OtherEngine engine(GetParam());
    EXPECT_EQ(describe_table("a table"), "");
    EXPECT_EQ(describe_table("another"), "");
    EXPECT_TRUE(engine.updates.empty());
    EXPECT_EQ(engine.questions, 1);
    EXPECT_EQ(rows("select rdb$description from rdb$relations where rdb$relation_name = 'CLIENT' and "
                   "rdb$description = 'another'")
                  .size(),
              1U);
}

INSTANTIATE_TEST_SUITE_P(Versions, NewerEngine, ::testing::Values("3.0", "4.0.5", "5.0.1", "10.1"));

TEST_F(Engine, OneThatCannotTellItsVersionIsSentTheUpdateAndItsRefusalIsTheAnswer) {
    OtherEngine engine("");
    connection();
    log_at(1);
    const std::string refused = describe_table("x");
    EXPECT_TRUE(refused.starts_with("[ERROR] SQLCODE=")) << refused;
    EXPECT_EQ(describe_table("y"), refused);
    EXPECT_EQ(engine.updates.size(), 2U);
    EXPECT_EQ(engine.questions, 2);
    ASSERT_EQ(log_lines().size(), 4U);
    EXPECT_EQ(log_lines()[3], (LogEntry{1, refused}));
}

TEST_F(Engine, OneThatCouldNotTellItsVersionOnceIsAskedAgain) {
    connection();
    {
        OtherEngine engine("");
        EXPECT_NE(describe_table("x"), "");
    }
    OtherEngine engine("3.0");
    EXPECT_EQ(describe_table("y"), "");
    EXPECT_EQ(describe_table("z"), "");
    EXPECT_EQ(engine.questions, 1);
    EXPECT_EQ(engine.updates.size(), 0U);
}

TEST_F(Engine, AnotherDatabaseNameWithTheSameHandleIsAskedAnew) {
    OtherEngine engine("3.0");
    describe_table("x");
    zmFBConn other;
    other.set("dbhndl", connection().get("dbhndl"));
    EXPECT_EQ(other.call("settabledescription", "CLIENT", "y").string(), "");
    EXPECT_EQ(other.call("settabledescription", "CLIENT", "z").string(), "");
    EXPECT_EQ(engine.questions, 2);
}

TEST_F(Engine, WithoutADatabaseNothingIsAskedAndTheUpdateCountsAsDone) {
    zmFBConn unattached;
    log_at(8);
    EXPECT_EQ(unattached.call("settabledescription", "client", "x").string(), "");
    EXPECT_EQ(unattached.call("setfielddescription", "client", "name", "LOGICAL").string(), "");
    EXPECT_EQ(
        sql_log(),
        (Names{"update rdb$relations set rdb$description = 'x' where rdb$relation_name = 'CLIENT' ",
               "update rdb$relation_fields set rdb$description = 'LOGICAL' where rdb$field_name = 'NAME' and "
               "      rdb$relation_name = 'CLIENT' "}));
}

TEST_F(Engine, AnAccentedDescriptionOfAnOlderOneComesBackByteForByte) {
    const std::string accented{"descrição"_l1};
    OtherEngine engine("2.5.9");
    engine.that_updates_system_tables();
    EXPECT_EQ(describe_table(accented), "");
    EXPECT_EQ(engine.updates, Names{"update rdb$relations set rdb$description = '" + accented +
                                    "' where rdb$relation_name = 'CLIENT' "});
}

TEST(Utf8, IsReadAsIso8859AndKeepsItsLengthWithBlanks) {
    EXPECT_EQ(catalog::from_utf8("descrição única"), "descrição única   "_l1);
    EXPECT_EQ(catalog::from_utf8("çã  "), "çã    "_l1);
    EXPECT_EQ(catalog::from_utf8("plain"), "plain");
    EXPECT_EQ(catalog::from_utf8(""), "");
}

TEST(Utf8, ACharacterCutAtTheEndOfTheDescriptionIsLeftOut) {
    const std::string cut = std::string(254, 'a') + "\xC3";
    EXPECT_EQ(catalog::from_utf8(cut + "   "), std::string(254, 'a') + "    ");
    EXPECT_EQ(catalog::from_utf8(cut), std::string(254, 'a') + " ");
}

TEST(Utf8, WhatIsNoneIsLeftAsItIs) {
    const std::string latin1{"descrição"_l1};
    EXPECT_EQ(catalog::from_utf8(latin1), latin1);
    EXPECT_EQ(catalog::from_utf8("\xC3"), "\xC3");
    EXPECT_EQ(catalog::from_utf8("10 \xE2\x82\xAC"), "10 \xE2\x82\xAC");
}

}  // namespace
}  // namespace zmfb::test
