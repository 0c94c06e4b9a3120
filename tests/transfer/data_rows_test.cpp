// A transfer counts: the rows that the engine has in the data file against the records of the program.
#include <functional>

#include "sql/client.h"
#include "tests/transfer/transfer_fixture.h"

namespace zmfb::test {
namespace {

namespace fs = std::filesystem;

// The engine of another host, which has a file of its own at the place of the data file. In use while it
// lives.
class EngineElsewhere : public sql::Client {
  public:
    EngineElsewhere(std::string path, std::string own)
        : path_(std::move(path)), own_(std::move(own)), before_(sql::set_client(this)) {}
    ~EngineElsewhere() override { sql::set_client(before_); }

    ISC_STATUS execute_immediate(ISC_STATUS* status, isc_db_handle* database, isc_tr_handle* transaction,
                                 const char* text) override {
        std::string statement = text;
        const std::size_t at = statement.find("EXTERNAL FILE '" + path_ + "'");
        if (at != std::string::npos) statement.replace(statement.find('\'', at) + 1, path_.size(), own_);
        return Client::execute_immediate(status, database, transaction, statement.c_str());
    }

  private:
    std::string path_;
    std::string own_;
    sql::Client* before_;
};

// What happens just before the engine copies the rows, or when it has committed them. In use while it lives.
class AroundTheCopy : public sql::Client {
  public:
    using Act = std::function<void()>;

    explicit AroundTheCopy(Act before, Act after = {})
        : first_(std::move(before)), last_(std::move(after)), before_(sql::set_client(this)) {}
    ~AroundTheCopy() override { sql::set_client(before_); }

    ISC_STATUS execute_immediate(ISC_STATUS* status, isc_db_handle* database, isc_tr_handle* transaction,
                                 const char* text) override {
        copying_ = std::string_view(text).starts_with("INSERT INTO ");
        if (copying_ && first_) first_();
        return Client::execute_immediate(status, database, transaction, text);
    }
    ISC_STATUS commit_transaction(ISC_STATUS* status, isc_tr_handle* transaction) override {
        const ISC_STATUS outcome = Client::commit_transaction(status, transaction);
        if (std::exchange(copying_, false) && last_) last_();
        return outcome;
    }

  private:
    Act first_;
    Act last_;
    bool copying_ = false;
    sql::Client* before_;
};

class DataRows : public TransferOfRows {
  protected:
    DataRows() : here_(folder()) {}

    [[nodiscard]] std::string elsewhere() const { return file("elsewhere.dat"); }
    bool bring() {
        const EngineElsewhere other(dat(), elsewhere());
        return call("bringdbf", dbf("t")).logical();
    }
    bool exile() {
        const EngineElsewhere other(dat(), elsewhere());
        return call("exiletable", "T").logical();
    }
    void make_table(const std::vector<std::string>& texts) {
        call("createtable", "T", host::array_of(host::array_of("A", "C", 3, 0)));
        for (const std::string& text : texts) execute("insert into T values ('" + text + "', null, 0)");
    }
    [[nodiscard]] std::string differ(const std::string& table, int rows, int records) const {
        return "Rows and records differ; Table: " + table + " Rows: " + std::to_string(rows) +
               " Records: " + std::to_string(records) + ";Data file: " + dat();
    }

  private:
    CurrentFolder here_;
};

TEST_F(DataRows, OfAnotherFileAreNotImported) {
    DbfBuilder().field("A", 'C', 3).field("BORN", 'D', 8).record({"abc", "20070301"}).write(dbf("t"));
    struct Case {
        int rows;
        std::string content;
    };
    for (const auto& [rows_there, content] :
         {Case{0, ""}, Case{0, "xyz2007"}, Case{2, "xyz2007-03-01uvw2007-03-02"}}) {
        SCOPED_TRACE(content);
        write_file("elsewhere.dat", content);
        log_at(4);
        clear_log();
        forget_raised();
        EXPECT_FALSE(bring());
        EXPECT_EQ(messages(), std::vector<std::string>{differ("EXT_T", rows_there, 1)});
        EXPECT_EQ(log_lines().back(), (LogEntry{4, "[ERROR] Rows and records differ. Table: EXT_T Rows: " +
                                                       std::to_string(rows_there) + " Records: 1"}));
        EXPECT_EQ(rows("select count(*) from T"), (Rows{{"0"}}));
        EXPECT_FALSE(has_table("EXT_T"));
        EXPECT_FALSE(has_trigger("T_T_NULLDATES"));
        EXPECT_EQ(open_files(dbf("t")), 0U);
        EXPECT_EQ(read_file(dat()), "abc2007-03-01");
        call("droptable", "T");
    }
}

TEST_F(DataRows, OfAProgramThatTakesTheFileBetweenTheCountAndTheCopyAreTold) {
    DbfBuilder().field("A", 'C', 3).record({"abc"}).write(dbf("t"));
    const AroundTheCopy other([&] { write_file("data.dat", "xyzuvw"); });
    EXPECT_FALSE(call("bringdbf", dbf("t")).logical());
    EXPECT_EQ(messages(), std::vector<std::string>{
                              "Rows and records differ; Table: T Rows: 2 Records: 1;Data file: " + dat()});
    EXPECT_FALSE(has_table("EXT_T"));
}

TEST_F(DataRows, OfAnotherFileAreNotExported) {
    make_table({"abc", "def"});
    for (const char* content : {"", "xyz\nuvw\n"}) {
        SCOPED_TRACE(content);
        write_file("elsewhere.dat", content);
        forget_raised();
        EXPECT_FALSE(exile());
        EXPECT_EQ(messages(), std::vector<std::string>{differ("T", 2, 0)});
        EXPECT_FALSE(has_table("EXT_T"));
        EXPECT_EQ(open_files("T.dbf"), 0U);
        EXPECT_EQ(rows("select A from T"), (Rows{{"abc"}, {"def"}}));
    }
}

TEST_F(DataRows, ThatTheFileLacksOrHasBesideAreNoExport) {
    const auto lose_one = [&] { fs::resize_file(dat(), 4); };
    struct Case {
        std::function<void()> meanwhile;
        int records;
    };
    for (const auto& [meanwhile, records] :
         {Case{lose_one, 1}, Case{[&] { write_file("data.dat", "abc\ndef\nghi\n"); }, 3},
          // A count of none may be one that failed.
          Case{[&] {
                   lose_one();
                   execute("delete from T");
               },
               1}}) {
        make_table({"abc", "def"});
        forget_raised();
        {
            const AroundTheCopy other({}, meanwhile);
            EXPECT_FALSE(call("exiletable", "T").logical());
        }
        EXPECT_EQ(messages(), std::vector<std::string>{differ("T", 2, records)});
        call("droptable", "T");
    }
}

TEST_F(DataRows, ThatComeOrGoWhileATableIsExportedAreNoLoss) {
    make_table({"abc", "def"});
    for (const char* change : {"insert into T values ('new', null, 0)", "delete from T where A = 'abc'"}) {
        const AroundTheCopy other([&] { execute(change); });
        EXPECT_TRUE(call("exiletable", "T").logical()) << change;
    }
    EXPECT_EQ(read_file(dat()), "def\nnew\n");
}

TEST_F(DataRows, ThatCannotBeCountedAreNoneAtAll) {
    DbfBuilder().field("A", 'C', 3).record({"abc"}).write(dbf("t"));
    fs::create_directory(elsewhere());
    EXPECT_FALSE(bring());
    EXPECT_EQ(messages(), std::vector<std::string>{differ("EXT_T", 0, 1)});
    EXPECT_EQ(rows("select count(*) from T"), (Rows{{"0"}}));
}

TEST_F(DataRows, OfNothingAreAsManyAsItsRecords) {
    DbfBuilder().field("A", 'C', 3).write(dbf("t"));
    EXPECT_TRUE(bring());
    EXPECT_TRUE(exile());
}

}  // namespace
}  // namespace zmfb::test
