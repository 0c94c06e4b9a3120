// Clearing the system tables of everybody's rows.
#include "tests/locks/locks_test.h"

namespace zmfb::test {
namespace {

const LogEntry cleared = {
    0,
    "[WARN] System Tables were cleared. This is a DANGEROUS procedure. Make sure you were the only "
    "person using the system. Unexpected results could happen."};
const LogEntry failed = {0, "[ERROR] Failed clearing System Tables. Try again."};

class Clear : public Locks {
  protected:
    void fill() {
        zmFBConn other = connect();
        EXPECT_TRUE(yes("settableusedbyarea", true, "CUSTOMER", a, true));
        EXPECT_TRUE(other.call("settableusedbyarea", true, "CUSTOMER", b, true).logical());
        EXPECT_TRUE(yes("setrecordaslocked", "CUSTOMER", a, "1"));
        EXPECT_TRUE(other.call("setrecordaslocked", "CUSTOMER", b, "2").logical());
        EXPECT_TRUE(yes("settableaslocked", "ORDERS", a));
        EXPECT_TRUE(other.call("settableaslocked", "ITEMS", b).logical());
    }
};

TEST_F(Clear, RowsOfEverybodyAreRemoved) {
    fill();
    clear_log();
    EXPECT_TRUE(yes("clearsystemtables"));
    EXPECT_EQ(registrations(), Rows{});
    EXPECT_EQ(table_locks(), Rows{});
    EXPECT_EQ(record_locks(), Rows{});
    EXPECT_EQ(log_lines(), std::vector<LogEntry>{cleared});
}

TEST_F(Clear, StatementsComeInTheOrderOfTheTables) {
    EXPECT_EQ(sent_by("clearsystemtables"),
              (Statements{"DELETE FROM RDDSYS_OPN", "DELETE FROM RDDSYS_FLK", "DELETE FROM RDDSYS_RLK"}));
}

TEST_F(Clear, EmptyTablesAreClearedToo) { EXPECT_TRUE(yes("clearsystemtables")); }

TEST_F(Clear, OpenAliasIsRefusedAndNothingIsRemoved) {
    fill();
    const Rows opens = registrations(), files = table_locks(), records = record_locks();
    call("announcealias", "CUST");
    EXPECT_EQ(sent_by("clearsystemtables"), Statements{});
    EXPECT_EQ(log_lines(),
              (std::vector<LogEntry>{{0, "[ERROR] Impossible to clear System Tables with opened tables"}}));
    EXPECT_EQ(raised(), (std::vector<std::string>{
                            "[FBCONN Error];[ERROR] Impossible to clear System Tables with opened tables"}));
    EXPECT_FALSE(yes("clearsystemtables"));
    EXPECT_EQ(registrations(), opens);
    EXPECT_EQ(table_locks(), files);
    EXPECT_EQ(record_locks(), records);
}

TEST_F(Clear, LastAliasRemovedMakesWay) {
    call("announcealias", "CUST");
    call("removealias", "CUST");
    EXPECT_TRUE(yes("clearsystemtables"));
}

TEST_F(Clear, AliasOfAnotherConnectionIsNotLookedAt) {
    zmFBConn other = connect();
    other.call("announcealias", "CUST");
    EXPECT_TRUE(yes("clearsystemtables"));
}

TEST_F(Clear, FailedRegistrationsAnswerFalseThoughTheLocksAreRemoved) {
    fill();
    drop("RDDSYS_OPN");
    clear_log();
    EXPECT_FALSE(yes("clearsystemtables"));
    EXPECT_EQ(log_lines(), std::vector<LogEntry>{failed});
    EXPECT_EQ(table_locks(), Rows{});
    EXPECT_EQ(record_locks(), Rows{});
    EXPECT_EQ(raised().size(), 1u);
}

TEST_F(Clear, FailedLocksGoUnreported) {
    fill();
    drop("RDDSYS_FLK");
    clear_log();
    EXPECT_TRUE(yes("clearsystemtables"));
    EXPECT_EQ(log_lines(), std::vector<LogEntry>{cleared});
    EXPECT_EQ(registrations(), Rows{});
    EXPECT_EQ(record_locks(), Rows{});
    EXPECT_EQ(raised().size(), 1u) << "by deleteallrecords";
}

}  // namespace
}  // namespace zmfb::test
