// How often an import goes to the server, whose answers take their time over a network.

#include "tests/support/database.h"
#include "tests/support/dbf_builder.h"
#include "tests/support/environment.h"
#include "tests/support/faulty_client.h"
#include "tool/import/run.h"

namespace zmfb::test {
namespace {

class ImportCalls : public Database {
  protected:
    ImportCalls() : session_(options()) { session_.connection(); }

    // The calls that wait for an answer.
    int calls_of_import(const std::string& name, const DbfBuilder& dbf) {
        const std::string path = file(name);
        dbf.write(path);
        const FaultyClient client;
        tool::ImportedFile told;
        ::testing::internal::CaptureStdout();
        tool::import_file(session_, {}, path, so_far_, told);
        ::testing::internal::GetCapturedStdout();
        int calls = 0;
        for (const ClientCall call :
             {ClientCall::start_transaction, ClientCall::commit_transaction, ClientCall::rollback_transaction,
              ClientCall::prepare, ClientCall::open, ClientCall::execute, ClientCall::affected_records,
              ClientCall::execute_immediate})
            calls += client.count(call);
        return calls;
    }

  private:
    [[nodiscard]] tool::Options options() const {
        tool::Options given;
        given.database = database();
        given.user = sysdba;
        given.password = sysdba_password;
        return given;
    }

    tool::Session session_;
    tool::ImportedSoFar so_far_{"", {}};
};

TEST_F(ImportCalls, AskTheEngineOnceForWhatIsTheSameForAllFiles) {
    DbfBuilder dbf;
    dbf.field("NAME", 'C', 10).field("CREDIT", 'N', 10, 2).record({"Ana", "1.50"});
    const int first = calls_of_import("first_one.dbf", dbf), second = calls_of_import("next_one.dbf", dbf);
    EXPECT_EQ(rows("select trim(name), credit from next_one"), (Rows{{"Ana", "1.50"}}));
    EXPECT_LE(second, 60);  // 50 on Firebird 3.0, 56 on 5.0; 86 when each file asks for itself
    EXPECT_GE(first, second + 5);
}

TEST_F(ImportCalls, OfATableWithManyColumnsAreHardlyMoreThanOfOneWithFew) {
    DbfBuilder few, wide;
    few.field("A", 'N', 8).record({"1"});
    std::vector<std::string> values;
    for (int i = 1; i <= 1000; ++i) {
        wide.field("F" + std::to_string(i), 'N', 8);
        values.push_back(std::to_string(i));
    }
    for (int i = 0; i < 40; ++i) wide.record(values);
    calls_of_import("first_one.dbf", few);
    const int calls = calls_of_import("few.dbf", few), wide_calls = calls_of_import("wide.dbf", wide);
    EXPECT_EQ(rows("select count(*), sum(f1000) from wide"), (Rows{{"40", "40000"}}));
    EXPECT_EQ(rows("select count(*) from rdb$relation_fields where rdb$relation_name = 'WIDE' and "
                   "rdb$description = 'NUMERIC(8,0)'"),
              (Rows{{"1000"}}));
    EXPECT_LE(wide_calls, calls + 40);
}

}  // namespace
}  // namespace zmfb::test
