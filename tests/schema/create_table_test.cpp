#include "tests/schema/schema.h"

namespace zmfb::test {
namespace {

using host::operator""_l1;

class CreateTable : public Schema {};

const std::string insert_trigger_of_client =
    "CREATE TRIGGER T_CLIENT_RECNO FOR CLIENT ACTIVE BEFORE INSERT POSITION 0 AS DECLARE VARIABLE CT "
    "INTEGER; BEGIN   "
    "NEW.RECNO = GEN_ID( G_CLIENT_I, 1 );   IF( NEW.RDD_AREAID IS NOT NULL ) THEN   BEGIN     SELECT "
    "COUNT(*) FROM "
    "RDDSYS_OPN            WHERE OPN_TABLE = 'CLIENT' AND                  OPN_AREAID = NEW.RDD_AREAID INTO "
    ":CT;     "
    "IF( CT > 0 ) THEN     BEGIN       UPDATE RDDSYS_OPN SET OPN_APPRECNO = NEW.RECNO              WHERE "
    "OPN_TABLE = "
    "'CLIENT' AND                    OPN_AREAID = NEW.RDD_AREAID;       NEW.RDD_AREAID = NULL;     END   END "
    "END ";

const std::string delete_trigger_of_client =
    "CREATE TRIGGER T_CLIENT_DELETES FOR CLIENT ACTIVE AFTER DELETE POSITION 1 AS DECLARE VARIABLE IAUX "
    "INTEGER;BEGIN   "
    "IAUX = GEN_ID( G_CLIENT_D, 1 ); END ";

const Names statements_of_client = {
    "CREATE TABLE CLIENT( NAME CHAR(30) DEFAULT '' NOT NULL,PRICE NUMERIC(10,2) DEFAULT 0 NOT NULL,BORN "
    "TIMESTAMP "
    "DEFAULT NULL,OK CHAR(1) DEFAULT 'F' NOT NULL,RDD_AREAID VARCHAR(50) DEFAULT NULL,RECNO DOUBLE PRECISION "
    "NOT "
    "NULL, PRIMARY KEY(RECNO) )",
    R"(COMMENT ON TABLE "CLIENT" IS 'Created by ZMRDDFIRE')",
    R"(COMMENT ON COLUMN "CLIENT"."PRICE" IS 'NUMERIC(10,2)')",
    R"(COMMENT ON COLUMN "CLIENT"."OK" IS 'LOGICAL')",
    "CREATE UNIQUE DESC INDEX CLIENT_RECNO_DESC ON CLIENT(RECNO)",
    "CREATE GENERATOR G_CLIENT_I",
    "CREATE GENERATOR G_CLIENT_D",
    insert_trigger_of_client,
    delete_trigger_of_client};

TEST_F(CreateTable, SendsItsStatementsInOrderEachInItsWords) {
    watch();
    EXPECT_TRUE(yes("createtable", "client", client_structure()));
    EXPECT_EQ(updates(), statements_of_client);
    EXPECT_TRUE(errors().empty());
}

TEST_F(CreateTable, MakesTheDriversLayout) {
    create_client();
    EXPECT_EQ(rows("select trim(f.rdb$field_name), t.rdb$field_type, coalesce(f.rdb$null_flag, 0), "
                   "coalesce(f.rdb$description, '-') from rdb$relation_fields f join rdb$fields t on "
                   "t.rdb$field_name = "
                   "f.rdb$field_source where f.rdb$relation_name = 'CLIENT' order by f.rdb$field_position"),
              (Rows{{"NAME", "14", "1", "-"},
                    {"PRICE", "16", "1", "NUMERIC(10,2)"},
                    {"BORN", "35", "0", "-"},
                    {"OK", "14", "1", "LOGICAL"},
                    {"RDD_AREAID", "37", "0", "-"},
                    {"RECNO", "27", "1", "-"}}));
    EXPECT_EQ(rows("select rdb$index_type, rdb$unique_flag from rdb$indices where rdb$index_name = "
                   "'CLIENT_RECNO_DESC'"),
              (Rows{{"1", "1"}}));
    EXPECT_EQ(rows("select rdb$trigger_name, rdb$trigger_sequence, rdb$trigger_type from rdb$triggers where "
                   "rdb$relation_name = 'CLIENT' order by 1"),
              (Rows{{"T_CLIENT_DELETES", "1", "6"}, {"T_CLIENT_RECNO", "0", "1"}}));
    EXPECT_TRUE(exists("generator", "G_CLIENT_I"));
    EXPECT_TRUE(exists("generator", "G_CLIENT_D"));
    EXPECT_TRUE(yes("iszmrddtable", "CLIENT"));
}

TEST_F(CreateTable, ARowInsertedWithoutAValueGetsTheDefaults) {
    create_client();
    execute("insert into CLIENT (NAME) values ('Ana')");
    execute("insert into CLIENT default values");
    EXPECT_EQ(
        rows("select NAME, PRICE, BORN, OK, RDD_AREAID, cast(RECNO as integer) from CLIENT order by RECNO"),
        (Rows{{"Ana", "0.00", "NULL", "F", "NULL", "1"}, {"", "0.00", "NULL", "F", "NULL", "2"}}));
}

TEST_F(CreateTable, TheRecordNumberIsTheGeneratorsWhateverTheClientChooses) {
    create_client();
    execute("insert into CLIENT (NAME, RECNO) values ('Ana', 77)");
    EXPECT_EQ(rows("select cast(RECNO as integer) from CLIENT"), (Rows{{"1"}}));
}

TEST_F(CreateTable, EachDeletedRowAdvancesTheDeleteGenerator) {
    create_client();
    for (int i = 0; i < 3; ++i) execute("insert into CLIENT default values");
    execute("delete from CLIENT where RECNO > 1");
    EXPECT_EQ(rows("select gen_id(G_CLIENT_I, 0), gen_id(G_CLIENT_D, 0) from rdb$database"),
              (Rows{{"3", "2"}}));
}

TEST_F(CreateTable, TypesCountByTheirFirstLetterWhateverItsCase) {
    const Value fields = array_of(field("A", "c", 5), field("B", " Character", 6),
                                  field("C", "numeric", 8, 3), field("D", "date"), field("E", "Logical"));
    EXPECT_TRUE(yes("createtable", "T", fields));
    EXPECT_EQ(structure("T"),
              R"({{"A", "C", 5, 0}, {"B", "C", 6, 0}, {"C", "N", 8, 3}, {"D", "D", 8, 0}, {"E", "L", 1, 0}, )"
              R"({"RDD_AREAID", "C", 50, 0}, {"RECNO", "N", 15, 0}})");
}

TEST_F(CreateTable, FieldNamesAreUpperCasedAndTrimmedAndSizesAreTrimmedTexts) {
    watch();
    EXPECT_TRUE(yes("createtable", "T", array_of(field(" name ", "C", 7, 3), field("Born", "D", 99, 9))));
    EXPECT_EQ(
        updates()[0],
        "CREATE TABLE T( NAME CHAR(7) DEFAULT '' NOT NULL,BORN TIMESTAMP DEFAULT NULL,RDD_AREAID VARCHAR(50) "
        "DEFAULT NULL,RECNO DOUBLE PRECISION NOT NULL, PRIMARY KEY(RECNO) )");
}

TEST_F(CreateTable, ANameWithBlanksAroundItIsTrimmedForTheTableAndUsedAsItIsForTheDescription) {
    log_at(8);
    connection();
    EXPECT_TRUE(yes("createtable", " client ", client_structure()));
    EXPECT_EQ(sql_log()[0], "select count(*) from rdb$relations where rdb$relation_name = ' CLIENT ' ");
    EXPECT_TRUE(yes("istable", "CLIENT"));
    EXPECT_FALSE(yes("iszmrddtable", "CLIENT"));
    EXPECT_EQ(structure("CLIENT").substr(0, 47), R"({{"NAME", "C", 30, 0}, {"PRICE", "N", 10, 2}, {)");
}

TEST_F(CreateTable, NothingGivenIsNoErrorAndNothingIsDone) {
    watch();
    EXPECT_TRUE(yes("createtable", "", client_structure()));
    EXPECT_TRUE(yes("createtable", "   ", client_structure()));
    EXPECT_TRUE(yes("createtable", Value(), client_structure()));
    EXPECT_TRUE(yes("createtable", "T", array_of()));
    EXPECT_TRUE(yes("createtable", "T", "NAME"));
    EXPECT_TRUE(yes("createtable", "T"));
    EXPECT_TRUE(yes("createtableexternal", "", client_structure(), "/tmp/x"));
    EXPECT_TRUE(yes("createtableexternal", "T", array_of(), "/tmp/x"));
    EXPECT_TRUE(yes("createtableexternal", "T", 5, "/tmp/x"));
    EXPECT_TRUE(log_lines().empty());
}

TEST_F(CreateTable, WithoutADatabaseEveryStatementIsSkippedAndCountsAsDone) {
    zmFBConn unattached;
    log_at(7);
    EXPECT_TRUE(unattached.call("createtable", "client", client_structure()).logical());
    EXPECT_EQ(updates().size(), statements_of_client.size());
    EXPECT_EQ(updates()[0], statements_of_client[0]);
    EXPECT_EQ(updates()[1],
              "update rdb$relations set rdb$description = 'Created by ZMRDDFIRE' where rdb$relation_name = "
              "'CLIENT' ");
    EXPECT_TRUE(unattached.call("createtableexternal", "client", client_structure(), "/tmp/x").logical());
    EXPECT_FALSE(yes("istable", "CLIENT"));
}

TEST_F(CreateTable, ARegisteredAreaIsToldTheRecordNumberAndLeavesNoTrace) {
    create_client();
    execute(
        "insert into RDDSYS_OPN (OPN_TABLE, OPN_AREAID, OPN_SHARED) values ('CLIENT', 'CLIENT:A1:1:h', 'T')");
    execute(
        "insert into RDDSYS_OPN (OPN_TABLE, OPN_AREAID, OPN_SHARED) values ('OTHER', 'CLIENT:A1:1:h', 'T')");
    execute("insert into CLIENT (NAME) values ('before')");
    execute("insert into CLIENT (NAME, RDD_AREAID) values ('Ana', 'CLIENT:A1:1:h')");
    EXPECT_EQ(rows("select NAME, RDD_AREAID from CLIENT where RECNO = 2"), (Rows{{"Ana", "NULL"}}));
    EXPECT_EQ(rows("select OPN_TABLE, OPN_APPRECNO from RDDSYS_OPN order by 1"),
              (Rows{{"CLIENT", "2"}, {"OTHER", "0"}}));
}

TEST_F(CreateTable, AnUnregisteredAreaStaysInTheRow) {
    create_client();
    execute(
        "insert into RDDSYS_OPN (OPN_TABLE, OPN_AREAID, OPN_SHARED) values ('OTHER', 'CLIENT:A1:1:h', 'T')");
    execute("insert into CLIENT (NAME, RDD_AREAID) values ('Ana', 'CLIENT:A1:1:h')");
    EXPECT_EQ(rows("select NAME, RDD_AREAID from CLIENT"), (Rows{{"Ana", "CLIENT:A1:1:h"}}));
    EXPECT_EQ(rows("select OPN_APPRECNO from RDDSYS_OPN"), (Rows{{"0"}}));
}

}  // namespace
}  // namespace zmfb::test
