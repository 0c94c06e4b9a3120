// Locking and unlocking whole tables, and releasing what others left.
#include "host/compare.h"
#include "tests/locks/locks_test.h"

namespace zmfb::test {
namespace {

class TableLocks : public Locks {
  protected:
    bool lock(const Value& area) { return yes("settableaslocked", "CUSTOMER", area); }
    bool unlock(const Value& area) { return yes("settableasunlocked", "CUSTOMER", area); }
    bool lock_record(const Value& area, const Value& recno) {
        return yes("setrecordaslocked", "CUSTOMER", area, recno);
    }
};

TEST_F(TableLocks, LockingTwiceFromOneAreaAnswersTrueTwiceAndLeavesOneRow) {
    EXPECT_TRUE(lock(a));
    EXPECT_TRUE(lock(a));
    EXPECT_EQ(table_locks(), (Rows{{"CUSTOMER", a}}));
}

TEST_F(TableLocks, TableOfAnotherAreaIsRefusedUntilItIsUnlocked) {
    zmFBConn other = connect();
    EXPECT_TRUE(lock(a));
    EXPECT_FALSE(other.call("settableaslocked", "CUSTOMER", b).logical());
    EXPECT_TRUE(unlock(a));
    EXPECT_TRUE(other.call("settableaslocked", "CUSTOMER", b).logical());
    EXPECT_FALSE(lock(a));
    EXPECT_EQ(table_locks(), (Rows{{"CUSTOMER", b}}));
}

TEST_F(TableLocks, AnyRecordLockOfAnotherAreaRefusesTheTable) {
    EXPECT_TRUE(lock_record(a, "1"));
    EXPECT_FALSE(lock(b));
    EXPECT_TRUE(yes("settableaslocked", "ORDERS", b));
    EXPECT_TRUE(lock(a)) << "own record locks are no hindrance";
    EXPECT_EQ(table_locks(), (Rows{{"CUSTOMER", a}, {"ORDERS", b}}));
}

TEST_F(TableLocks, OwnAndForeignRecordLocksTogetherRefuseTheTable) {
    EXPECT_TRUE(lock_record(a, "1"));
    EXPECT_TRUE(lock_record(b, "2"));
    EXPECT_FALSE(lock(a));
    EXPECT_TRUE(yes("unlockallrecords", "CUSTOMER", b));
    EXPECT_TRUE(lock(a));
}

TEST_F(TableLocks, RegistrationsAreNotLookedAt) {
    EXPECT_TRUE(yes("settableusedbyarea", true, "CUSTOMER", b, false));
    EXPECT_TRUE(lock(a));
}

TEST_F(TableLocks, UnlockingATableNotHeldAnswersFalseAndChangesNothing) {
    EXPECT_FALSE(unlock(a));
    EXPECT_TRUE(lock(b));
    EXPECT_FALSE(unlock(a));
    EXPECT_EQ(table_locks(), (Rows{{"CUSTOMER", b}}));
    EXPECT_TRUE(unlock(b));
    EXPECT_EQ(table_locks(), Rows{});
}

TEST_F(TableLocks, UnlockingATableKeepsItsRecordLocks) {
    lock(a);
    lock_record(a, "1");
    EXPECT_TRUE(unlock(a));
    EXPECT_EQ(record_locks(), (Rows{{"CUSTOMER", "1", a}}));
}

TEST_F(TableLocks, QuestionsAboutAHeldTable) {
    EXPECT_TRUE(lock(a));
    EXPECT_TRUE(yes("istablelockedbyuser", "customer", a));
    EXPECT_FALSE(yes("istablelockedbyuser", "CUSTOMER", b));
    EXPECT_FALSE(yes("existsanotheruserflock", "CUSTOMER", a));
    EXPECT_TRUE(yes("existsanotheruserflock", "Customer", b));
    EXPECT_EQ(call("getflockareaid", "customer").string(), a) << "without the blanks of its column";
}

TEST_F(TableLocks, QuestionsAboutAFreeTable) {
    EXPECT_FALSE(yes("istablelockedbyuser", "CUSTOMER", a));
    EXPECT_FALSE(yes("existsanotheruserflock", "CUSTOMER", a));
    EXPECT_EQ(call("getflockareaid", "CUSTOMER").string(), "");
}

TEST_F(TableLocks, EmptyAreaIdIsTheHolderOfAFreeTable) {
    EXPECT_TRUE(yes("istablelockedbyuser", "CUSTOMER", ""));
    EXPECT_TRUE(lock(""));
    EXPECT_EQ(table_locks(), Rows{});
}

TEST_F(TableLocks, LockedTablesAreThoseOfEveryAreaWithTheBlanksOfTheirColumns) {
    EXPECT_EQ(show(call("getlockedtables")), "{}");
    EXPECT_TRUE(lock(a));
    EXPECT_TRUE(yes("settableaslocked", "ORDERS", b));
    const auto padded = [](std::string text, std::size_t width) {
        text.resize(width, ' ');
        return Value(text);
    };
    const Value expected = host::array_of(host::array_of(padded("CUSTOMER", 30), padded(a, 50)),
                                          host::array_of(padded("ORDERS", 30), padded(b, 50)));
    EXPECT_EQ(show(call("getlockedtables")), show(expected));
}

TEST_F(TableLocks, LoserOfARaceForATableIsRefusedByTheIndex) {
    const RacingClient other(
        database(), "INSERT INTO RDDSYS_FLK",
        "INSERT INTO RDDSYS_FLK (FLK_TABLE, FLK_AREAID) VALUES ('CUSTOMER', '" + b + "')");
    EXPECT_FALSE(lock(a));
    EXPECT_TRUE(other.happened());
    EXPECT_EQ(table_locks(), (Rows{{"CUSTOMER", b}}));
}

TEST_F(TableLocks, RaceBetweenATableAndARecordIsNotGuarded) {
    const RacingClient other(
        database(), "INSERT INTO RDDSYS_FLK",
        "INSERT INTO RDDSYS_RLK (RLK_TABLE, RLK_RECNO, RLK_AREAID) VALUES ('CUSTOMER', 1, '" + b + "')");
    EXPECT_TRUE(lock(a));
    EXPECT_EQ(table_locks(), (Rows{{"CUSTOMER", a}}));
    EXPECT_EQ(record_locks(), (Rows{{"CUSTOMER", "1", b}}));
    // Whoever asks a second time is told.
    EXPECT_FALSE(lock(a));
    EXPECT_FALSE(yes("setrecordaslocked", "CUSTOMER", b, "1"));
}

TEST_F(TableLocks, FailedQueriesReadAsNobodyAndTheIndexStillRefuses) {
    EXPECT_TRUE(lock(b));
    const BlindClient blind;
    EXPECT_FALSE(yes("istablelockedbyuser", "CUSTOMER", b));
    EXPECT_FALSE(yes("existsanotheruserflock", "CUSTOMER", a));
    EXPECT_EQ(show(call("getlockedtables")), "{}");
    EXPECT_FALSE(lock(a));
    EXPECT_TRUE(yes("settableaslocked", "ORDERS", a));
}

TEST_F(TableLocks, FailedInsertsAndDeletesAnswerFalse) {
    EXPECT_FALSE(lock(std::string(51, 'x')));
    EXPECT_FALSE(yes("settableaslocked", std::string(31, 'T'), a));
    lock(a);
    execute("CREATE EXCEPTION E_KEEP 'kept'");
    execute("CREATE TRIGGER T_KEEP FOR RDDSYS_FLK BEFORE DELETE AS BEGIN EXCEPTION E_KEEP; END");
    disconnect();
    EXPECT_FALSE(unlock(a));
    EXPECT_FALSE(yes("releaselocks", "CUSTOMER"));
    EXPECT_EQ(table_locks(), (Rows{{"CUSTOMER", a}}));
}

TEST_F(TableLocks, HolderWhoseIdBeginsWithTheCallersIsNotAnotherButTheIndexRefuses) {
    EXPECT_TRUE(lock("AREA12"));
    EXPECT_FALSE(yes("existsanotheruserflock", "CUSTOMER", "AREA1"));
    EXPECT_FALSE(lock("AREA1"));
    host::set_exact(true);
    EXPECT_TRUE(yes("existsanotheruserflock", "CUSTOMER", "AREA1"));
    host::set_exact(false);
    EXPECT_EQ(table_locks(), (Rows{{"CUSTOMER", "AREA12"}}));
}

TEST_F(TableLocks, ReleasingRemovesTheLocksOfEverybodyOnOneTable) {
    lock_record(a, "1");
    lock_record(b, "2");
    execute("INSERT INTO RDDSYS_FLK (FLK_TABLE, FLK_AREAID) VALUES ('CUSTOMER', 'third')");
    yes("setrecordaslocked", "ORDERS", a, "3");
    yes("settableaslocked", "ITEMS", b);
    EXPECT_TRUE(yes("releaselocks", "customer"));
    EXPECT_EQ(record_locks(), (Rows{{"ORDERS", "3", a}}));
    EXPECT_EQ(table_locks(), (Rows{{"ITEMS", b}}));
}

TEST_F(TableLocks, ReleasingATableWithoutLocksAnswersTrue) { EXPECT_TRUE(yes("releaselocks", "CUSTOMER")); }

TEST_F(TableLocks, ReleasingKeepsTheTableLockWhenTheRecordLocksFail) {
    lock(a);
    drop("RDDSYS_RLK");
    EXPECT_EQ(sent_by("releaselocks", "CUSTOMER"),
              (Statements{"DELETE FROM RDDSYS_RLK WHERE RLK_TABLE = 'CUSTOMER'"}));
    EXPECT_FALSE(yes("releaselocks", "CUSTOMER"));
    EXPECT_EQ(table_locks(), (Rows{{"CUSTOMER", a}}));
}

TEST_F(TableLocks, UnattachedObjectGrantsButHoldsNothing) {
    zmFBConn unattached;
    EXPECT_TRUE(unattached.call("settableaslocked", "CUSTOMER", a).logical());
    EXPECT_FALSE(unattached.call("istablelockedbyuser", "CUSTOMER", a).logical());
    EXPECT_FALSE(unattached.call("settableasunlocked", "CUSTOMER", a).logical());
    EXPECT_TRUE(unattached.call("releaselocks", "CUSTOMER").logical());
    EXPECT_EQ(show(unattached.call("getlockedtables")), "{}");
}

}  // namespace
}  // namespace zmfb::test
