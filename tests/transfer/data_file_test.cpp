// The data file of an import, on an object without a database: every statement succeeds then without running.
#include "transfer/data_file.h"

#include <sys/stat.h>

#include "tests/support/dbf_builder.h"
#include "tests/support/runtime.h"
#include "tests/transfer/open_files.h"
#include "zmfbconn/connection.h"

namespace zmfb {
namespace {

using test::DbfBuilder;

class DataFile : public test::Runtime {
  protected:
    DataFile() { connection_.call("setfullpathdatfile", dat()); }

    [[nodiscard]] std::string dat() const { return file("data.dat"); }
    [[nodiscard]] std::string dbf() const { return file("people.dbf"); }

    bool bring(const DbfBuilder& builder) {
        builder.write(dbf());
        return connection_.call("bringdbf", dbf()).logical();
    }
    // What the data file of an import that succeeds holds.
    std::string data_of(const DbfBuilder& builder) {
        EXPECT_TRUE(bring(builder));
        return read_file(dat());
    }

  private:
    zmFBConn connection_;
};

DbfBuilder people() {
    return DbfBuilder()
        .field("NAME", 'C', 6)
        .field("BORN", 'D', 8)
        .field("PRICE", 'N', 7, 2)
        .field("OK", 'L', 1);
}

TEST_F(DataFile, HasOneRecordAfterAnotherWithoutSeparators) {
    EXPECT_EQ(data_of(people()
                          .record({"Ana", "20070301", "12.05", "T"})
                          .record({"Jo\xE3o", "", "", "?"}, '*')
                          .record({"", "20070229", "-1.50", "F"})),
              "Ana   2007-03-01  12.05T"
              "Jo\xE3o  0001-01-010      ?"
              "      0001-01-01  -1.50F");
}

TEST_F(DataFile, OfNoRecordsIsEmpty) {
    EXPECT_EQ(data_of(people()), "");
    EXPECT_TRUE(std::filesystem::exists(dat()));
}

TEST_F(DataFile, IsOverwrittenByTheNextImport) {
    data_of(people().record({"Ana", "", "", ""}).record({"Eva", "", "", ""}));
    EXPECT_EQ(data_of(DbfBuilder().field("A", 'C', 1).record({"x"})), "x");
}

TEST_F(DataFile, MayBeReadAndWrittenByEveryone) {
    const mode_t before = umask(077);
    data_of(people());
    umask(before);
    struct stat status {};
    ASSERT_EQ(stat(dat().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0666U);
}

TEST_F(DataFile, RecordsThatTheFileDoesNotHaveAreNotWritten) {
    const std::string one = "Ana   2007-03-01  12.05T";
    const DbfBuilder file = people().record({"Ana", "20070301", "12.05", "T"});
    for (const std::uint32_t count : {2U, 1000U, 4294967295U}) {
        EXPECT_EQ(data_of(DbfBuilder(file).record_count(count)), one) << "the end mark is no record";
        EXPECT_EQ(data_of(DbfBuilder(file).record_count(count).no_end_mark()), one);
    }
}

TEST_F(DataFile, RecordCutOffAtTheEndOfTheFileIsConvertedFromWhatIsThere) {
    const DbfBuilder file = people()
                                .record({"Ana", "20070301", "12.05", "T"})
                                .record({"Joaquim", "20081231", "3", "F"})
                                .no_end_mark();
    const std::string first = "Ana   2007-03-01  12.05T";
    const std::size_t second = file.bytes().size() - 23;
    EXPECT_EQ(data_of(DbfBuilder(file).cut(second)), first);
    EXPECT_EQ(data_of(DbfBuilder(file).cut(second + 1)), first) << "a deletion flag alone is no record";
    EXPECT_EQ(data_of(DbfBuilder(file).cut(second + 2)), first + "J     0001-01-010       ");
    EXPECT_EQ(data_of(DbfBuilder(file).cut(second + 14)), first + "Joaqui0001-01-010       ");
    EXPECT_EQ(data_of(DbfBuilder(file).cut(second + 15)), first + "Joaqui2008-12-310       ");
    EXPECT_EQ(data_of(DbfBuilder(file).cut(second + 22)), first + "Joaqui2008-12-31      3 ");
    EXPECT_EQ(data_of(DbfBuilder(file)), first + "Joaqui2008-12-31      3F");
}

TEST_F(DataFile, RecordsBeyondTheCountAreNotRead) {
    EXPECT_EQ(data_of(DbfBuilder().field("A", 'C', 2).record({"ab"}).record({"cd"}).record_count(1)), "ab");
}

TEST_F(DataFile, RecordsLongerThanTheirFieldsAreReadAtTheirLength) {
    EXPECT_EQ(
        data_of(DbfBuilder().field("A", 'C', 2).record_length(5).raw_record(" abxx").raw_record(" cdyy")),
        "abcd");
}

TEST_F(DataFile, RecordOfLength32768AndMoreIsReadOneByteShort) {
    std::string first(40000, 'a');
    std::string second(40000, 'b');
    first[0] = second[0] = ' ';
    const std::string data =
        data_of(DbfBuilder().field("BIG", 'C', 39999).raw_record(first).raw_record(second).no_end_mark());
    // The second record begins one byte early: at the last byte of the first.
    EXPECT_EQ(data, std::string(39998, 'a') + " " + " " + std::string(39997, 'b') + " ");
}

TEST_F(DataFile, IsTheSameWhateverTheBlocksItIsWrittenIn) {
    DbfBuilder file = DbfBuilder().field("ID", 'N', 8).field("DAY", 'D', 8).field("TEXT", 'C', 20);
    std::string wanted;
    for (int i = 0; i < 20011; ++i) {
        const std::string number = std::to_string(i);
        file.record({number, i % 3 == 0 ? "20070301" : "", "text " + number});
        wanted += std::string(8 - number.size(), ' ') + number + (i % 3 == 0 ? "2007-03-01" : "0001-01-01");
        wanted += ("text " + number + std::string(20, ' ')).substr(0, 20);
    }
    EXPECT_TRUE(data_of(file) == wanted);
}

TEST_F(DataFile, OfAFileWithoutFieldsIsEmpty) {
    for (const int length : {0, 1, 100}) {
        EXPECT_EQ(data_of(DbfBuilder().record_length(length).record_count(4294967295U)), "");
    }
}

TEST_F(DataFile, ThatCannotBeMadeIsRaisedAndTheDbfStaysOpen) {
    std::filesystem::create_directory(dat());
    EXPECT_FALSE(bring(people().record({"Ana", "", "", ""})));
    EXPECT_EQ(raised(), std::vector<std::string>{
                            "[FBCONN Error];Imposs\xEDvel criar arq tempor\xE1rio para importa\xE7\xE3o"});
    EXPECT_EQ(test::open_files(dbf()), 1U);
}

TEST_F(DataFile, ThatCannotBeWrittenWholeIsRaisedAsOneThatCannotBeMade) {
    DbfBuilder file = DbfBuilder().field("TEXT", 'C', 200);
    for (int i = 0; i < 100; ++i) file.record({"text"});
    file.write(dbf());
    zmFBConn connection;
    connection.call("setfullpathdatfile", dat());
    {
        const test::FileSizeLimit full_disk(4096);
        EXPECT_FALSE(connection.call("bringdbf", dbf()).logical());
    }
    EXPECT_EQ(raised(), std::vector<std::string>{
                            "[FBCONN Error];Imposs\xEDvel criar arq tempor\xE1rio para importa\xE7\xE3o"});
    EXPECT_EQ(test::open_files(dat()), 0U);
    EXPECT_EQ(test::open_files(dbf()), 1U);
}

}  // namespace
}  // namespace zmfb
