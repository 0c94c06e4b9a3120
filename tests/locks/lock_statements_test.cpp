// The statements of the locks, byte for byte and in their order: which question is asked first, where it
// ends.
#include "tests/locks/locks_test.h"

namespace zmfb::test {
namespace {

// What every statement below is about: table CUSTOMER, area Ab, record 17.
const std::string record_holder =
    "SELECT RLK_AREAID FROM RDDSYS_RLK WHERE RLK_TABLE = 'CUSTOMER' AND RLK_RECNO = 17";
const std::string table_holder = "SELECT FLK_AREAID FROM RDDSYS_FLK WHERE FLK_TABLE = 'CUSTOMER' ";
const std::string own_records =
    "SELECT COUNT(*) FROM RDDSYS_RLK WHERE RLK_TABLE = 'CUSTOMER' AND RLK_AREAID = 'Ab' ";
const std::string records_of_others =
    "SELECT COUNT(*) FROM RDDSYS_RLK WHERE RLK_TABLE = 'CUSTOMER' AND RLK_AREAID <> '' AND RLK_AREAID <> "
    "'Ab' ";
const std::string insert_record =
    "INSERT INTO RDDSYS_RLK (RLK_TABLE, RLK_RECNO, RLK_AREAID) VALUES('CUSTOMER', 17, 'Ab') ";
const std::string delete_record = "DELETE FROM RDDSYS_RLK WHERE RLK_TABLE = 'CUSTOMER' AND RLK_RECNO = 17 ";
const std::string delete_own_records =
    "DELETE FROM RDDSYS_RLK WHERE RLK_TABLE = 'CUSTOMER' AND RLK_AREAID = 'Ab' ";
const std::string insert_table = "INSERT INTO RDDSYS_FLK (FLK_TABLE, FLK_AREAID) VALUES('CUSTOMER', 'Ab')";
const std::string delete_table = "DELETE FROM RDDSYS_FLK WHERE FLK_TABLE = 'CUSTOMER' AND FLK_AREAID = 'Ab'";

class LockStatements : public Locks {
  protected:
    Statements lock_record() { return sent_by("setrecordaslocked", "Customer", "Ab", "17"); }
    Statements unlock_record() { return sent_by("setrecordasunlocked", "Customer", "Ab", "17"); }
    Statements lock_table() { return sent_by("settableaslocked", "Customer", "Ab"); }
    Statements unlock_table() { return sent_by("settableasunlocked", "Customer", "Ab"); }
};

TEST_F(LockStatements, OfTheQuestionsAboutRecords) {
    const Statements holder{record_holder};
    EXPECT_EQ(sent_by("getrlockareaid", "Customer", "17"), holder);
    EXPECT_EQ(sent_by("isrecordlocked", "Customer", "Ab", "17"), holder);
    EXPECT_EQ(sent_by("isrecordlockedbyuser", "Customer", "Ab", "17"), holder);
    EXPECT_EQ(sent_by("isrecordlockedbyanotheruser", "Customer", "Ab", "17"), holder);
    EXPECT_EQ(sent_by("existsuserrlocks", "Customer", "Ab"), Statements{own_records});
    EXPECT_EQ(sent_by("existsanotheruserrlocks", "Customer", "Ab"), Statements{records_of_others});
    EXPECT_EQ(
        sent_by("getlockedrecords", "Customer", "Ab"),
        Statements{"SELECT RLK_RECNO FROM RDDSYS_RLK WHERE RLK_TABLE = 'CUSTOMER' AND RLK_AREAID = 'Ab'"});
}

TEST_F(LockStatements, OfTheQuestionsAboutTables) {
    const Statements holder{table_holder};
    EXPECT_EQ(sent_by("getflockareaid", "Customer"), holder);
    EXPECT_EQ(sent_by("istablelockedbyuser", "Customer", "Ab"), holder);
    EXPECT_EQ(sent_by("existsanotheruserflock", "Customer", "Ab"), holder);
    EXPECT_EQ(sent_by("getlockedtables"), Statements{"SELECT FLK_TABLE, FLK_AREAID FROM RDDSYS_FLK "});
}

TEST_F(LockStatements, OfARecordLockThatIsGranted) {
    EXPECT_EQ(lock_record(), (Statements{record_holder, table_holder, record_holder, insert_record}));
}

TEST_F(LockStatements, OfARecordLockThatTheAreaHoldsAlready) {
    lock_record();
    EXPECT_EQ(lock_record(), (Statements{record_holder, table_holder, record_holder}));
}

TEST_F(LockStatements, OfARecordLockThatAnotherAreaHolds) {
    call("setrecordaslocked", "CUSTOMER", "other", "17");
    EXPECT_EQ(lock_record(), Statements{record_holder});
}

TEST_F(LockStatements, OfARecordLockUnderTheTableLockOfAnother) {
    call("settableaslocked", "CUSTOMER", "other");
    EXPECT_EQ(lock_record(), (Statements{record_holder, table_holder}));
}

TEST_F(LockStatements, OfUnlockingARecord) {
    EXPECT_EQ(unlock_record(), Statements{record_holder}) << "not held";
    lock_record();
    EXPECT_EQ(unlock_record(), (Statements{record_holder, delete_record}));
}

TEST_F(LockStatements, OfUnlockingAllRecords) {
    EXPECT_EQ(sent_by("unlockallrecords", "Customer", "Ab"), Statements{own_records}) << "none held";
    lock_record();
    EXPECT_EQ(sent_by("unlockallrecords", "Customer", "Ab"), (Statements{own_records, delete_own_records}));
}

TEST_F(LockStatements, OfATableLockThatIsGranted) {
    EXPECT_EQ(lock_table(), (Statements{records_of_others, table_holder, table_holder, insert_table}));
}

TEST_F(LockStatements, OfATableLockThatTheAreaHoldsAlready) {
    lock_table();
    EXPECT_EQ(lock_table(), (Statements{records_of_others, table_holder, table_holder}));
}

TEST_F(LockStatements, OfATableLockOverRecordsOfAnother) {
    call("setrecordaslocked", "CUSTOMER", "other", "1");
    EXPECT_EQ(lock_table(), Statements{records_of_others});
}

TEST_F(LockStatements, OfATableLockThatAnotherAreaHolds) {
    call("settableaslocked", "CUSTOMER", "other");
    EXPECT_EQ(lock_table(), (Statements{records_of_others, table_holder}));
}

TEST_F(LockStatements, OfUnlockingATable) {
    EXPECT_EQ(unlock_table(), Statements{table_holder}) << "not held";
    lock_table();
    EXPECT_EQ(unlock_table(), (Statements{table_holder, delete_table}));
}

TEST_F(LockStatements, OfReleasingATable) {
    EXPECT_EQ(sent_by("releaselocks", "Customer"),
              (Statements{"DELETE FROM RDDSYS_RLK WHERE RLK_TABLE = 'CUSTOMER'",
                          "DELETE FROM RDDSYS_FLK WHERE FLK_TABLE = 'CUSTOMER'"}));
}

TEST_F(LockStatements, ValuesThatHoldAPlaceholderOfALaterPairAreFilledToo) {
    EXPECT_EQ(sent_by("setrecordaslocked", "@@RECNO@@AREAID", "@@TABLENAME", "17").back(),
              "INSERT INTO RDDSYS_RLK (RLK_TABLE, RLK_RECNO, RLK_AREAID) "
              "VALUES('17@@TABLENAME', 17, '@@TABLENAME') ");
    EXPECT_EQ(
        sent_by("settableaslocked", "@@AREAID", "@@FCK_COL_AREAID").back(),
        "INSERT INTO RDDSYS_FLK (FLK_TABLE, FLK_AREAID) VALUES('@@FCK_COL_AREAID', '@@FCK_COL_AREAID')");
}

}  // namespace
}  // namespace zmfb::test
