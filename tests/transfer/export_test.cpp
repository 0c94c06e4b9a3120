#include "host/latin1.h"
#include "host/workarea.h"
#include "tests/transfer/independent_reader.h"
#include "tests/transfer/transfer_fixture.h"

namespace zmfb::test {
namespace {

using host::operator""_l1;

class Export : public TransferOfRows {
  protected:
    Export() : here_(folder()) {}

    // A table of the driver; `rows` are lists of SQL values.
    void make_table(const std::string& name, const Value& structure,
                    const std::vector<std::string>& rows_of_values) {
        ASSERT_TRUE(call("createtable", name, structure).logical());
        BareClient client(database());
        for (const std::string& values : rows_of_values) {
            client.execute("insert into " + name + " values (" + values + ", null, 0)");
        }
    }
    void make_people() {
        make_table("PEOPLE",
                   host::array_of(host::array_of("NAME", "C", 12, 0), host::array_of("PRICE", "N", 10, 2),
                                  host::array_of("BORN", "D", 8, 0), host::array_of("OK", "L", 1, 0)),
                   {"'Ana', 12.05, '2007-03-01', 'T'", "'Bruno', -1.5, null, 'F'"});
    }
    bool exile(const std::string& name) { return call("exiletable", name).logical(); }

  private:
    CurrentFolder here_;
};

const Row people_fields = {"NAME:C:12:0", "PRICE:N:10:2", "BORN:D:8:0", "OK:L:1:0"};
const Rows people_records = {{"Ana", "12.05", "2007-03-01", "T"}, {"Bruno", "-1.5", "NULL", "F"}};

TEST_F(Export, WritesTheRowsIntoADbfFileOfTheTablesName) {
    make_people();
    EXPECT_TRUE(exile("PEOPLE"));
    for (const char* reader : {"dbfread", "dbf"}) {
        const DbfContent content = read_dbf(reader, "PEOPLE.dbf");
        EXPECT_EQ(content.fields, people_fields) << reader;
        EXPECT_EQ(content.records, people_records) << reader;
        EXPECT_EQ(content.deleted, 0) << reader;
    }
    expect_no_complaint("PEOPLE.dbf", 2);
}

TEST_F(Export, SendsItsStatementsInOrder) {
    make_people();
    log_at(8);
    clear_log();
    exile("PEOPLE");
    std::vector<std::string> sent;
    for (const std::string& statement : sql_log()) {
        if (statement.find("rdb$field") == std::string::npos &&
            statement.find("RDB$FIELD") == std::string::npos) {
            sent.push_back(statement);
        }
    }
    const std::string is_external =
        "select count(*) from rdb$relations where rdb$relation_name = 'EXT_PEOPLE' ";
    EXPECT_TRUE(sent.at(0).starts_with("SELECT C.RDB$CHARACTER_SET_NAME, ")) << sent.at(0);
    sent.erase(sent.begin());
    EXPECT_EQ(sent, (std::vector<std::string>{
                        is_external, is_external,
                        "CREATE TABLE EXT_PEOPLE EXTERNAL FILE '" + dat() +
                            "' ( NAME CHAR(12) DEFAULT '' NOT NULL,PRICE CHAR(10) DEFAULT '' NOT NULL,"
                            "BORN CHAR(8) DEFAULT '' NOT NULL,OK CHAR(1) DEFAULT '' NOT NULL,"
                            "NEWLINE CHAR(1) DEFAULT '' NOT NULL )",
                        "SELECT COUNT(*) FROM PEOPLE",
                        "INSERT INTO EXT_PEOPLE SELECT NAME,PRICE,SkipPad('{{D}}'||BORN),OK,'\n' FROM PEOPLE",
                        is_external, "DROP TABLE EXT_PEOPLE"}));
}

TEST_F(Export, LeavesTheDataFileWithALineForEachRow) {
    make_people();
    const std::size_t open = open_files();
    EXPECT_TRUE(exile("PEOPLE"));
    EXPECT_EQ(read_file(dat()),
              "Ana         12.05     20070301T\n"
              "Bruno       -1.50             F\n");
    EXPECT_FALSE(has_table("EXT_PEOPLE"));
    EXPECT_FALSE(host::dbselectarea("dbffile"));
    EXPECT_EQ(open_files(), open);
}

TEST_F(Export, NameIsUsedAsGiven) {
    make_people();
    log_at(7);
    clear_log();
    EXPECT_TRUE(exile("people"));
    EXPECT_TRUE(std::filesystem::exists("people.dbf"));
    EXPECT_FALSE(std::filesystem::exists("PEOPLE.dbf"));
    EXPECT_EQ(sql_log().at(1),
              "INSERT INTO EXT_people SELECT NAME,PRICE,SkipPad('{{D}}'||BORN),OK,'\n' FROM people");
    EXPECT_EQ(read_dbf("dbfread", "people.dbf").records, people_records);
}

TEST_F(Export, DatesFromTheFirstToTheLastArriveAsTheyAre) {
    make_table("DATES", host::array_of(host::array_of("WHEN_", "D", 8, 0)),
               {"'0001-01-01'", "'1582-10-15'", "'2000-02-29'", "'9999-12-31'", "null"});
    EXPECT_TRUE(exile("DATES"));
    for (const char* reader : {"dbfread", "dbf"}) {
        EXPECT_EQ(read_dbf(reader, "DATES.dbf").records,
                  (Rows{{"0001-01-01"}, {"1582-10-15"}, {"2000-02-29"}, {"9999-12-31"}, {"NULL"}}))
            << reader;
    }
}

TEST_F(Export, TextsArriveByteForByte) {
    const std::string accents(" São João d''Água \"ção\" ÿ"_l1);
    const std::string control =
        "a\nb\x1A"
        "c\r\nd\te";
    make_table("TEXTS",
               host::array_of(host::array_of("NOTE", "C", 30, 0), host::array_of("AFTER_", "C", 2, 0)),
               {"'" + accents + "', 'x'", "'" + control + "', 'y'", "'', ''", "'''''', '\n\n'"});
    EXPECT_TRUE(exile("TEXTS"));
    const std::string file = read_file("TEXTS.dbf");
    const std::size_t start = 32 + 2 * 32 + 1;
    const auto padded = [](std::string text) { return text.append(30 - text.size(), ' '); };
    EXPECT_EQ(file.substr(start), " " + padded(std::string(" São João d'Água \"ção\" ÿ"_l1)) + "x " + " " +
                                      padded(control) + "y " + " " + padded("") + "  " + " " + padded("''") +
                                      "\n\n" + "\x1A");
}

TEST_F(Export, NumbersArriveAtFullWidthAndNegative) {
    make_table("NUMBERS",
               host::array_of(host::array_of("A", "N", 5, 2), host::array_of("B", "N", 18, 0),
                              host::array_of("C", "N", 18, 5), host::array_of("D", "N", 1, 0)),
               {"99.99, 999999999999999999, -12345678901.54321, 9", "-9.99, -99999999999999999, 0.00001, 0",
                "0.5, 0, -0.00001, 1"});
    EXPECT_TRUE(exile("NUMBERS"));
    EXPECT_EQ(read_file("NUMBERS.dbf").substr(32 + 4 * 32 + 1),
              " 99.99999999999999999999-12345678901.543219"
              " -9.99-99999999999999999           0.000010"
              "  0.50                 0          -0.000011\x1A");
    expect_no_complaint("NUMBERS.dbf", 3);
}

TEST_F(Export, LogicalsOfAllSpellingsKeepTheirMeaning) {
    std::vector<std::string> values;
    for (const char* flag : {"T", "t", "Y", "y", "F", "f", "N", "n", "?", " "}) {
        values.push_back("'" + std::string(flag) + "'");
    }
    make_table("FLAGS", host::array_of(host::array_of("FLAG", "L", 1, 0)), values);
    EXPECT_TRUE(exile("FLAGS"));
    EXPECT_EQ(read_dbf("dbfread", "FLAGS.dbf").records,
              (Rows{{"T"}, {"T"}, {"T"}, {"T"}, {"F"}, {"F"}, {"F"}, {"F"}, {"NULL"}, {"NULL"}}));
}

TEST_F(Export, LongCharacterFieldKeepsItsLength) {
    const std::string text(300, 'x');
    make_table("LONG_", host::array_of(host::array_of("NOTE", "C", 300, 0), host::array_of("B", "C", 1, 0)),
               {"'" + text + "', 'y'"});
    EXPECT_TRUE(exile("LONG_"));
    EXPECT_EQ(read_dbf("dbfread", "LONG_.dbf").records, (Rows{{text, "y"}}));
}

TEST_F(Export, DriverColumnsStayAndLimboFieldsGo) {
    execute(
        "create table MIXED (RECNO double precision, NAME char(3), RDDIDX_1 char(1), IDX_X char(1), "
        "RDDLMB_OLD char(2), RDD_AREAID varchar(50))");
    execute("insert into MIXED values (1, 'abc', 'i', 'j', 'xy', null)");
    EXPECT_TRUE(exile("MIXED"));
    const DbfContent content = read_dbf("dbfread", "MIXED.dbf");
    EXPECT_EQ(content.fields, (Row{"NAME:C:3:0", "RDDLMB_OLD:C:2:0"}));
    EXPECT_EQ(content.records, (Rows{{"abc", "xy"}}));
}

TEST_F(Export, OfAnEmptyTableMakesAFileWithoutRecords) {
    make_table("NONE_", host::array_of(host::array_of("A", "C", 3, 0)), {});
    EXPECT_TRUE(exile("NONE_"));
    EXPECT_EQ(read_dbf("dbfread", "NONE_.dbf").fields, (Row{"A:C:3:0"}));
    expect_no_complaint("NONE_.dbf", 0);
}

TEST_F(Export, DoneAgainIsTheSameButForTheDate) {
    make_people();
    EXPECT_TRUE(exile("PEOPLE"));
    std::string first = read_file("PEOPLE.dbf");
    std::filesystem::remove("PEOPLE.dbf");
    EXPECT_TRUE(exile("PEOPLE"));
    std::string second = read_file("PEOPLE.dbf");
    ASSERT_GT(first.size(), 4U);
    ASSERT_EQ(first.size(), second.size());
    first.replace(1, 3, "");
    second.replace(1, 3, "");
    EXPECT_EQ(first, second);
}

TEST_F(Export, ReplacesADbfFileThatExists) {
    make_people();
    write_file("PEOPLE.dbf", std::string(10000, 'x'));
    EXPECT_TRUE(exile("PEOPLE"));
    EXPECT_EQ(read_dbf("dbfread", "PEOPLE.dbf").records, people_records);
}

}  // namespace
}  // namespace zmfb::test
