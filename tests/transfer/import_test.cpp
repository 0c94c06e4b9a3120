#include <algorithm>

#include "host/latin1.h"
#include "tests/transfer/transfer_fixture.h"

namespace zmfb::test {
namespace {

using host::operator""_l1;

using Import = TransferOfRows;

DbfBuilder people() {
    return DbfBuilder()
        .field("NAME", 'C', 12)
        .field("PRICE", 'N', 10, 2)
        .field("BORN", 'D', 8)
        .field("OK", 'L', 1)
        .field("LEFT_ON", 'D', 8);
}

TEST_F(Import, MakesATableWithTheRowsOfTheFile) {
    EXPECT_TRUE(bring("people", people()
                                    .record({"Ana", "12.05", "20070301", "T", ""})
                                    .record({"Bruno", "-1.50", "19991231", "F", "20001231"})));
    EXPECT_EQ(rows("select NAME, PRICE, BORN, OK, LEFT_ON, RDD_AREAID, RECNO from PEOPLE order by RECNO"),
              (Rows{{"Ana", "12.05", "01-MAR-2007", "T", "NULL", "NULL", "1.000000000000000"},
                    {"Bruno", "-1.50", "31-DEC-1999", "F", "31-DEC-2000", "NULL", "2.000000000000000"}}));
    EXPECT_EQ(call("gettablereccount", "people").number(), 2);
    EXPECT_EQ(show(call("filterrddfields", call("gettablestruct", "people"))),
              R"({{"NAME", "C", 12, 0}, {"PRICE", "N", 10, 2}, {"BORN", "D", 8, 0}, {"OK", "L", 1, 0}, )"
              R"({"LEFT_ON", "D", 8, 0}})");
}

TEST_F(Import, SendsItsStatementsInOrder) {
    log_at(8);
    bring("people", people().record({"Ana", "12.05", "20070301", "T", ""}));
    const std::vector<std::string> sent = sql_log();
    const std::string is_external =
        "select count(*) from rdb$relations where rdb$relation_name = 'EXT_PEOPLE' ";
    EXPECT_TRUE(sent.at(0).starts_with("SELECT C.RDB$CHARACTER_SET_NAME, ")) << sent.at(0);
    EXPECT_EQ(sent.at(1), "select count(*) from rdb$relations where rdb$relation_name = 'PEOPLE' ");
    const auto last_of_createtable = std::find_if(sent.begin(), sent.end(), [](const std::string& statement) {
        return statement.starts_with("CREATE TRIGGER T_PEOPLE_DELETES");
    });
    ASSERT_NE(last_of_createtable, sent.end());
    EXPECT_EQ(std::vector<std::string>(last_of_createtable + 1, sent.end()),
              (std::vector<std::string>{
                  is_external, is_external,
                  "CREATE TABLE EXT_PEOPLE EXTERNAL FILE '" + dat() +
                      "' ( NAME CHAR(12) DEFAULT '' NOT NULL,PRICE CHAR(10) DEFAULT '' NOT NULL,"
                      "BORN CHAR(10) DEFAULT '' NOT NULL,OK CHAR(1) DEFAULT '' NOT NULL,"
                      "LEFT_ON CHAR(10) DEFAULT '' NOT NULL )",
                  "CREATE TRIGGER T_PEOPLE_NULLDATES FOR PEOPLE ACTIVE BEFORE INSERT POSITION 0 AS BEGIN   "
                  "IF ( NEW.BORN = '0001-01-01' ) THEN   NEW.BORN = NULL;  "
                  "IF ( NEW.LEFT_ON = '0001-01-01' ) THEN   NEW.LEFT_ON = NULL;   END ",
                  "SELECT COUNT(*) FROM EXT_PEOPLE",
                  "INSERT INTO PEOPLE SELECT NAME,PRICE,BORN,OK,LEFT_ON,null,0 FROM EXT_PEOPLE",
                  "SELECT GEN_ID(G_PEOPLE_I, 0) - GEN_ID(G_PEOPLE_D, 0) FROM RDB$DATABASE ",
                  "DROP TRIGGER T_PEOPLE_NULLDATES", "DROP TABLE EXT_PEOPLE"}));
}

TEST_F(Import, WithoutDateFieldsMakesNoTrigger) {
    log_at(7);
    EXPECT_TRUE(bring("words", DbfBuilder().field("WORD", 'C', 5).record({"hello"})));
    const std::vector<std::string> sent = sql_log();
    ASSERT_GE(sent.size(), 3U);
    EXPECT_EQ(std::vector<std::string>(sent.end() - 3, sent.end()),
              (std::vector<std::string>{
                  "CREATE TABLE EXT_WORDS EXTERNAL FILE '" + dat() + "' ( WORD CHAR(5) DEFAULT '' NOT NULL )",
                  "INSERT INTO WORDS SELECT WORD,null,0 FROM EXT_WORDS", "DROP TABLE EXT_WORDS"}));
}

TEST_F(Import, LogsTheSizesAtLevelFour) {
    log_at(4);
    bring("people", people().record({"Ana", "12.05", "20070301", "T", ""}).record_count(3));
    EXPECT_EQ(log_lines(),
              (std::vector<LogEntry>{
                  {4, "[BRING] Bringing to Heaven DBF: " + dbf("people") +
                          " #Records: 3 #Fields: 5 FileSz: 313 bytes RecSz: 40 bytes Starting at 193"}}));
}

TEST_F(Import, LogsTheSizesOfLargeHeadersWhole) {
    log_at(4);
    bring("big", DbfBuilder().field("A", 'C', 1).record_count(4294967295U).record_length(40000));
    EXPECT_EQ(log_lines().at(0).text, "[BRING] Bringing to Heaven DBF: " + dbf("big") +
                                          " #Records: 4294967295 #Fields: 1 FileSz: 171794396832770 bytes "
                                          "RecSz: 39999 bytes Starting at 65");
}

TEST_F(Import, LogsNothingBelowLevelFour) {
    log_at(3);
    bring("people", people().terminator('\0'));
    EXPECT_EQ(log_text(), "");
}

TEST_F(Import, GoesOnWithoutAHeaderTerminatorAndWarns) {
    log_at(4);
    EXPECT_TRUE(bring("people", people().terminator('\0').record({"Ana", "1", "", "T", ""})));
    EXPECT_EQ(log_lines().at(1),
              (LogEntry{4, "[WARN] Possible DBF header corruption or not a FlagShip native DBF! File:" +
                               dbf("people")}));
    EXPECT_EQ(rows("select NAME from PEOPLE"), (Rows{{"Ana"}}));
}

TEST_F(Import, OfNoRecordsMakesTheTableAndAnEmptyDataFile) {
    EXPECT_TRUE(bring("people", people()));
    EXPECT_EQ(rows("select count(*) from PEOPLE"), (Rows{{"0"}}));
    ASSERT_TRUE(std::filesystem::exists(dat()));
    EXPECT_EQ(std::filesystem::file_size(dat()), 0U);
}

TEST_F(Import, LeavesTheDataFileAndNothingElse) {
    const std::size_t open = open_files();
    bring("people", people().record({"Ana", "12.05", "20070301", "T", ""}));
    EXPECT_EQ(read_file(dat()), "Ana              12.052007-03-01T0001-01-01");
    EXPECT_FALSE(has_table("EXT_PEOPLE"));
    EXPECT_FALSE(has_trigger("T_PEOPLE_NULLDATES"));
    EXPECT_EQ(open_files(), open);
}

TEST_F(Import, DateThatIsNoneArrivesAsNull) {
    DbfBuilder file = DbfBuilder().field("WHEN_", 'D', 8);
    for (const char* date : {"", "20070230", "19000229", "00000000", "2007-1-1", "00010101", "garbage!"}) {
        file.record({date});
    }
    EXPECT_TRUE(bring("dates", file));
    EXPECT_EQ(rows("select WHEN_ from DATES"), Rows(7, Row{"NULL"}));
}

TEST_F(Import, DateArrivesAsThatDate) {
    EXPECT_TRUE(bring("dates", DbfBuilder()
                                   .field("WHEN_", 'D', 8)
                                   .record({"00010102"})
                                   .record({"15821015"})
                                   .record({"20000229"})
                                   .record({"99991231"})));
    EXPECT_EQ(rows("select WHEN_ from DATES order by RECNO"),
              (Rows{{"02-JAN-0001"}, {"15-OCT-1582"}, {"29-FEB-2000"}, {"31-DEC-9999"}}));
}

TEST_F(Import, NumberOfBlanksArrivesAsZero) {
    EXPECT_TRUE(bring("numbers", DbfBuilder()
                                     .field("AMOUNT", 'N', 9, 3)
                                     .field("COUNTER", 'N', 1)
                                     .record({"", ""})
                                     .record({"-9999.999", "9"})
                                     .record({".5", "0"})
                                     .record({"99999.999", "1"})
                                     .record({std::string("12\0\0\0\0\0\0\0", 9), "1"})));
    EXPECT_EQ(
        rows("select AMOUNT, COUNTER from NUMBERS order by RECNO"),
        (Rows{{"0.000", "0"}, {"-9999.999", "9"}, {"0.500", "0"}, {"99999.999", "1"}, {"12.000", "1"}}));
}

TEST_F(Import, NumbersOfEighteenDigitsKeepThemAll) {
    EXPECT_TRUE(bring("wide", DbfBuilder()
                                  .field("WHOLE", 'N', 18)
                                  .field("PARTS", 'N', 18, 5)
                                  .record({"999999999999999999", "-12345678901.54321"})));
    EXPECT_EQ(rows("select WHOLE, PARTS from WIDE"), (Rows{{"999999999999999999", "-12345678901.54321"}}));
}

TEST_F(Import, LongCharacterFieldIsCreatedWithItsLength) {
    const std::string text(300, 'x');
    EXPECT_TRUE(
        bring("texts", DbfBuilder().field("NOTE", 'C', 300).field("AFTER_", 'C', 1).record({text, "y"})));
    EXPECT_EQ(show(call("filterrddfields", call("gettablestruct", "texts"))),
              R"({{"NOTE", "C", 300, 0}, {"AFTER_", "C", 1, 0}})");
    EXPECT_EQ(rows("select NOTE, AFTER_ from TEXTS"), (Rows{{text, "y"}}));
}

TEST_F(Import, TextsArriveByteForByte) {
    const std::string accents("São João d'Água \"ção\""_l1);
    EXPECT_TRUE(bring("texts", DbfBuilder()
                                   .field("NOTE", 'C', 30)
                                   .record({accents})
                                   .record({"'; drop table TEXTS; --"})
                                   .record({"\x01\x7F\xFF\x80 @@COLUMNS"})
                                   .record({"  leading"})));
    EXPECT_EQ(rows("select NOTE from TEXTS order by RECNO"),
              (Rows{{accents}, {"'; drop table TEXTS; --"}, {"\x01\x7F\xFF\x80 @@COLUMNS"}, {"  leading"}}));
}

TEST_F(Import, LogicalsArriveAsTheyStand) {
    DbfBuilder file = DbfBuilder().field("FLAG", 'L', 1);
    for (const char* flag : {"T", "t", "Y", "y", "F", "f", "N", "n", "?", ""}) file.record({flag});
    EXPECT_TRUE(bring("flags", file));
    EXPECT_EQ(rows("select FLAG from FLAGS order by RECNO"),
              (Rows{{"T"}, {"t"}, {"Y"}, {"y"}, {"F"}, {"f"}, {"N"}, {"n"}, {"?"}, {""}}));
}

TEST_F(Import, DeletedRecordsComeAlong) {
    EXPECT_TRUE(bring(
        "words", DbfBuilder().field("WORD", 'C', 5).record({"one"}).record({"two"}, '*').record({"three"})));
    EXPECT_EQ(rows("select WORD from WORDS order by RECNO"), (Rows{{"one"}, {"two"}, {"three"}}));
}

TEST_F(Import, TableIsNamedLikeTheFileUpToItsFirstDot) {
    const DbfBuilder file = DbfBuilder().field("A", 'C', 1).record({"x"});
    EXPECT_TRUE(bring("clientes.v2", file));
    EXPECT_EQ(rows("select A from CLIENTES"), (Rows{{"x"}}));
    file.write(folder() / "Mixed_Case");
    EXPECT_TRUE(call("bringdbf", (folder() / "Mixed_Case").string()).logical());
    EXPECT_EQ(rows("select A from MIXED_CASE"), (Rows{{"x"}}));
}

TEST_F(Import, FieldNamesAreUpperCasedAndCutAtTheirFirstZeroByte) {
    using namespace std::string_literals;
    EXPECT_TRUE(bring("names", DbfBuilder()
                                   .field("small", 'c', 1)
                                   .field("cut\0junk"s, 'n', 2)
                                   .field("ELEVENBYTES", 'C', 1)
                                   .record({"x", "7", "y"})));
    EXPECT_EQ(show(call("filterrddfields", call("gettablestruct", "names"))),
              R"({{"SMALL", "C", 1, 0}, {"CUT", "N", 2, 0}, {"ELEVENBYTE", "C", 1, 0}})");
}

TEST_F(Import, FileShorterThanItsCountGivesWhatItHas) {
    EXPECT_TRUE(bring("words", DbfBuilder()
                                   .field("WORD", 'C', 5)
                                   .field("NUMBER_", 'N', 3)
                                   .record({"one", "1"})
                                   .raw_record(" tw")
                                   .record_count(4294967295U)
                                   .no_end_mark()));
    EXPECT_EQ(rows("select WORD, NUMBER_ from WORDS order by RECNO"), (Rows{{"one", "1"}, {"tw", "0"}}));
}

TEST_F(Import, RecordLengthBeyondTheFieldsIsSkipped) {
    EXPECT_TRUE(bring(
        "words",
        DbfBuilder().field("WORD", 'C', 3).record_length(7).raw_record(" one???").raw_record(" two!!!")));
    EXPECT_EQ(rows("select WORD from WORDS order by RECNO"), (Rows{{"one"}, {"two"}}));
}

TEST_F(Import, DateFieldOfLengthZeroIsNull) {
    EXPECT_TRUE(bring("dates", DbfBuilder().field("WHEN_", 'D', 0).field("A", 'C', 1).record({"", "x"})));
    EXPECT_EQ(rows("select WHEN_, A from DATES"), (Rows{{"NULL", "x"}}));
}

TEST_F(Import, OnAnObjectWithoutADatabaseSucceedsAndWritesTheDataFile) {
    zmFBConn unattached;
    unattached.call("setfullpathdatfile", file("other.dat"));
    people().record({"Ana", "12.05", "20070301", "T", ""}).write(dbf("people"));
    for (const Value& handle : {Value(0), Value("no handle")}) {
        unattached.set("dbhndl", handle);
        EXPECT_TRUE(unattached.call("bringdbf", dbf("people")).logical());
        EXPECT_EQ(read_file(file("other.dat")), "Ana              12.052007-03-01T0001-01-01");
    }
    EXPECT_FALSE(has_table("PEOPLE"));
}

}  // namespace
}  // namespace zmfb::test
