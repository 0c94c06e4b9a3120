// Databases whose texts take more than a byte a character: their external tables would have other columns
// than the data file.
#include "tests/transfer/transfer_fixture.h"

namespace zmfb::test {
namespace {

namespace fs = std::filesystem;

class CharacterSet : public Transfer {
  protected:
    CharacterSet() : here_(folder()) {
        fs::create_directory("source");
        DbfBuilder()
            .field("NAME", 'C', 5)
            .field("BORN", 'D', 8)
            .record({"Jo\xE3o", "20070301"})
            .record({"Ana", ""})
            .write(source());
    }

    [[nodiscard]] std::string source() const { return file("source/people.dbf"); }

    // The set counts for an attachment made after it was chosen.
    void choose(const std::string& set) {
        disconnect();
        execute("alter database set default character set " + set);
        call("setfullpathdatfile", dat());
    }
    void make_table() {
        call("createtable", "T", host::array_of(host::array_of("A", "C", 3, 0)));
        execute("insert into T values ('abc', null, 0)");
    }

  private:
    CurrentFolder here_;
};

struct WideSet {
    const char* name;
    int bytes;
};
constexpr WideSet wide_sets[] = {{"UTF8", 4}, {"UNICODE_FSS", 3}, {"SJIS_0208", 2}, {"GB18030", 4}};

std::string refusal(const WideSet& set) {
    return "Default character set " + std::string(set.name) + " takes up to " + std::to_string(set.bytes) +
           " bytes a character;DBF files go in and out of databases where it takes one";
}

TEST_F(CharacterSet, OfMoreThanAByteIsRaisedBeforeAnImportMakesAnything) {
    for (const WideSet& set : wide_sets) {
        SCOPED_TRACE(set.name);
        choose(set.name);
        log_at(4);
        clear_log();
        forget_raised();
        EXPECT_FALSE(call("bringdbf", source()).logical());
        EXPECT_EQ(messages(), std::vector<std::string>{refusal(set)});
        EXPECT_EQ(log_lines().back(), (LogEntry{4, "[ERROR] Default character set of more than one byte: " +
                                                       std::string(set.name)}));
        EXPECT_FALSE(has_table("PEOPLE"));
        EXPECT_FALSE(has_table("EXT_PEOPLE"));
        EXPECT_FALSE(fs::exists(dat()));
        EXPECT_EQ(open_files(source()), 0U);
    }
}

TEST_F(CharacterSet, OfMoreThanAByteIsRaisedBeforeAnExportMakesAnything) {
    make_table();
    for (const WideSet& set : wide_sets) {
        SCOPED_TRACE(set.name);
        choose(set.name);
        forget_raised();
        EXPECT_FALSE(call("exiletable", "T").logical());
        EXPECT_EQ(messages(), std::vector<std::string>{refusal(set)});
        EXPECT_FALSE(has_table("EXT_T"));
        EXPECT_FALSE(fs::exists("T.dbf"));
        EXPECT_FALSE(fs::exists(dat()));
    }
}

TEST_F(CharacterSet, OfOneByteGoesThrough) {
    if (const std::string reason = why_no_external_files(); !reason.empty()) GTEST_SKIP() << reason;
    for (const char* set : {"NONE", "ISO8859_1", "WIN1252", "DOS850", "OCTETS", "ASCII"}) {
        SCOPED_TRACE(set);
        choose(set);
        EXPECT_TRUE(call("bringdbf", source()).logical());
        EXPECT_EQ(rows("select octet_length(NAME) from PEOPLE"), (Rows{{"5"}, {"5"}}));
        EXPECT_TRUE(call("exiletable", "PEOPLE").logical());
        EXPECT_EQ(read_file(dat()), "Jo\xE3o 20070301\nAna          \n");
        call("droptable", "PEOPLE");
    }
}

}  // namespace
}  // namespace zmfb::test
