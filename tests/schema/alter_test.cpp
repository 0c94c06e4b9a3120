#include "tests/schema/schema.h"

namespace zmfb::test {
namespace {

class Alter : public Schema {
  protected:
    void SetUp() override { create_client(); }

    std::string own_fields() { return show(call("filterrddfields", call("gettablestruct", "CLIENT"))); }
    [[nodiscard]] std::string columns() const {
        std::string list;
        for (const Row& row :
             rows("select rdb$field_name from rdb$relation_fields where rdb$relation_name = 'CLIENT' "
                  "order by rdb$field_position")) {
            list += row[0] + " ";
        }
        return list;
    }
};

TEST_F(Alter, AddfieldAddsANumericBehindRecnoAndDescribesIt) {
    watch();
    EXPECT_TRUE(yes("addfield", "client", field("WEIGHT", "N", 12, 3)));
    EXPECT_EQ(updates(), (Names{"ALTER TABLE CLIENT ADD WEIGHT NUMERIC(12,3) DEFAULT 0 NOT NULL",
                                R"(COMMENT ON COLUMN "CLIENT"."WEIGHT" IS 'NUMERIC(12,3)')"}));
    EXPECT_EQ(columns(), "NAME PRICE BORN OK RDD_AREAID RECNO WEIGHT ");
    EXPECT_NE(own_fields().find(R"({"WEIGHT", "N", 12, 3})"), std::string::npos);
}

TEST_F(Alter, AddfieldAddsEachTypeWithItsDefault) {
    execute("insert into CLIENT (NAME) values ('Ana')");
    watch();
    EXPECT_TRUE(yes("addfield", "client", field("CITY", "C", 20)));
    EXPECT_TRUE(yes("addfield", "client", field("seen", "D")));
    EXPECT_TRUE(yes("addfield", "client", field("PAID", "L")));
    EXPECT_EQ(updates(), (Names{"ALTER TABLE CLIENT ADD CITY CHAR(20) DEFAULT '' NOT NULL",
                                "ALTER TABLE CLIENT ADD seen TIMESTAMP DEFAULT NULL",
                                "ALTER TABLE CLIENT ADD PAID CHAR(1) DEFAULT 'F' NOT NULL",
                                R"(COMMENT ON COLUMN "CLIENT"."PAID" IS 'LOGICAL')"}));
    EXPECT_EQ(rows("select CITY, SEEN, PAID from CLIENT"), (Rows{{"", "NULL", "F"}}));
}

TEST_F(Alter, AddfieldRefusesAnyOtherTypeSilently) {
    log_at(8);
    clear_log();
    for (const char* type : {"M", "c", "Character", "C ", "", "U"}) {
        EXPECT_FALSE(yes("addfield", "client", field("NOTES", type))) << type;
    }
    EXPECT_TRUE(log_lines().empty());
    EXPECT_FALSE(yes("isfieldoftable", "CLIENT", "NOTES"));
}

TEST_F(Alter, AddfieldUpperCasesTheTableWithoutTrimmingIt) {
    watch();
    EXPECT_TRUE(yes("addfield", " client ", field("CITY", "C", 5)));
    EXPECT_EQ(updates(), Names{"ALTER TABLE  CLIENT  ADD CITY CHAR(5) DEFAULT '' NOT NULL"});
}

TEST_F(Alter, AddlimbofieldKeepsAColumnOfTheSameType) {
    const Value structure = call("gettablestruct", "CLIENT");
    watch();
    EXPECT_TRUE(yes("addlimbofield", "client", structure, 1));
    EXPECT_TRUE(yes("addlimbofield", "client", structure, 2));
    EXPECT_EQ(updates(), (Names{"ALTER TABLE CLIENT ADD RDDLMB_NAME CHAR(30) DEFAULT '' NOT NULL",
                                "ALTER TABLE CLIENT ADD RDDLMB_PRICE NUMERIC(10,2) DEFAULT 0 NOT NULL",
                                R"(COMMENT ON COLUMN "CLIENT"."RDDLMB_PRICE" IS 'NUMERIC(10,2)')"}));
    EXPECT_EQ(structure[1][1].text(), "NAME") << "the structure passed must stay as it is";
}

TEST_F(Alter, AddlimbofieldDoesNothingWhenTheStructureHasTheLimboFieldOrTheFieldIsOne) {
    const Value structure = array_of(field("NAME", "C"), field("RDDLMB_NAME", "C"), field("RDDLMB_OLD", "M"));
    log_at(8);
    clear_log();
    EXPECT_TRUE(yes("addlimbofield", "client", structure, 1));
    EXPECT_TRUE(yes("addlimbofield", "client", structure, 2));
    EXPECT_TRUE(yes("addlimbofield", "client", structure, 3));
    EXPECT_TRUE(log_lines().empty());
}

TEST_F(Alter, AddlimbofieldFailsAsAddfieldDoes) {
    EXPECT_FALSE(yes("addlimbofield", "CLIENT", array_of(field("NOTES", "M")), 1));
    const Value structure = array_of(field("NAME", "C", 30));
    EXPECT_TRUE(yes("addlimbofield", "CLIENT", structure, 1));
    watch();
    EXPECT_FALSE(yes("addlimbofield", "CLIENT", structure, 1));
    expect_raised_with_error("Erro ao adicionar Campo: RDDLMB_NAME Tabela: CLIENT;FB Error: ");
}

TEST_F(Alter, AddlimbofieldOfAPositionOutsideTheStructureIsRaisedByTheRuntime) {
    const Value structure = array_of(field("NAME", "C"));
    for (const int position : {0, 2, -1}) {
        call("addlimbofield", "CLIENT", structure, position);
        EXPECT_FALSE(raised().empty());
        forget_raised();
    }
    EXPECT_EQ(columns(), "NAME PRICE BORN OK RDD_AREAID RECNO ");
}

TEST_F(Alter, RenamefieldKeepsPositionTypeAndDescription) {
    watch();
    EXPECT_TRUE(yes("renamefield", " client ", " price", "cost "));
    EXPECT_EQ(updates(), Names{"ALTER TABLE CLIENT ALTER PRICE TO COST"});
    EXPECT_EQ(own_fields(),
              R"({{"NAME", "C", 30, 0}, {"COST", "N", 10, 2}, {"BORN", "D", 8, 0}, {"OK", "L", 1, 0}})");
}

TEST_F(Alter, ARenameThatFailsIsRaisedUnderTheNamesAsTheyWerePassed) {
    watch();
    EXPECT_FALSE(yes("renamefield", "client", "price", "NAME"));
    expect_raised_with_error("Erro ao renomear Campo: price Tabela: client;FB Error: ");
}

TEST_F(Alter, SetfieldpositionCountsFromOneOverAllColumns) {
    watch();
    EXPECT_TRUE(yes("setfieldposition", " client ", field(" ok ", "L"), 1));
    EXPECT_TRUE(yes("setfieldposition", "CLIENT", field("RECNO", "N"), 5));
    EXPECT_TRUE(yes("setfieldposition", "CLIENT", field("NAME", "C"), 12));
    EXPECT_EQ(updates(), (Names{"ALTER TABLE CLIENT ALTER OK POSITION 001",
                                "ALTER TABLE CLIENT ALTER RECNO POSITION 005",
                                "ALTER TABLE CLIENT ALTER NAME POSITION 012"}));
    EXPECT_EQ(columns(), "OK PRICE BORN RECNO RDD_AREAID NAME ");
}

TEST_F(Alter, AMoveThatFailsIsRaisedUnderTheUpperCasedField) {
    watch();
    EXPECT_FALSE(yes("setfieldposition", "client", field("name", "C"), 0));
    expect_raised_with_error("Erro ao reposicionar Campo: NAME Tabela: client;FB Error: ");
}

TEST_F(Alter, AlterfieldWidensATextWhichThenIsTheLastColumn) {
    execute("insert into CLIENT (NAME) values ('Ana')");
    execute("insert into CLIENT (NAME) values ('Beto')");
    watch();
    EXPECT_TRUE(yes("alterfield", " client ", field("NAME", "C", 40), field("name ", "C", 30)));
    EXPECT_EQ(updates()[0], "ALTER TABLE  CLIENT  ADD RDDAUX_NAME CHAR(40) DEFAULT '' NOT NULL");
    EXPECT_EQ(updates()[1], "UPDATE CLIENT SET RDDAUX_NAME = NAME");
    EXPECT_EQ(updates()[2], "ALTER TABLE CLIENT DROP name ");
    EXPECT_EQ(updates()[3], "ALTER TABLE CLIENT ALTER RDDAUX_NAME TO NAME");
    EXPECT_EQ(columns(), "PRICE BORN OK RDD_AREAID RECNO NAME ");
    EXPECT_EQ(rows("select NAME, char_length(NAME) from CLIENT order by RECNO"),
              (Rows{{"Ana", "40"}, {"Beto", "40"}}));
}

TEST_F(Alter, AlterfieldChangesTypeAndNameInOneCall) {
    execute("insert into CLIENT (NAME, PRICE) values ('12', 3.5)");
    EXPECT_TRUE(yes("alterfield", "CLIENT", field("number", "N", 8, 1), field("NAME", "C", 30)));
    EXPECT_TRUE(yes("alterfield", "CLIENT", field("COST", "C", 12), field("PRICE", "N", 10, 2)));
    EXPECT_EQ(rows("select NUMBER, COST from CLIENT"), (Rows{{"12.0", "3.50"}}));
    EXPECT_EQ(own_fields(),
              R"({{"BORN", "D", 8, 0}, {"OK", "L", 1, 0}, {"NUMBER", "N", 8, 1}, {"COST", "C", 12, 0}})");
}

TEST_F(Alter, AlterfieldLeavesTheDescriptorsAsTheyAre) {
    const Value wanted = field("NAME", "C", 40);
    EXPECT_TRUE(yes("alterfield", "CLIENT", wanted, field("NAME", "C", 30)));
    EXPECT_EQ(show(wanted), R"({"NAME", "C", 40, 0})");
}

}  // namespace
}  // namespace zmfb::test
