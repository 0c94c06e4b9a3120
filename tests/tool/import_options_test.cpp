// What the options of an import do.
#include <filesystem>
#include <nlohmann/json.hpp>

#include "tests/support/dbf_builder.h"
#include "tests/support/dbf_readers.h"
#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

class ImportOptionsTest : public Tool {
  protected:
    ImportOptionsTest() : path(database()) { std::filesystem::create_directory(file("tmp")); }
    std::string made(const std::string& name, const DbfBuilder& dbf) const {
        dbf.write(file(name));
        return file(name);
    }
    // Imports with a folder for temporary files of this test's own.
    Finished import(const std::string& dbf, const std::vector<std::string>& options = {},
                    const std::string& input = "") const {
        std::vector<std::string> words{"--db", path, "import", dbf};
        words.insert(words.end(), options.begin(), options.end());
        return zmfb(words, input, {"TMPDIR=" + file("tmp")});
    }
    Finished call(const std::string& line) const { return on(path, {"call", line}); }
    // The records of a table, as another reader reads them from its export.
    DbfRecords exported(const std::string& table) const {
        EXPECT_EQ(on(path, {"export", table, "--yes", "-o", file("tmp")}).status, 0);
        DbfRecords records = read_with_dbfread(file("tmp/" + table + ".dbf"));
        std::filesystem::remove(file("tmp/" + table + ".dbf"));
        return records;
    }
    std::string path;
};

DbfBuilder people() {
    return DbfBuilder().field("NAME", 'C', 8).record({"Ana"}).record({"Bob"}, '*').record({"Eva"});
}

TEST_F(ImportOptionsTest, SkipDeletedLeavesThemOut) {
    const std::string dbf = made("people.dbf", people());
    const Finished run = import(dbf, {"--skip-deleted"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.out.find(" -> PEOPLE: 2 records, 1 field, "), std::string::npos) << run.out;
    EXPECT_EQ(lines(run.out).at(1), "1 deleted record left out");
    EXPECT_EQ(exported("people"), (DbfRecords{{"Ana"}, {"Eva"}}));
}

TEST_F(ImportOptionsTest, JsonPrintsAnObjectPerFile) {
    const std::string dbf = made("people.dbf", people());
    const std::string other = made("others.dbf", people());
    const Finished run = on(path, {"--json", "import", dbf, other, "--skip-deleted"});
    ASSERT_EQ(run.status, 0) << run.err;
    ASSERT_EQ(lines(run.out).size(), 2U) << run.out;
    auto said = nlohmann::json::parse(lines(run.out).at(0));
    EXPECT_GT(said.at("seconds").get<double>(), 0);
    said.erase("seconds");
    EXPECT_EQ(said, (nlohmann::json{{"file", dbf},
                                    {"table", "PEOPLE"},
                                    {"records", 2},
                                    {"fields", 1},
                                    {"deleted", 1},
                                    {"odd_deletion_marks", 0},
                                    {"notes", nlohmann::json::array()},
                                    {"changes", nlohmann::json::array()},
                                    {"impossible_dates", 0},
                                    {"lost_nulls", 0},
                                    {"odd_logicals", 0},
                                    {"rounded_numbers", 0},
                                    {"texts_with_zero_bytes", 0},
                                    {"texts_of_unknown_code_page", 0},
                                    {"defaulted_values", 0},
                                    {"set_aside_records", 0}}));
    EXPECT_EQ(nlohmann::json::parse(lines(run.out).at(1)).at("table"), "OTHERS");
}

TEST_F(ImportOptionsTest, JsonTellsOfEachChangeAndCount) {
    DbfBuilder dbf =
        DbfBuilder()
            .field("LOCAL", 'C', 4)
            .field("BINARY", 'N', 8, 1)
            .field("WINDOW", 'D', 8)
            .field("A", 'L', 1)
            .field("A", 'C', 2)
            .field("A", 'N', 20, 0)
            .record({std::string("a\0b", 3), "1.55", "20070231", "x", "\x84", "12345678901234567890"}, 'x')
            .record({"c", "12,5", "", "", "", ""})
            .record_count(1);
    const Finished run =
        on(path, {"--json", "import", made("2nd.dbf", dbf), "--all-records", "--on-bad-value", "default"});
    ASSERT_EQ(run.status, 0) << run.err;
    auto said = nlohmann::json::parse(run.out);
    EXPECT_EQ(said.at("changes"), (nlohmann::json{"the table 2ND is no valid name: it becomes T_2ND",
                                                  "the field LOCAL is a reserved word: it becomes LOCAL_",
                                                  "the field BINARY is a reserved word: it becomes BINARY_",
                                                  "the field WINDOW is a reserved word: it becomes WINDOW_",
                                                  "the field A is there twice: it becomes A_2",
                                                  "the field A is there twice: it becomes A_3"}));
    EXPECT_EQ(said.at("notes"),
              (nlohmann::json{"its header counts 1 record, the file has 1 more",
                              "the field A_3 has more digits than a NUMERIC: it becomes DOUBLE PRECISION"}));
    const std::pair<const char*, int> counts[] = {{"records", 2},
                                                  {"odd_deletion_marks", 1},
                                                  {"impossible_dates", 1},
                                                  {"odd_logicals", 1},
                                                  {"rounded_numbers", 2},
                                                  {"texts_with_zero_bytes", 1},
                                                  {"defaulted_values", 1},
                                                  {"set_aside_records", 0},
                                                  {"deleted", 0},
                                                  {"texts_of_unknown_code_page", 1},
                                                  {"fields", 6}};
    for (const auto& [name, count] : counts) EXPECT_EQ(said.at(name), count) << name;
}

TEST_F(ImportOptionsTest, JsonTellsOfAPlanAndItsRefusalStaysOnStandardError) {
    const std::string dbf = made("people.dbf", people());
    auto plan = nlohmann::json::parse(on(path, {"--json", "import", dbf, "--dry-run"}).out);
    EXPECT_EQ(plan.at("columns"), (nlohmann::json{{{"column", "NAME"}, {"type", "CHAR(8)"}}}));
    EXPECT_EQ(plan.at("possible"), true);
    EXPECT_EQ(plan.at("drops_existing"), false);
    import(dbf);
    const Finished refused = on(path, {"--json", "import", dbf, "--dry-run"});
    EXPECT_EQ(refused.status, 1);
    plan = nlohmann::json::parse(refused.out);
    EXPECT_EQ(plan.at("possible"), false);
    EXPECT_NE(refused.err.find("the table PEOPLE is there already"), std::string::npos) << refused.err;
}

TEST_F(ImportOptionsTest, DeletedRecordsComeAlongAndAreCounted) {
    const Finished run = import(made("people.dbf", people()));
    EXPECT_EQ(lines(run.out).at(1), "1 deleted record came along; --skip-deleted leaves them out");
    EXPECT_EQ(exported("people"), (DbfRecords{{"Ana"}, {"Bob"}, {"Eva"}}));
}

TEST_F(ImportOptionsTest, DeletionMarksThatAreNoneAreCountedAndTheirRecordsComeIn) {
    const DbfBuilder dbf = people().record({"x"}, 'x').record({"nul"}, '\0').record({"end"}, '\x1A');
    const Finished run = import(made("people.dbf", dbf), {"--skip-deleted"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_NE(
        run.out.find("\n3 records with a deletion mark that is neither blank nor *: taken as not deleted\n"),
        std::string::npos)
        << run.out;
    EXPECT_EQ(exported("people"), (DbfRecords{{"Ana"}, {"Eva"}, {"x"}, {"nul"}, {"end"}}));
}

TEST_F(ImportOptionsTest, ADeletedRecordThatIsSetAsideDidNotComeAlong) {
    const DbfBuilder dbf =
        DbfBuilder().field("N", 'N', 4).record({"1"}, '*').record({"x"}, '*').record({"3"});
    const Finished run =
        import(made("n.dbf", dbf), {"--on-bad-value", "set-aside", "--set-aside", file("bad.dbf")});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(lines(run.out).at(1), "1 deleted record came along; --skip-deleted leaves them out");
}

TEST_F(ImportOptionsTest, TextsOfAnotherEncodingBecomeIso88591) {
    const std::string dbf = made("c.dbf", DbfBuilder()
                                              .field("NAME", 'C', 8)
                                              .field("N", 'N', 3)
                                              .record({"Jo\xC6o", "1"})     // ã
                                              .record({"\x87\x82", "2"}));  // çé
    const Finished run = import(dbf, {"--encoding-from", "CP850"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(exported("c"), (DbfRecords{{"Jo\xE3o", "1"}, {"\xE7\xE9", "2"}}));
}

TEST_F(ImportOptionsTest, ATextThatTheDatabaseCannotHoldIsNamedAndNothingIsMade) {
    const std::string dbf = made("c.dbf", DbfBuilder().field("NAME", 'C', 4).record({"ok"}).record({"\xB0"}));
    const Finished run = import(dbf, {"--encoding-from", "CP850"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "error: " + dbf +
                           " was not imported\n"
                           "  1 value would be refused by the database:\n"
                           "  record 2, field NAME: \"°   \": the text has a character outside ISO-8859-1\n"
                           "hint: --encoding CP850 is for a database whose texts are in CP850\n");
    EXPECT_EQ(call("istable('C')").out, ".F.\n");
}

TEST_F(ImportOptionsTest, ATextThatTheDatabaseCannotHoldGoesInWhereItsSetIsNamed) {
    const std::string dbf = made("c.dbf", DbfBuilder().field("NAME", 'C', 4).record({"\xC4\xE0"}));  // Да
    EXPECT_EQ(import(dbf, {"--encoding-from", "CP1251"}).status, 1);
    const Finished run = import(dbf, {"--encoding", "CP1251", "--encoding-from", "CP1251"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(exported("c"), (DbfRecords{{"\xC4\xE0"}}));
}

TEST_F(ImportOptionsTest, ATextThatTheDatabaseCannotHoldHasNoHintWhereItsSetIsNoneForADatabase) {
    const std::string dbf = made("c.dbf", DbfBuilder().field("NAME", 'C', 4).record({"\xE2\x82\xAC"}));  // €
    const Finished run = import(dbf, {"--encoding-from", "UTF-8"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err.find("hint:"), std::string::npos) << run.err;
    EXPECT_TRUE(run.err.ends_with(": the text has a character outside ISO-8859-1\n")) << run.err;
}

TEST_F(ImportOptionsTest, ATextThatIsNoneInItsEncodingIsNamed) {
    const std::string dbf = made("c.dbf", DbfBuilder().field("NAME", 'C', 4).record({"\xE2\x82"}));
    const Finished run = import(dbf, {"--encoding-from", "UTF-8"});
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(run.err.ends_with(": the text cannot be converted from UTF-8\n")) << run.err;
}

TEST_F(ImportOptionsTest, AnUnknownEncodingIsWrongUsage) {
    const Finished run = import(made("people.dbf", people()), {"--encoding-from", "KLINGON"});
    EXPECT_EQ(run.status, 2);
    EXPECT_TRUE(run.err.starts_with("error: there is no encoding KLINGON\n")) << run.err;
}

TEST_F(ImportOptionsTest, ATableThatIsThereIsReplacedOnlyWhenToldSo) {
    ASSERT_EQ(import(made("people.dbf", people())).status, 0);
    const std::string dbf = made("people.dbf", DbfBuilder().field("CITY", 'C', 8).record({"Cork"}));
    EXPECT_EQ(import(dbf).status, 1);
    const Finished refused = import(dbf, {"--drop-existing"}, "n\n");
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.err, "Drop the table PEOPLE with its 3 records? [y/N] error: " + dbf +
                               " was not imported\n  Nothing was changed.\n");
    EXPECT_EQ(exported("people").size(), 3U);
    EXPECT_EQ(import(dbf, {"--drop-existing"}, "y\n").status, 0);
    EXPECT_EQ(exported("people"), (DbfRecords{{"Cork"}}));
    EXPECT_EQ(import(file("people.dbf"), {"--drop-existing", "--yes"}).status, 0);
    EXPECT_EQ(exported("people"), (DbfRecords{{"Cork"}}));
}

TEST_F(ImportOptionsTest, EachFileIsAskedForInItsTurn) {
    ASSERT_EQ(import(made("a.dbf", people())).status, 0);
    ASSERT_EQ(import(made("b.dbf", people())).status, 0);
    const std::string other = made("b.dbf", DbfBuilder().field("CITY", 'C', 8).record({"Cork"}));
    const Finished run = import(file("a.dbf"), {other, "--drop-existing"}, "n\ny\n");
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(exported("a").size(), 3U);
    EXPECT_EQ(exported("b"), (DbfRecords{{"Cork"}}));
}

}  // namespace
}  // namespace zmfb::test
