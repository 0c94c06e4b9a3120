// What an import that cannot go on raises, and exactly what it leaves behind.
#include "host/latin1.h"
#include "tests/transfer/transfer_fixture.h"

namespace zmfb::test {
namespace {

using host::operator""_l1;

class ImportRefusal : public Transfer {
  protected:
    // What an import may leave behind.
    struct Left {
        std::size_t open_dbfs;
        bool table;
        bool external_table;
        bool data_file;
    };

    // Whether it is just that, for the DBF file and table T.
    void expect_left(const Left& wanted) {
        EXPECT_EQ(open_files(dbf("t")), wanted.open_dbfs);
        EXPECT_EQ(has_table("T"), wanted.table);
        EXPECT_EQ(has_table("EXT_T"), wanted.external_table);
        EXPECT_EQ(std::filesystem::exists(dat()), wanted.data_file);
        EXPECT_FALSE(std::filesystem::exists(dat()) && open_files(dat()) > 0);
    }

    void expect_refused(const DbfBuilder& file, const std::string& message, const Left& left) {
        EXPECT_FALSE(bring("t", file));
        EXPECT_EQ(messages(), std::vector<std::string>{message});
        expect_left(left);
    }

    [[nodiscard]] std::string no_dbf() const { return std::string("Não é um DBF; Arquivo: "_l1) + dbf("t"); }
};

constexpr std::size_t closed = 0;
constexpr std::size_t stays_open = 1;

DbfBuilder small() { return DbfBuilder().field("A", 'C', 3).record({"abc"}); }

TEST_F(ImportRefusal, EmptyNameAnswersFalseWithoutAWord) {
    log_at(10);
    connection();
    clear_log();
    for (const Value& name : {Value(), Value(""), Value("  ")})
        EXPECT_FALSE(call("bringdbf", name).logical());
    EXPECT_EQ(messages(), std::vector<std::string>{});
    EXPECT_EQ(log_text(), "");
}

TEST_F(ImportRefusal, MissingFileIsRaised) {
    EXPECT_FALSE(call("bringdbf", dbf("t")).logical());
    EXPECT_EQ(messages(),
              std::vector<std::string>{std::string("Arquivo não encontrado; Arquivo: "_l1) + dbf("t")});
}

TEST_F(ImportRefusal, FolderIsRaisedAsAMissingFile) {
    EXPECT_FALSE(call("bringdbf", folder().string()).logical());
    EXPECT_EQ(messages(), std::vector<std::string>{std::string("Arquivo não encontrado; Arquivo: "_l1) +
                                                   folder().string()});
}

TEST_F(ImportRefusal, MemoIsRaisedAndTheFileStaysOpen) {
    expect_refused(small().type(131), std::string("Arquivos .dbt e memo não suportados"_l1),
                   {stays_open, false, false, false});
}

TEST_F(ImportRefusal, OtherTypeIsRaisedAndTheFileIsClosed) {
    for (const int type : {0, 2, 4, 48, 49, 67, 130, 132, 139, 245, 255}) {
        forget_raised();
        expect_refused(small().type(type), no_dbf(), {closed, false, false, false});
    }
}

TEST_F(ImportRefusal, FileCutWithinItsHeaderIsNoDbf) {
    const std::size_t descriptors_end = 32 + 32;
    for (std::size_t size = 0; size < descriptors_end; ++size) {
        SCOPED_TRACE(size);
        forget_raised();
        EXPECT_FALSE(bring("t", small().cut(size)));
        EXPECT_EQ(messages(), std::vector<std::string>{no_dbf()});
    }
    expect_left({closed, false, false, false});
}

TEST_F(ImportRefusal, MemoFileCutWithinItsHeaderIsStillOneOfMemos) {
    for (const std::size_t size :
         {std::size_t{1}, std::size_t{15}, std::size_t{16}, std::size_t{31}, std::size_t{63}}) {
        SCOPED_TRACE(size);
        forget_raised();
        EXPECT_FALSE(bring("t", small().type(131).cut(size)));
        EXPECT_EQ(messages(),
                  std::vector<std::string>{std::string("Arquivos .dbt e memo não suportados"_l1)});
    }
}

TEST_F(ImportRefusal, HeaderLongerThanTheFileIsNoDbf) {
    for (const int length : {193, 1000, 65535}) {
        forget_raised();
        expect_refused(small().header_length(length), no_dbf(), {closed, false, false, false});
    }
}

TEST_F(ImportRefusal, RecordsTooShortForTheirFieldsAreNoDbf) {
    for (const int length : {0, 1, 2, 3}) {
        forget_raised();
        expect_refused(small().record_length(length), no_dbf(), {closed, false, false, false});
    }
}

TEST_F(ImportRefusal, TableThatExistsIsLoggedAndRaisedAndTheFileStaysOpen) {
    execute("create table T (A char(3))");
    execute("insert into T values ('old')");
    log_at(4);
    expect_refused(small(), std::string("A tabela já existe; Tabela: T"_l1),
                   {stays_open, true, false, false});
    EXPECT_EQ(log_lines().back(), (LogEntry{4, "[ERROR] Table already exists. Table: T"}));
    EXPECT_EQ(rows("select A from T"), (Rows{{"old"}}));
}

TEST_F(ImportRefusal, FieldTypeThatIsNotSupportedIsRaisedByTheTablesCreation) {
    expect_refused(DbfBuilder().field("A", 'C', 3).field("NOTES", 'm', 10).record({"abc", ""}),
                   "FieldType not supported; Field: NOTES Type: M", {closed, false, false, false});
}

TEST_F(ImportRefusal, EveryFieldTypeThatIsNotSupportedIsRaised) {
    EXPECT_FALSE(bring("t", DbfBuilder().field("A", 'F', 3).field("B", 'I', 4).field("C", '\0', 1)));
    using namespace std::string_literals;
    EXPECT_EQ(messages(), (std::vector<std::string>{"FieldType not supported; Field: A Type: F",
                                                    "FieldType not supported; Field: B Type: I",
                                                    "FieldType not supported; Field: C Type: \0"s}));
    expect_left({closed, false, false, false});
}

TEST_F(ImportRefusal, TableThatTheDatabaseRefusesIsRaisedAndLeavesNothing) {
    struct Case {
        const char* what;
        DbfBuilder file;
        const char* error;
    };
    const Case cases[] = {
        {"two fields of one name", DbfBuilder().field("A", 'C', 3).field("a", 'C', 3), "SQLCODE=-607 ("},
        {"a reserved word", DbfBuilder().field("TIME", 'C', 3), "SQLCODE=-104 ("},
        {"a name with a blank", DbfBuilder().field("A B", 'C', 3), "SQLCODE=-104 ("},
        {"a name with a quote", DbfBuilder().field("A'B", 'C', 3), "SQLCODE=-901 ("},
        {"no name", DbfBuilder().field("", 'C', 3), "SQLCODE=-104 ("},
        {"a number beyond 18 digits", DbfBuilder().field("A", 'N', 19, 4), "SQLCODE=-842 ("},
        {"more decimals than digits", DbfBuilder().field("A", 'N', 3, 5), "SQLCODE=-842 ("},
        {"a number of length 0", DbfBuilder().field("A", 'N', 0), "SQLCODE=-842 ("},
        {"a text of length 0", DbfBuilder().field("A", 'C', 0), "SQLCODE=-842 ("},
        {"a text beyond the engine's", DbfBuilder().field("A", 'C', 32768), "SQLCODE=-842 ("},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        forget_raised();
        EXPECT_FALSE(bring("t", c.file));
        ASSERT_EQ(messages().size(), 1U);
        EXPECT_TRUE(
            messages()[0].starts_with("Error on creating Table; FB Error: [ERROR] " + std::string(c.error)))
            << messages()[0];
        expect_left({closed, false, false, false});
    }
}

TEST_F(ImportRefusal, DataFileThatCannotBeMadeIsRaisedAndTheTableAndTheOpenFileStay) {
    call("setfullpathdatfile", file("no/such/folder/data.dat"));
    expect_refused(small(), std::string("Impossível criar arq temporário para importação"_l1),
                   {stays_open, true, false, false});
    EXPECT_EQ(rows("select count(*) from T"), (Rows{{"0"}}));
}

TEST_F(ImportRefusal, ExternalTableThatExistsIsRaisedAndEverythingStays) {
    execute("create table EXT_T (A char(3))");
    expect_refused(small(), std::string("Uma tabela externa com este nome já existe!"_l1),
                   {stays_open, true, true, true});
    EXPECT_EQ(rows("select count(*) from T"), (Rows{{"0"}}));
    EXPECT_EQ(read_file(dat()), "abc");
}

TEST_F(ImportRefusal, ExternalTableThatTheDatabaseRefusesIsRaisedByItsCreation) {
    EXPECT_FALSE(bring("t", DbfBuilder().field("A", 'C', 3).field("FLAG", 'L', 0).record({"abc", ""})));
    ASSERT_EQ(messages().size(), 1U);
    EXPECT_TRUE(
        messages()[0].starts_with("Error on creating External Table; FB Error: [ERROR] SQLCODE=-842 ("))
        << messages()[0];
    expect_left({stays_open, true, false, true});
}

TEST_F(ImportRefusal, TriggerThatCannotBeMadeIsNotRaisedAndTheExternalTableStays) {
    execute("create table OTHER (A char(3))");
    execute("create trigger T_T_NULLDATES for OTHER before insert as begin end");
    log_at(1);
    EXPECT_FALSE(bring("t", DbfBuilder().field("WHEN_", 'D', 8).record({"20070301"})));
    EXPECT_EQ(messages(), std::vector<std::string>{});
    ASSERT_EQ(log_lines().size(), 1U);
    EXPECT_TRUE(log_lines()[0].text.starts_with("[ERROR] SQLCODE=-607 (")) << log_lines()[0].text;
    expect_left({stays_open, true, true, true});
    EXPECT_TRUE(has_trigger("T_T_NULLDATES"));
    EXPECT_EQ(rows("select count(*) from T"), (Rows{{"0"}}));
}

TEST_F(ImportRefusal, CopyThatTheDatabaseRefusesIsRaisedAndCleanedUp) {
    if (const std::string reason = why_no_external_files(); !reason.empty()) GTEST_SKIP() << reason;
    for (const char* number : {"***", "abc", "1 2"}) {
        SCOPED_TRACE(number);
        forget_raised();
        log_at(1);
        clear_log();
        EXPECT_FALSE(bring("t", DbfBuilder()
                                    .field("NUMBER_", 'N', 3)
                                    .field("WHEN_", 'D', 8)
                                    .record({"1", ""})
                                    .record({number, "20070301"})));
        ASSERT_EQ(log_lines().size(), 1U);
        const std::string error = log_lines()[0].text;
        EXPECT_TRUE(error.starts_with("[ERROR] SQLCODE=-413 (")) << error;
        EXPECT_EQ(messages(), std::vector<std::string>{
                                  std::string("Erro durante a transferência dos dados da tabela externa para "
                                              "tabela oficial; FB Error: "_l1) +
                                  error});
        expect_left({closed, true, false, true});
        EXPECT_FALSE(has_trigger("T_T_NULLDATES"));
        EXPECT_EQ(rows("select count(*) from T"), (Rows{{"0"}}));
        call("droptable", "T");
    }
}

TEST_F(ImportRefusal, FileWithoutFieldsIsRaisedByTheCopyAndLeavesNothing) {
    EXPECT_FALSE(bring("t", DbfBuilder()));
    ASSERT_EQ(messages().size(), 2U);
    EXPECT_TRUE(
        messages()[0].starts_with("Erro durante a transferência dos dados da tabela externa para tabela "
                                  "oficial; FB Error: [ERROR] SQLCODE=-204 ("_l1))
        << messages()[0];
    EXPECT_TRUE(
        messages()[1].starts_with("Impossível eliminar a Tabela: EXT_T; FB Error: [ERROR] SQLCODE="_l1))
        << messages()[1];
    expect_left({closed, false, false, true});
}

TEST_F(ImportRefusal, SecondImportAfterARefusedOneSucceedsWhenTheTableIsDropped) {
    if (const std::string reason = why_no_external_files(); !reason.empty()) GTEST_SKIP() << reason;
    EXPECT_FALSE(bring("t", DbfBuilder().field("A", 'N', 3).record({"***"})));
    messages();
    call("droptable", "t");
    EXPECT_TRUE(bring("t", DbfBuilder().field("A", 'N', 3).record({"123"})));
    EXPECT_EQ(rows("select A from T"), (Rows{{"123"}}));
}

TEST_F(ImportRefusal, HeaderOfAnyBytesIsRefusedOrImportedButNeverHarms) {
    const std::string sound = small().bytes();
    for (std::size_t place = 4; place < 64; ++place) {
        const bool is_read = place < 12 || (place >= 32 && place < 50);
        if (!is_read) continue;
        for (const int byte : {0, 32, 255}) {
            std::string broken = sound;
            broken[place] = static_cast<char>(byte);
            forget_raised();
            const bool brought = call("bringdbf", write_file("t.dbf", broken)).logical();
            EXPECT_EQ(brought, messages().empty()) << place << " " << byte;
            if (has_table("T")) call("droptable", "T");
        }
    }
}

}  // namespace
}  // namespace zmfb::test
