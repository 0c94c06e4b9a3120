#include "host/latin1.h"
#include "tests/support/database.h"

namespace zmfb::test {
namespace {

using host::Value;
using host::operator""_l1;
using Names = std::vector<std::string>;

// The engine of these tests takes descriptions by COMMENT ON.
class Descriptions : public Database {
  protected:
    Descriptions() {
        execute("create table CLIENT (NAME char(10), PRICE integer)");
        execute("create view V_CLIENT (NAME) as select NAME from CLIENT");
        execute("create index I_NAME on CLIENT (NAME)");
    }

    // What a setter answers.
    template <class... Arguments>
    std::string set(std::string_view method, Arguments... arguments) {
        return call(method, Value(arguments)...).string();
    }

    // What a getter gives, without the padding.
    template <class... Arguments>
    std::string get(std::string_view method, Arguments... arguments) {
        const Value aret = call(method, Value(arguments)...);
        EXPECT_EQ(aret.size(), 1U);
        const std::string_view text = aret[1].text();
        return std::string(text.substr(0, text.find_last_not_of(' ') + 1));
    }
};

TEST_F(Descriptions, WhatIsSetIsReadBack) {
    EXPECT_EQ(set("settabledescription", "client", "a table"), "");
    EXPECT_EQ(set("settabledescription", "v_client", "a view"), "");
    EXPECT_EQ(set("setindexdescription", "i_name", "an index"), "");
    EXPECT_EQ(set("setfielddescription", "client", "name", "a column"), "");
    EXPECT_EQ(set("setfielddescription", "v_client", "name", "a view's column"), "");
    EXPECT_EQ(get("gettabledescription", "CLIENT"), "a table");
    EXPECT_EQ(get("gettabledescription", "Client"), "a table");
    EXPECT_EQ(get("gettabledescription", "V_CLIENT"), "a view");
    EXPECT_EQ(get("getindexdescription", "i_name"), "an index");
    EXPECT_EQ(get("getfielddescription", "client", "name"), "a column");
    EXPECT_EQ(get("getfielddescription", "V_CLIENT", "NAME"), "a view's column");
    EXPECT_EQ(rows("select rdb$description from rdb$relations where rdb$relation_name = 'CLIENT' and "
                   "rdb$description = 'a table'")
                  .size(),
              1U);
}

TEST_F(Descriptions, ASecondDescriptionTakesThePlaceOfTheFirst) {
    set("settabledescription", "CLIENT", "first");
    set("settabledescription", "CLIENT", "second");
    EXPECT_EQ(get("gettabledescription", "CLIENT"), "second");
}

TEST_F(Descriptions, SingleQuotesAreStoredIntact) {
    EXPECT_EQ(set("settabledescription", "CLIENT", "O'Brien's table"), "");
    EXPECT_EQ(set("setindexdescription", "I_NAME", "''"), "");
    EXPECT_EQ(set("setfielddescription", "CLIENT", "NAME", "'"), "");
    EXPECT_EQ(get("gettabledescription", "CLIENT"), "O'Brien's table");
    EXPECT_EQ(get("getindexdescription", "I_NAME"), "''");
    EXPECT_EQ(get("getfielddescription", "CLIENT", "NAME"), "'");
}

TEST_F(Descriptions, AccentsAreStoredIntact) {
    const std::string accented{"Descrição única: 'ção'"_l1};
    EXPECT_EQ(set("settabledescription", "CLIENT", accented), "");
    EXPECT_EQ(set("setfielddescription", "CLIENT", "NAME", std::string("\xFF\x80\xA0")), "");
    EXPECT_EQ(get("gettabledescription", "CLIENT"), accented);
    EXPECT_EQ(get("getfielddescription", "CLIENT", "NAME"), "\xFF\x80\xA0");
}

TEST_F(Descriptions, ALongDescriptionIsStoredWholeAndReadCutTo255Characters) {
    const std::string text = std::string(250, 'a') + "0123456789";
    EXPECT_EQ(set("settabledescription", "CLIENT", text), "");
    EXPECT_EQ(get("gettabledescription", "CLIENT"), text.substr(0, 255));
    EXPECT_EQ(
        rows("select char_length(rdb$description) from rdb$relations where rdb$relation_name = 'CLIENT'"),
        (Rows{{"260"}}));
}

TEST_F(Descriptions, OfAccentedLettersTheFirst127AreRead) {
    const std::string letters(300, '\xE3');
    for (const std::size_t count : {127U, 128U, 300U}) {
        EXPECT_EQ(set("settabledescription", "CLIENT", letters.substr(0, count)), "");
        EXPECT_EQ(get("gettabledescription", "CLIENT"), letters.substr(0, 127)) << count;
        EXPECT_EQ(
            rows("select char_length(rdb$description) from rdb$relations where rdb$relation_name = 'CLIENT'"),
            (Rows{{std::to_string(count)}}));
    }
}

TEST_F(Descriptions, AnAccentedLetterThatIsCutIsLeftOut) {
    EXPECT_EQ(set("settabledescription", "CLIENT", std::string(254, 'a') + std::string("ção"_l1)), "");
    EXPECT_EQ(get("gettabledescription", "CLIENT"), std::string(254, 'a'));
}

TEST_F(Descriptions, WhatDoesNotExistReadsAsAnEmptyText) {
    EXPECT_EQ(show(call("gettabledescription", "NONE")), R"({""})");
    EXPECT_EQ(show(call("getindexdescription", "NONE")), R"({""})");
    EXPECT_EQ(show(call("getfielddescription", "CLIENT", "NONE")), R"({""})");
    EXPECT_EQ(show(call("getfielddescription", "NONE", "NAME")), R"({""})");
    EXPECT_EQ(show(call("gettabledescription", "O'BRIEN")), R"({""})");
}

TEST_F(Descriptions, WhatExistsWithoutADescriptionReadsAsNull) {
    EXPECT_EQ(get("gettabledescription", "CLIENT"), "NULL");
    EXPECT_EQ(get("getindexdescription", "I_NAME"), "NULL");
    EXPECT_EQ(get("getfielddescription", "CLIENT", "NAME"), "NULL");
}

TEST_F(Descriptions, AnEmptyDescriptionTakesItAway) {
    set("settabledescription", "CLIENT", "something");
    EXPECT_EQ(set("settabledescription", "CLIENT", ""), "");
    EXPECT_EQ(get("gettabledescription", "CLIENT"), "NULL");
}

TEST_F(Descriptions, DescribingWhatDoesNotExistDoesNothingAndIsNoError) {
    call("gettablesname");
    connection();
    log_at(7);
    EXPECT_EQ(set("settabledescription", "NONE", "x"), "");
    EXPECT_EQ(set("setindexdescription", "NONE", "x"), "");
    EXPECT_EQ(set("setfielddescription", "CLIENT", "NONE", "x"), "");
    EXPECT_EQ(set("setfielddescription", "NONE", "NAME", "x"), "");
    EXPECT_EQ(set("settabledescription", "ABCDEFGHIJKLMNOPQRSTUVWXYZABCDEFGHIJKLMNOP", "x"), "");
    EXPECT_TRUE(log_lines().empty());
}

TEST_F(Descriptions, ANameWithTrailingBlanksNamesNothing) {
    connection();
    log_at(7);
    EXPECT_EQ(set("settabledescription", "CLIENT ", "x"), "");
    EXPECT_EQ(set("setindexdescription", "I_NAME ", "x"), "");
    EXPECT_EQ(set("setfielddescription", "CLIENT ", "NAME", "x"), "");
    EXPECT_EQ(set("setfielddescription", "CLIENT", "NAME ", "x"), "");
    EXPECT_EQ(set("settabledescription", " CLIENT", "x"), "");
    EXPECT_TRUE(log_lines().empty());
    EXPECT_EQ(get("gettabledescription", "CLIENT"), "NULL");
}

TEST_F(Descriptions, AQuoteInANameGivesTheErrorOfTheStatementItBreaks) {
    connection();
    log_at(7);
    const std::string error = set("settabledescription", "O'BRIEN", "x");
    EXPECT_TRUE(error.starts_with("[ERROR] SQLCODE=-")) << error;
    EXPECT_EQ(log_lines(),
              (std::vector<LogEntry>{{7,
                                      "[UPDT] Statement: update rdb$relations set rdb$description = 'x' "
                                      "where rdb$relation_name = 'O'BRIEN' "},
                                     {1, error}}));
    EXPECT_NE(set("setindexdescription", "O'BRIEN", "x"), "");
    EXPECT_NE(set("setfielddescription", "CLIENT", "O'BRIEN", "x"), "");
}

TEST_F(Descriptions, DoubleQuotesAndBlanksInNamesAreTakenAsTheyAre) {
    execute(R"(create table "A ""B" ("C ""D" char(1)))");
    execute(R"(create index "I ""X" on "A ""B" ("C ""D"))");
    EXPECT_EQ(set("settabledescription", "a \"b", "table"), "");
    EXPECT_EQ(set("setfielddescription", "a \"b", "c \"d", "column"), "");
    EXPECT_EQ(set("setindexdescription", "i \"x", "index"), "");
    EXPECT_EQ(get("gettabledescription", "A \"B"), "table");
    EXPECT_EQ(get("getfielddescription", "A \"B", "C \"D"), "column");
    EXPECT_EQ(get("getindexdescription", "I \"X"), "index");
}

TEST_F(Descriptions, TheEngineIsAskedOnceAndThenCommentedOn) {
    connection();
    log_at(8);
    set("settabledescription", "client", "it's");
    set("settabledescription", "v_client", "view");
    set("setindexdescription", "i_name", "index");
    set("setfielddescription", "client", "name", "NUMERIC(10,2)");
    EXPECT_EQ(sql_log(), (Names{"select rdb$get_context('SYSTEM','ENGINE_VERSION') from rdb$database",
                                "select count(*) from rdb$relations where rdb$relation_name = 'CLIENT' ",
                                "SELECT COUNT(*) FROM RDB$VIEW_RELATIONS WHERE RDB$VIEW_NAME = 'CLIENT' ",
                                R"(COMMENT ON TABLE "CLIENT" IS 'it''s')",
                                "select count(*) from rdb$relations where rdb$relation_name = 'V_CLIENT' ",
                                "SELECT COUNT(*) FROM RDB$VIEW_RELATIONS WHERE RDB$VIEW_NAME = 'V_CLIENT' ",
                                R"(COMMENT ON VIEW "V_CLIENT" IS 'view')",
                                "select count(*) from rdb$indices where rdb$index_name = 'I_NAME' ",
                                R"(COMMENT ON INDEX "I_NAME" IS 'index')",
                                "SELECT COUNT(*) FROM RDB$RELATION_FIELDS WHERE RDB$FIELD_NAME = 'NAME' AND "
                                "RDB$RELATION_NAME = 'CLIENT' ",
                                R"(COMMENT ON COLUMN "CLIENT"."NAME" IS 'NUMERIC(10,2)')"}));
}

TEST_F(Descriptions, TheGettersReadTheFirst255CharactersThroughTheFunctionOfTheModule) {
    connection();
    log_at(8);
    call("gettabledescription", "client");
    call("getindexdescription", "i_name");
    call("getfielddescription", "client", "name");
    EXPECT_EQ(
        sql_log(),
        (Names{"select zmBlobSubstr(rdb$description,1,255) from rdb$relations where rdb$relation_name = "
               "'CLIENT' ",
               "select zmBlobSubstr(rdb$description,1,255) from rdb$indices where rdb$index_name = 'I_NAME' ",
               "select zmBlobSubstr(rdb$description,1,255) from rdb$relation_fields where rdb$field_name = "
               "'NAME' and rdb$relation_name = 'CLIENT' "}));
}

}  // namespace
}  // namespace zmfb::test
