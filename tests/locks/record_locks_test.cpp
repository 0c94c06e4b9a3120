// Locking and unlocking records.
#include "host/compare.h"
#include "tests/locks/locks_test.h"

namespace zmfb::test {
namespace {

class RecordLocks : public Locks {
  protected:
    bool lock(const Value& area, const Value& recno) {
        return yes("setrecordaslocked", "CUSTOMER", area, recno);
    }
    bool unlock(const Value& area, const Value& recno) {
        return yes("setrecordasunlocked", "CUSTOMER", area, recno);
    }
};

TEST_F(RecordLocks, LockingTwiceFromOneAreaAnswersTrueTwiceAndLeavesOneRow) {
    EXPECT_TRUE(lock(a, "1"));
    EXPECT_TRUE(lock(a, "1"));
    EXPECT_EQ(record_locks(), (Rows{{"CUSTOMER", "1", a}}));
}

TEST_F(RecordLocks, RecordOfAnotherAreaIsRefusedUntilItIsUnlocked) {
    zmFBConn other = connect();
    EXPECT_TRUE(lock(a, "7"));
    EXPECT_FALSE(other.call("setrecordaslocked", "CUSTOMER", b, "7").logical());
    EXPECT_TRUE(unlock(a, "7"));
    EXPECT_TRUE(other.call("setrecordaslocked", "CUSTOMER", b, "7").logical());
    EXPECT_FALSE(lock(a, "7"));
    EXPECT_EQ(record_locks(), (Rows{{"CUSTOMER", "7", b}}));
}

TEST_F(RecordLocks, AreasHoldDifferentRecordsAndTablesSideBySide) {
    EXPECT_TRUE(lock(a, "1"));
    EXPECT_TRUE(lock(b, "2"));
    EXPECT_TRUE(yes("setrecordaslocked", "ORDERS", b, "1"));
    EXPECT_EQ(record_locks(), (Rows{{"CUSTOMER", "1", a}, {"CUSTOMER", "2", b}, {"ORDERS", "1", b}}));
}

TEST_F(RecordLocks, TableLockOfAnotherAreaRefusesEveryRecord) {
    EXPECT_TRUE(yes("settableaslocked", "CUSTOMER", b));
    EXPECT_FALSE(lock(a, "1"));
    EXPECT_TRUE(yes("setrecordaslocked", "ORDERS", a, "1"));
    EXPECT_TRUE(yes("settableasunlocked", "CUSTOMER", b));
    EXPECT_TRUE(lock(a, "1"));
}

TEST_F(RecordLocks, OwnTableLockIsNoHindrance) {
    EXPECT_TRUE(yes("settableaslocked", "CUSTOMER", a));
    EXPECT_TRUE(lock(a, "1"));
}

TEST_F(RecordLocks, TableNamesAreMatchedUpperCasedAndAreaIdsAsTheyAre) {
    EXPECT_TRUE(yes("setrecordaslocked", "Customer", "X", "1"));
    EXPECT_TRUE(yes("isrecordlockedbyuser", "cUSTOMER", "X", "1"));
    EXPECT_FALSE(yes("isrecordlockedbyuser", "CUSTOMER", "x", "1"));
    EXPECT_TRUE(yes("isrecordlockedbyanotheruser", "CUSTOMER", "x", "1"));
}

TEST_F(RecordLocks, QuestionsAboutAHeldRecord) {
    EXPECT_TRUE(lock(a, "1"));
    EXPECT_TRUE(yes("isrecordlocked", "CUSTOMER", a, "1"));
    EXPECT_TRUE(yes("isrecordlockedbyuser", "CUSTOMER", a, "1"));
    EXPECT_FALSE(yes("isrecordlockedbyuser", "CUSTOMER", b, "1"));
    EXPECT_FALSE(yes("isrecordlockedbyanotheruser", "CUSTOMER", a, "1"));
    EXPECT_TRUE(yes("isrecordlockedbyanotheruser", "CUSTOMER", b, "1"));
    EXPECT_EQ(call("getrlockareaid", "CUSTOMER", "1").string(), a) << "without the blanks of its column";
    EXPECT_TRUE(yes("existsuserrlocks", "CUSTOMER", a));
    EXPECT_FALSE(yes("existsuserrlocks", "CUSTOMER", b));
    EXPECT_FALSE(yes("existsanotheruserrlocks", "CUSTOMER", a));
    EXPECT_TRUE(yes("existsanotheruserrlocks", "CUSTOMER", b));
}

TEST_F(RecordLocks, QuestionsAboutAFreeRecord) {
    EXPECT_TRUE(lock(a, "1"));
    EXPECT_FALSE(yes("isrecordlocked", "CUSTOMER", a, "2"));
    EXPECT_FALSE(yes("isrecordlockedbyuser", "CUSTOMER", a, "2"));
    EXPECT_FALSE(yes("isrecordlockedbyanotheruser", "CUSTOMER", b, "2"));
    EXPECT_EQ(call("getrlockareaid", "CUSTOMER", "2").string(), "");
    EXPECT_FALSE(yes("existsuserrlocks", "ORDERS", a));
    EXPECT_FALSE(yes("existsanotheruserrlocks", "ORDERS", b));
}

TEST_F(RecordLocks, WhetherARecordIsLockedIgnoresTheAreaId) {
    EXPECT_TRUE(lock(a, "1"));
    EXPECT_TRUE(yes("isrecordlocked", "CUSTOMER", b, "1"));
    EXPECT_TRUE(yes("isrecordlocked", "CUSTOMER", Value(), "1"));
    EXPECT_FALSE(yes("isrecordlocked", "CUSTOMER", Value(), "2"));
}

TEST_F(RecordLocks, UnlockingARecordNotHeldAnswersFalseAndChangesNothing) {
    EXPECT_TRUE(lock(b, "1"));
    EXPECT_FALSE(unlock(a, "1"));
    EXPECT_FALSE(unlock(a, "2"));
    EXPECT_EQ(record_locks(), (Rows{{"CUSTOMER", "1", b}}));
}

TEST_F(RecordLocks, UnlockingTwiceAnswersFalseTheSecondTime) {
    EXPECT_TRUE(lock(a, "1"));
    EXPECT_TRUE(unlock(a, "1"));
    EXPECT_FALSE(unlock(a, "1"));
}

TEST_F(RecordLocks, UnlockingAllLeavesOtherAreasAndTables) {
    lock(a, "1");
    lock(a, "2");
    lock(b, "3");
    yes("setrecordaslocked", "ORDERS", a, "4");
    EXPECT_TRUE(yes("unlockallrecords", "CUSTOMER", a));
    EXPECT_EQ(record_locks(), (Rows{{"CUSTOMER", "3", b}, {"ORDERS", "4", a}}));
}

TEST_F(RecordLocks, UnlockingAllWithoutAnyAnswersFalseAndChangesNothing) {
    EXPECT_FALSE(yes("unlockallrecords", "CUSTOMER", a));
    lock(b, "1");
    EXPECT_FALSE(yes("unlockallrecords", "CUSTOMER", a));
    EXPECT_EQ(record_locks(), (Rows{{"CUSTOMER", "1", b}}));
}

TEST_F(RecordLocks, LockedRecordsAreNumbers) {
    lock(a, "12");
    lock(a, "2147483647");
    lock(b, "13");
    const Value numbers = call("getlockedrecords", "customer", a);
    EXPECT_EQ(show(numbers), "{12, 2147483647}");
    EXPECT_EQ(show(call("getlockedrecords", "ORDERS", a)), "{}");
}

TEST_F(RecordLocks, LoserOfARaceForARecordIsRefusedByTheIndex) {
    const RacingClient other(
        database(), "INSERT INTO RDDSYS_RLK",
        "INSERT INTO RDDSYS_RLK (RLK_TABLE, RLK_RECNO, RLK_AREAID) VALUES ('CUSTOMER', 1, '" + b + "')");
    log_at(1);
    EXPECT_FALSE(lock(a, "1"));
    EXPECT_TRUE(other.happened());
    EXPECT_EQ(record_locks(), (Rows{{"CUSTOMER", "1", b}}));
    ASSERT_EQ(log_lines().size(), 1u);
    EXPECT_TRUE(log_lines()[0].text.starts_with("[ERROR] SQLCODE=-803 (")) << log_text();
}

TEST_F(RecordLocks, FailedQueriesReadAsNobodyAndTheIndexStillRefuses) {
    EXPECT_TRUE(lock(b, "1"));
    const BlindClient blind;
    EXPECT_FALSE(yes("isrecordlocked", "CUSTOMER", b, "1"));
    EXPECT_FALSE(yes("isrecordlockedbyuser", "CUSTOMER", b, "1"));
    EXPECT_FALSE(yes("isrecordlockedbyanotheruser", "CUSTOMER", a, "1"));
    EXPECT_FALSE(yes("existsuserrlocks", "CUSTOMER", b));
    EXPECT_EQ(show(call("getlockedrecords", "CUSTOMER", b)), "{}");
    EXPECT_FALSE(lock(a, "1"));
    EXPECT_TRUE(lock(a, "2"));
}

TEST_F(RecordLocks, FailedInsertsAndDeletesAnswerFalse) {
    EXPECT_FALSE(lock(std::string(51, 'x'), "1"));
    EXPECT_FALSE(lock(a, "no number"));
    lock(a, "1");
    execute("CREATE EXCEPTION E_KEEP 'kept'");
    execute("CREATE TRIGGER T_KEEP FOR RDDSYS_RLK BEFORE DELETE AS BEGIN EXCEPTION E_KEEP; END");
    disconnect();
    EXPECT_FALSE(unlock(a, "1"));
    EXPECT_FALSE(yes("unlockallrecords", "CUSTOMER", a));
    EXPECT_EQ(record_locks(), (Rows{{"CUSTOMER", "1", a}}));
}

TEST_F(RecordLocks, HolderWhoseIdBeginsWithTheCallersIsNotAnotherButTheIndexRefuses) {
    EXPECT_TRUE(lock("AREA12", "1"));
    EXPECT_FALSE(yes("isrecordlockedbyanotheruser", "CUSTOMER", "AREA1", "1"));
    EXPECT_FALSE(yes("isrecordlockedbyuser", "CUSTOMER", "AREA1", "1"));
    EXPECT_EQ(sent_by("setrecordaslocked", "CUSTOMER", "AREA1", "1").size(), 4u);
    EXPECT_FALSE(lock("AREA1", "1"));
    EXPECT_TRUE(yes("isrecordlockedbyanotheruser", "CUSTOMER", "AREA123", "1"));
    EXPECT_EQ(record_locks(), (Rows{{"CUSTOMER", "1", "AREA12"}}));
}

TEST_F(RecordLocks, HolderWhoseIdBeginsWithTheCallersIsAnotherWhileExactIsSet) {
    EXPECT_TRUE(lock("AREA12", "1"));
    host::set_exact(true);
    EXPECT_TRUE(yes("isrecordlockedbyanotheruser", "CUSTOMER", "AREA1", "1"));
    EXPECT_FALSE(yes("isrecordlockedbyanotheruser", "CUSTOMER", "AREA12", "1"));
    host::set_exact(false);
}

TEST_F(RecordLocks, TableLockOfAnIdThatBeginsWithTheCallersLetsRecordsThrough) {
    EXPECT_TRUE(yes("settableaslocked", "CUSTOMER", "AREA12"));
    EXPECT_TRUE(lock("AREA1", "1"));
    EXPECT_FALSE(lock("AREA2", "2"));
}

TEST_F(RecordLocks, UnattachedObjectGrantsButHoldsNothing) {
    zmFBConn unattached;
    EXPECT_TRUE(unattached.call("setrecordaslocked", "CUSTOMER", a, "1").logical());
    EXPECT_FALSE(unattached.call("isrecordlocked", "CUSTOMER", a, "1").logical());
    EXPECT_FALSE(unattached.call("setrecordasunlocked", "CUSTOMER", a, "1").logical());
    EXPECT_FALSE(unattached.call("unlockallrecords", "CUSTOMER", a).logical());
    EXPECT_EQ(show(unattached.call("getlockedrecords", "CUSTOMER", a)), "{}");
}

}  // namespace
}  // namespace zmfb::test
