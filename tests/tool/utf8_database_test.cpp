// Databases whose default character set is UTF8.
#include "tests/support/dbf_builder.h"
#include "tests/support/memo_builder.h"
#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

class Utf8Database : public Tool {
  protected:
    Utf8Database() : path(database()) { exec(path, "alter database set default character set UTF8"); }
    std::string made(const std::string& name, const DbfBuilder& dbf) const {
        dbf.write(file(name));
        return file(name);
    }
    Finished import(const std::string& dbf, std::vector<std::string> options = {}) const {
        options.insert(options.begin(), {"import", dbf});
        return on(path, options);
    }
    std::string query(const std::string& text) const {
        const Finished run = on(path, {"query", "--mode", "csv", text});
        EXPECT_EQ(run.status, 0) << run.err;
        return run.out.substr(std::min(run.out.size(), run.out.find('\n') + 1));
    }
    std::string path;
};

TEST_F(Utf8Database, TextsOfEveryCodePageComeInAndAreFound) {
    const struct {
        const char *page, *bytes, *text;
    } cases[] = {{"CP866", "\x8F\xE0\xA8\xA2", "Прив"},
                 {"CP850", "Jo\xC6o", "João"},
                 {"CP437", "\xB0\xB0\xB0\xB0", "░░░░"},
                 {"CP932", "\x93\xFA\x96\x7B", "日本"},
                 {"UTF-8", "\xC3\xA4\xC3\xB6", "äö"}};
    for (const auto& [page, bytes, text] : cases) {
        SCOPED_TRACE(page);
        const std::string dbf =
            made("p.dbf", DbfBuilder().field("NAME", 'C', 4).field("N", 'N', 4, 1).record({bytes, "1.5"}));
        const Finished run = import(dbf, {"--encoding-from", page, "--replace", "--yes"});
        EXPECT_EQ(run.status, 0) << run.err;
        EXPECT_EQ(query(std::string("select trim(name), n from p where name = '") + text + "'"),
                  std::string(text) + ",1.5\r\n");
    }
    const std::string tables = on(path, {"tables"}).out;
    EXPECT_NE(tables.find("P           driver        1\n"), std::string::npos) << tables;
}

TEST_F(Utf8Database, MemosAndTextsOfVaryingLengthComeIn) {
    MemoBuilder memos(MemoFormat::foxpro, 64);
    std::string longest;
    for (int i = 0; i < 40000; ++i) longest += '\xE4';
    const std::uint32_t shorter = memos.add("\xE4 short"), longer = memos.add(longest);
    write_file("m.fpt", memos.bytes());
    const std::string dbf = made("m.dbf", DbfBuilder()
                                              .type(0x32)
                                              .language(0x03)
                                              .field("V", 'V', 6)
                                              .field("M", 'M', 4)
                                              .record({"\xE9", low_first(shorter, 4)})
                                              .record({"\xE9\xE9\xE9\xE9\xE9\xE9", low_first(longer, 4)}));
    const Finished run = import(dbf);
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(query("select trim(v), char_length(m), octet_length(m) from m order by recno"),
              "é,7,8\r\néééééé,40000,80000\r\n");
    EXPECT_EQ(query("select m from m where recno = 1"), "ä short\r\n");
}

TEST_F(Utf8Database, StatementsAndMethodsTakeAndGiveUtf8) {
    on(path, {"call", "createtable('T', {{'NAME', 'C', 5, 0}})"});
    exec(path, "insert into t (name) values ('αäД')");
    EXPECT_EQ(query("select trim(name), octet_length(trim(name)) from t where name like 'αä%'"), "αäД,6\r\n");
    EXPECT_NE(on(path, {"shell"}, "select name from t;\n").out.find("αäД"), std::string::npos);
    EXPECT_NE(on(path, {"call", "executequery(\"select name from t where name = 'αäД'\")"}).out.find("αäД"),
              std::string::npos);
    EXPECT_NE(on(path, {"--json", "query", "select name from t"}).out.find("αäД"), std::string::npos);
}

TEST_F(Utf8Database, ATextThatIsNoUtf8WithoutACodePageIsABadValue) {
    const std::string dbf = made("p.dbf", DbfBuilder().field("NAME", 'C', 4).record({"\x84"}).record({"ok"}));
    const Finished run = import(dbf);
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(
        run.err.find("  record 1, field NAME: \"\\x84   \": the text is no UTF-8, and nothing says its code "
                     "page; --encoding-from does\n"),
        std::string::npos)
        << run.err;
    EXPECT_EQ(import(dbf, {"--on-bad-value", "default"}).status, 0);
    EXPECT_EQ(query("select trim(name) from p order by recno"), "\"\"\r\nok\r\n");
    const Finished broken = import(dbf, {"--encoding-from", "UTF-8", "--replace", "--dry-run"});
    EXPECT_NE(broken.err.find("the text is no UTF-8, which the texts of the database are\n"),
              std::string::npos)
        << broken.err;
}

TEST_F(Utf8Database, RecordsAreAddedAsTheColumnsTakeThem) {
    const std::string dbf =
        made("p.dbf", DbfBuilder().language(0x26).field("NAME", 'C', 4).record({"\x8F\x8F\x8F"}));
    ASSERT_EQ(import(dbf).status, 0);
    EXPECT_EQ(import(dbf, {"--append"}).err, "");
    EXPECT_EQ(query("select trim(name) from p"), "ППП\r\nППП\r\n");
    exec(path, "create table n (name char(4) character set none)");
    exec(path, "alter table p add narrow char(4) character set none");
    const Finished run =
        import(made("p.dbf", DbfBuilder().language(0x26).field("NARROW", 'C', 4).record({"\x8F\x8F\x8F"})),
               {"--append"});
    EXPECT_NE(run.err.find(": the text is longer than its column\n"), std::string::npos) << run.err;
}

TEST_F(Utf8Database, NamesOfTablesAndFieldsAreShownAsTheyAre) {
    const Finished run = import(made("p.dbf", DbfBuilder().field("N", 'N', 4)), {"--table", "preço"});
    EXPECT_NE(run.out.find("the table PREçO is no valid name: it becomes "), std::string::npos) << run.out;
}

TEST_F(Utf8Database, AnotherEncodingIsRefusedForAnImport) {
    const Finished run = import(made("p.dbf", DbfBuilder().field("N", 'N', 4)), {"--encoding", "CP1251"});
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.err.find("  the texts of the database are UTF-8, not CP1251\n"), std::string::npos)
        << run.err;
}

}  // namespace
}  // namespace zmfb::test
