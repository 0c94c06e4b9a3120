// Paths of the data file: the program and the engine mean the same file, or the transfer says that they do
// not.
#include "host/latin1.h"
#include "tests/transfer/independent_reader.h"
#include "tests/transfer/transfer_fixture.h"

namespace zmfb::test {
namespace {

namespace fs = std::filesystem;

using host::operator""_l1;

class DataPath : public TransferOfRows {
  protected:
    DataPath() : here_(folder()) {
        fs::create_directory("sub");
        fs::create_directory("sub.folder");
        fs::create_directory("source");
        DbfBuilder().field("NAME", 'C', 5).record({"Ana"}).record({"Bruno"}).write(source());
    }

    [[nodiscard]] std::string source() const { return file("source/people.dbf"); }

    // Brings the file in by way of `path`, and takes the table out again.
    void expect_transfers(const std::string& path) {
        SCOPED_TRACE(path);
        EXPECT_EQ(call("setfullpathdatfile", path).string(), path);
        EXPECT_TRUE(call("bringdbf", source()).logical());
        EXPECT_EQ(rows("select NAME from PEOPLE order by RECNO"), (Rows{{"Ana"}, {"Bruno"}}));
        EXPECT_EQ(read_file(path), "Ana  Bruno");
        EXPECT_TRUE(call("exiletable", "people").logical());
        EXPECT_EQ(read_dbf("dbfread", "people.dbf").records, (Rows{{"Ana"}, {"Bruno"}}));
        EXPECT_EQ(read_file(path), "Ana  \nBruno\n");
        EXPECT_EQ(call("getfullpathdatfile").string(), path);
        EXPECT_EQ(messages(), std::vector<std::string>{});
        call("droptable", "people");
    }

  private:
    CurrentFolder here_;
};

TEST_F(DataPath, RelativeIsFromTheCurrentFolderForTheEngineToo) {
    for (const char* path : {"data.dat", "./data.dat", "sub/data.dat", "sub//data.dat"})
        expect_transfers(path);
}

TEST_F(DataPath, RelativeIsWhereTheTransferFindsIt) {
    call("setfullpathdatfile", "data.dat");
    const CurrentFolder elsewhere(folder() / "sub");
    EXPECT_TRUE(call("bringdbf", source()).logical());
    EXPECT_TRUE(fs::exists(file("sub/data.dat")));
    EXPECT_FALSE(fs::exists(file("data.dat")));
    EXPECT_EQ(rows("select count(*) from PEOPLE"), (Rows{{"2"}}));
}

TEST_F(DataPath, WithoutAnExtensionGetsNone) {
    const std::string somebodys = "Eve  \nMallo\n";
    for (const char* name : {"data", "sub/data", "sub.folder/data", "data."}) {
        write_file(name + std::string(".txt"), somebodys);
        expect_transfers(name);
        expect_transfers(file(name));
        EXPECT_EQ(read_file(file(name + std::string(".txt"))), somebodys);
    }
}

TEST_F(DataPath, OfAnyCharactersIsTheSameFile) {
    write_file("it's.dat", "Eve  Mallo");
    for (const char* name : {"it's.dat", "it''s.dat", "a b.dat", " leading.dat", "\"quoted\".dat",
                             "a;b--c.dat", "a\\b.dat", "a*b?.dat"}) {
        expect_transfers(file(name));
    }
}

}  // namespace
}  // namespace zmfb::test
