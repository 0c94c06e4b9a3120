// Imports of several files, and what becomes of values and records that are not as they should be.
#include <filesystem>

#include "tests/support/dbf_builder.h"
#include "tests/support/memo_builder.h"
#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

class ImportFilesTest : public Tool {
  protected:
    ImportFilesTest() : path(database()) { std::filesystem::create_directory(file("data")); }
    std::string made(const std::string& name, const DbfBuilder& dbf) const {
        dbf.write(file(name));
        return file(name);
    }
    Finished import(std::vector<std::string> words) const {
        words.insert(words.begin(), "import");
        return on(path, words);
    }
    std::string query(const std::string& text) const {
        const Finished run = on(path, {"query", "--mode", "csv", text});
        EXPECT_EQ(run.status, 0) << run.err;
        return run.out.substr(std::min(run.out.size(), run.out.find('\n') + 1));
    }
    std::string path;
};

DbfBuilder prices() { return DbfBuilder().field("CODE", 'N', 4).field("PRICE", 'N', 8, 2); }

TEST_F(ImportFilesTest, AFolderGivesItsDbfFilesAndATableAtTheEnd) {
    made("data/b.DBF", prices().record({"1", "x"}));
    made("data/a.dbf", prices().record({"1", "2"}).record({"2", "3"}));
    write_file("data/notes.txt", "no table");
    made("data/date.dbf", prices());
    const Finished run = import({file("data")});
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.err.find(file("data/b.DBF") + " was not imported\n"), std::string::npos) << run.err;
    const std::vector<std::string> said = lines(run.out);
    ASSERT_GE(said.size(), 5U) << run.out;
    const auto ends_with = [&](std::size_t from_end, const std::string& text) {
        const std::string& line = said[said.size() - from_end];
        EXPECT_TRUE(line.ends_with(text)) << line;
    };
    ends_with(3, "  A            2        0           0");
    ends_with(2, "  B            0        0           1  refused");
    ends_with(1, "  DATE_        0        1           0");
    EXPECT_EQ(query("select count(*) from a"), "2\r\n");
}

TEST_F(ImportFilesTest, APatternGivesWhatFitsIt) {
    made("data/a1.dbf", prices());
    made("data/a2.dbf", prices());
    made("data/b1.dbf", prices());
    EXPECT_EQ(import({file("data/a?.dbf")}).status, 0);
    EXPECT_EQ(query("select count(*) from rdb$relations where rdb$relation_name in ('A1', 'A2', 'B1')"),
              "2\r\n");
    EXPECT_EQ(import({file("data/c*.dbf")}).err, "error: no file fits " + file("data/c*.dbf") + "\n");
    std::filesystem::create_directory(file("empty"));
    EXPECT_EQ(import({file("empty")}).err, "error: no DBF file is in " + file("empty") + "\n");
}

TEST_F(ImportFilesTest, TablesAreNotCalledAsThoseOfTheEngine) {
    const Finished run = import({made("data/mon$tables.dbf", prices().record({"1", "2"}))});
    EXPECT_EQ(lines(run.out).at(1),
              "the table MON$TABLES is a name of the engine's own: it becomes T_MON$TABLES");
    EXPECT_EQ(query("select code from t_mon$tables"), "1\r\n");
}

TEST_F(ImportFilesTest, TwoFilesOfOneTableAreNotMixedUp) {
    std::filesystem::create_directory(file("more"));
    made("data/a.dbf", prices().record({"1", "2"}));
    made("more/a.dbf", prices().record({"5", "6"}));
    const Finished run = import({file("data/a.dbf"), file("more/a.dbf"), "--replace", "--yes"});
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.err.find("another file of this run is the table A already\n"), std::string::npos)
        << run.err;
    EXPECT_EQ(query("select code from a"), "1\r\n");
}

TEST_F(ImportFilesTest, BadValuesCanBecomeTheDefaultAndAreListed) {
    const std::string dbf = made("p.dbf", prices().record({"1", "********"}).record({"2", "1,50"}));
    const std::string csv = file("rejects.csv");
    const Finished run = import({dbf, "--on-bad-value", "default", "--rejects", csv});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_NE(
        run.out.find("2 bad values left out for the column's default:\n"
                     "record 1, field PRICE: \"********\": stars: the number was too wide for its field\n"
                     "record 2, field PRICE: \"    1,50\": not a number\n"),
        std::string::npos)
        << run.out;
    EXPECT_EQ(query("select code, price from p order by recno"), "1,0.00\r\n2,0.00\r\n");
    EXPECT_EQ(lines(read_file(csv)).size(), 3U);
    EXPECT_EQ(import({dbf, "--on-bad-value", "nonsense"}).status, 2);
}

TEST_F(ImportFilesTest, RecordsWithBadValuesCanBeSetAsideWithTheirMemosAndImportedAgain) {
    MemoBuilder memos(MemoFormat::foxpro, 64);
    const std::string first = std::to_string(memos.add("first")),
                      second = std::to_string(memos.add("second"));
    DbfBuilder dbf = DbfBuilder().type(0xF5).field("N", 'N', 4).field("NOTE", 'M', 10).field("C", 'C', 2);
    dbf.record({"1", first, "\x84"}).record({"x", second, "\x84"}).record({"3", "", ""});
    write_file("p.fpt", memos.bytes());
    const std::vector<std::string> words{made("p.dbf", dbf), "--on-bad-value",  "set-aside", "--set-aside",
                                         file("left.dbf"),   "--encoding-from", "CP850"};
    const Finished run = import(words);
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.out.find("1 record set aside in " + file("left.dbf") +
                           ":\nrecord 2, field N: \"   x\": not a number\n"),
              std::string::npos)
        << run.out;
    EXPECT_EQ(query("select n, recno from p order by recno"), "1,1\r\n3,2\r\n");
    EXPECT_EQ(lines(read_file(file("left.csv"))).size(), 2U);
    EXPECT_EQ(import({file("left.dbf"), "--on-bad-value", "default", "--table", "rest"}).status, 0);
    EXPECT_EQ(query("select n, note, trim(c) from rest"), "0,second,ä\r\n");

    const Finished again = import(words);
    EXPECT_EQ(again.status, 1);
    for (const char* name : {"left.dbf", "left.csv", "left.fpt", "left.cpg"})
        EXPECT_NE(again.err.find(file(name) + " is there already; --set-aside"), std::string::npos)
            << again.err;
}

TEST_F(ImportFilesTest, MemosThatAreCutOffOrWithinTheHeaderAreBadValues) {
    MemoBuilder memos(MemoFormat::dbase3);
    memos.add("whole");
    const auto cut = memos.add_raw("cut o");
    made("p.dbf", DbfBuilder()
                      .type(0x83)
                      .field("NOTE", 'M', 10)
                      .record({"1"})
                      .record({"0"})
                      .record({std::to_string(cut)}));
    write_file("p.dbt", memos.bytes());
    MemoBuilder boxes(MemoFormat::foxpro, 64);
    boxes.add("whole");
    made("f.dbf", DbfBuilder().type(0xF5).field("NOTE", 'M', 10).record({"8"}).record({"3"}));
    write_file("f.fpt", boxes.bytes());
    const Finished run = import({file("p.dbf"), file("f.dbf")});
    EXPECT_EQ(run.status, 1);
    for (const char* reason :
         {"record 3, field NOTE: \"2         \": the memo file ends before the memo does\n",
          "record 2, field NOTE: \"3         \": block 3 is within the header of the memo "
          "file\n"})
        EXPECT_NE(run.err.find(reason), std::string::npos) << run.err;
    EXPECT_EQ(import({file("p.dbf"), file("f.dbf"), "--on-bad-value", "default"}).status, 0);
    EXPECT_EQ(query("select note from p order by recno"), "whole\r\n\r\n\r\n");
    EXPECT_EQ(query("select note from f order by recno"), "whole\r\n\r\n");
}

TEST_F(ImportFilesTest, StandardInputIsReadForATableThatIsNamed) {
    const std::string bytes = prices().record({"1", "2"}).bytes();
    EXPECT_EQ(on(path, {"import", "-"}, bytes).status, 2);
    const Finished run = on(path, {"import", "-", "--table", "p"}, bytes);
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_TRUE(run.out.starts_with("- -> P: 1 record, 2 fields, ")) << run.out;
    EXPECT_EQ(query("select code from p"), "1\r\n");
}

TEST_F(ImportFilesTest, RejectsHoldThoseOfAllFiles) {
    const std::string a = made("a.dbf", prices().record({"x", "1"}));
    const std::string b = made("b.dbf", prices().record({"y", "1"}));
    EXPECT_EQ(import({a, b, "--rejects", file("rejects.csv")}).status, 1);
    const std::vector<std::string> rows = lines(read_file(file("rejects.csv")));
    ASSERT_EQ(rows.size(), 3U);
    EXPECT_TRUE(rows[1].starts_with("\"" + a + "\",1,")) << rows[1];
    EXPECT_TRUE(rows[2].starts_with("\"" + b + "\",1,")) << rows[2];
}

TEST_F(ImportFilesTest, ADecimalCommaIsReadAsAPointWhenToldSo) {
    const std::string dbf = made("p.dbf", prices().record({"1", "1,50"}));
    EXPECT_EQ(import({dbf}).status, 1);
    EXPECT_EQ(import({dbf, "--decimal-comma"}).status, 0);
    EXPECT_EQ(query("select price from p"), "1.50\r\n");
}

TEST_F(ImportFilesTest, RoundedNumbersAreCounted) {
    const Finished run = import({made("p.dbf", prices().record({"1", "1.505"}).record({"1", "1.5"}))});
    EXPECT_EQ(lines(run.out).at(1), "1 number rounded to the digits that the column keeps");
    EXPECT_EQ(query("select price from p order by recno"), "1.51\r\n1.50\r\n");
}

TEST_F(ImportFilesTest, RecordsBehindTheHeadersCountAreSaidAndTakenWhenToldSo) {
    const std::string dbf =
        made("p.dbf", prices().record({"1", "1"}).record({"2", "2"}).record({"3", "3"}).record_count(1));
    const Finished run = import({dbf});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.out.find("2 more"), std::string::npos) << run.out;
    EXPECT_EQ(query("select count(*) from p"), "1\r\n");
    EXPECT_EQ(import({dbf, "--all-records", "--table", "q"}).status, 0);
    EXPECT_EQ(query("select code from q order by recno"), "1\r\n2\r\n3\r\n");
}

}  // namespace
}  // namespace zmfb::test
