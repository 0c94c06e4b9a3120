// Databases that say what their texts are in.
#include <filesystem>

#include "tests/support/dbf_builder.h"
#include "tests/support/dbf_readers.h"
#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

class KeptEncoding : public Tool {
  protected:
    // A new database with texts in that encoding.
    std::string made(const std::string& encoding) const {
        const std::string path = as_database(encoding + ".fdb");
        const Finished run = on(path, {"create", "--encoding", encoding});
        EXPECT_EQ(run.status, 0) << run.err;
        return path;
    }
    std::string query(const std::string& path, const std::string& text) const {
        const Finished run = on(path, {"query", "--mode", "csv", text});
        EXPECT_EQ(run.status, 0) << run.err;
        return run.out;
    }
};

TEST_F(KeptEncoding, ADbfFileComesInIsShownAndGoesOutWithTheSameBytes) {
    const struct {
        int language;
        std::string encoding, bytes, shown;
    } cases[] = {
        {0x26, "CP866", "\x8F\xE0\xA8\xA2\xA5\xE2", "Привет"},
        {0xC9, "CP1251", "\xC4\xE0", "Да"},
        {0x01, "CP437", "\x84\xE1", "äß"},
        {0x64, "CP852", "\xA5\x88", "ął"},
        {0x86, "CP737", "\x98\x99", "αβ"},
        {0x7D, "CP1255", "\xF9\xEC\xE5\xED", "שלום"},
        {0x50, "CP874", "\xE4\xB7\xC2", "ไทย"},
        {0xCC, "CP1257", "\xE0", "ą"},
    };
    for (const auto& [language, encoding, bytes, shown] : cases) {
        SCOPED_TRACE(encoding);
        const std::string path = made(encoding);
        DbfBuilder().language(language).field("NAME", 'C', 8).record({bytes}).write(file("people.dbf"));
        const Finished run = on(path, {"import", file("people.dbf")});
        EXPECT_EQ(run.status, 0) << run.err;
        EXPECT_EQ(query(path, "select trim(name) as name from people where name = '" + shown + "'"),
                  "NAME\r\n" + shown + "\r\n");
        EXPECT_EQ(on(path, {"call", "getrow('PEOPLE', \"NAME = '" + shown + "'\", 'RECNO', '', 0)"}).status,
                  0);
        EXPECT_EQ(on(path, {"export", "people", "--yes", "-o", file("")}).status, 0);
        EXPECT_EQ(read_with_dbfread(file("people.dbf")), (DbfRecords{{bytes}}));
    }
}

TEST_F(KeptEncoding, EveryCommandUsesIt) {
    const std::string path = made("CP866");
    exec(path, "create table t (name varchar(20))");
    exec(path, "insert into t values ('Привет')");
    EXPECT_EQ(query(path, "select octet_length(name) from t"), "OCTET_LENGTH\r\n6\r\n");
    EXPECT_NE(on(path, {"shell"}, "select name from t;\n").out.find("Привет"), std::string::npos);
    EXPECT_EQ(on(path, {"--json", "query", "select name from t"}).out, "[\n  {\"NAME\": \"Привет\"}\n]\n");
    EXPECT_EQ(on(path, {"call", "executequery('select name from t')"}).out,
              "{{{\"NAME\", \"C\", 20, 0}}, {\"Привет              \"}}\n");
    EXPECT_EQ(on(path, {"exec", "insert into t values ('ã')"}).err,
              "error: the statement has a character outside CP866\n");
}

TEST_F(KeptEncoding, AnotherOneIsNamedForOneCommandOrForGood) {
    const std::string path = made("CP866");
    exec(path, "create table t (name varchar(20))");
    exec(path, "insert into t values ('Д')");
    EXPECT_EQ(on(path, {"--encoding", "CP1251", "query", "--mode", "csv", "select name from t"}).out,
              "NAME\r\n„\r\n");
    exec(path, "comment on database is 'The shop. Texts for ZMRDDFIRE are CP437\nsince 1991'");
    EXPECT_EQ(query(path, "select name from t"), "NAME\r\nä\r\n");
    exec(path, "comment on database is null");
    EXPECT_EQ(on(path, {"exec", "insert into t values ('Д')"}).err,
              "error: the statement has a character outside ISO-8859-1\n");
}

TEST_F(KeptEncoding, OneThatIsNoneHereIsSaid) {
    const std::string path = database();
    exec(path, "comment on database is 'Texts for ZMRDDFIRE are KLINGON'");
    const Finished run = on(path, {"tables"});
    EXPECT_EQ(run.status, 3);
    EXPECT_EQ(
        run.err,
        "error: the database says that its texts are in KLINGON, which is no single-byte character set\n"
        "hint: --encoding names another\n");
    EXPECT_EQ(on(path, {"--encoding", "CP866", "tables"}).status, 0);
}

}  // namespace
}  // namespace zmfb::test
