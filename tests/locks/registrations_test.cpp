// Registering opens of tables, asking about them, and learning the number of an appended record.
#include "tests/locks/locks_test.h"

namespace zmfb::test {
namespace {

class Registrations : public Locks {
  protected:
    void create_customer() {
        const Value structure = host::array_of(host::array_of("NAME", "C", 10, 0));
        EXPECT_TRUE(yes("createtable", "CUSTOMER", structure));
    }
    void append(const std::string& name, const std::string& area) {
        EXPECT_EQ(call("executeupdate",
                       "INSERT INTO CUSTOMER (NAME, RDD_AREAID) VALUES ('" + name + "', '" + area + "')")
                      .string(),
                  "");
    }
    bool open(const Value& tbl, const Value& area, const Value& shared = true) {
        return yes("settableusedbyarea", true, tbl, area, shared);
    }
    bool close(const Value& tbl, const Value& area) {
        return yes("settableusedbyarea", false, tbl, area, true);
    }
};

TEST_F(Registrations, RegisteringTwiceAnswersTrueTwiceAndLeavesOneRow) {
    EXPECT_TRUE(open("CUSTOMER", a));
    EXPECT_TRUE(open("CUSTOMER", a));
    EXPECT_EQ(registrations(), (Rows{{"CUSTOMER", a, "T"}}));
}

TEST_F(Registrations, UnregisteringTwiceAnswersTrueTwice) {
    EXPECT_TRUE(open("CUSTOMER", a));
    EXPECT_TRUE(close("CUSTOMER", a));
    EXPECT_TRUE(close("CUSTOMER", a));
    EXPECT_EQ(registrations(), Rows{});
}

TEST_F(Registrations, UnregisteringRemovesOneAreaOfOneTable) {
    open("CUSTOMER", a);
    open("CUSTOMER", b);
    open("ORDERS", a);
    EXPECT_TRUE(close("CUSTOMER", a));
    EXPECT_EQ(registrations(), (Rows{{"CUSTOMER", b, "T"}, {"ORDERS", a, "T"}}));
}

TEST_F(Registrations, ModeOfAnExistingRowIsKept) {
    open("CUSTOMER", a, true);
    EXPECT_TRUE(open("CUSTOMER", a, false));
    EXPECT_EQ(registrations(), (Rows{{"CUSTOMER", a, "T"}}));
}

TEST_F(Registrations, OnlyTrueMeansShared) {
    open("T1", a, true);
    open("T2", a, false);
    open("T3", a, Value());
    open("T4", a, "T");
    EXPECT_EQ(registrations(), (Rows{{"T1", a, "T"}, {"T2", a, "F"}, {"T3", a, "F"}, {"T4", a, "F"}}));
}

TEST_F(Registrations, AnythingButTrueUnregisters) {
    open("CUSTOMER", a);
    open("ORDERS", a);
    EXPECT_TRUE(yes("settableusedbyarea", Value(), "CUSTOMER", a, true));
    EXPECT_TRUE(yes("settableusedbyarea", "T", "ORDERS", a, true));
    EXPECT_EQ(registrations(), Rows{});
}

TEST_F(Registrations, TableIsInUseWhenOnlyThisProcessHasIt) {
    EXPECT_FALSE(yes("istableinuse", "CUSTOMER"));
    open("CUSTOMER", a);
    EXPECT_TRUE(yes("istableinuse", "CUSTOMER"));
    EXPECT_FALSE(yes("istableinuse", "CUST"));
}

TEST_F(Registrations, TableIsInUseWhenAnotherConnectionHasIt) {
    zmFBConn other = connect();
    other.call("settableusedbyarea", true, "CUSTOMER", b, false);
    EXPECT_TRUE(yes("istableinuse", "CUSTOMER"));
    EXPECT_TRUE(yes("istableinexclusivemode", "CUSTOMER"));
    EXPECT_FALSE(yes("istableusedbyarea", "CUSTOMER", a));
}

TEST_F(Registrations, TableIsNotExclusiveWhileEveryOpenIsShared) {
    open("CUSTOMER", a, true);
    open("CUSTOMER", b, true);
    EXPECT_FALSE(yes("istableinexclusivemode", "CUSTOMER"));
    open("CUSTOMER", "third", false);
    EXPECT_TRUE(yes("istableinexclusivemode", "CUSTOMER"));
    EXPECT_FALSE(yes("istableinexclusivemode", "ORDERS"));
}

TEST_F(Registrations, TableNamesAreMatchedUpperCased) {
    open("Customer", a);
    EXPECT_EQ(registrations(), (Rows{{"CUSTOMER", a, "T"}}));
    EXPECT_TRUE(yes("istableusedbyarea", "CUSTOMER", a));
    EXPECT_TRUE(yes("istableusedbyarea", "customer", a));
    EXPECT_TRUE(yes("istableinuse", "cuSTOMER"));
}

TEST_F(Registrations, AreaIdsAreMatchedAsTheyAre) {
    open("CUSTOMER", "X");
    EXPECT_TRUE(yes("istableusedbyarea", "CUSTOMER", "X"));
    EXPECT_FALSE(yes("istableusedbyarea", "CUSTOMER", "x"));
    EXPECT_FALSE(yes("istableusedbyarea", "CUSTOMER", ""));
}

TEST_F(Registrations, LoserOfARaceToRegisterAnswersFalse) {
    const RacingClient other(
        database(), "INSERT INTO RDDSYS_OPN",
        "INSERT INTO RDDSYS_OPN (OPN_TABLE, OPN_AREAID) VALUES ('CUSTOMER', '" + a + "')");
    EXPECT_FALSE(open("CUSTOMER", a));
    EXPECT_TRUE(other.happened());
    EXPECT_EQ(registrations().size(), 1u);
}

TEST_F(Registrations, AskingBeforeAnExclusiveOpenGuardsNothing) {
    const RacingClient other(
        database(), "INSERT INTO RDDSYS_OPN",
        "INSERT INTO RDDSYS_OPN (OPN_TABLE, OPN_AREAID, OPN_SHARED) VALUES ('CUSTOMER', '" + b + "', 'F')");
    EXPECT_FALSE(yes("istableinuse", "CUSTOMER"));
    EXPECT_TRUE(yes("settableusedbyarea", true, "CUSTOMER", a, false));
    EXPECT_EQ(registrations(), (Rows{{"CUSTOMER", a, "F"}, {"CUSTOMER", b, "F"}}));
}

TEST_F(Registrations, NamesAndIdsWiderThanTheirColumnsAreRefused) {
    EXPECT_FALSE(open(std::string(31, 'T'), a));
    EXPECT_FALSE(open("CUSTOMER", std::string(51, 'x')));
    EXPECT_TRUE(open(std::string(30, 'T'), std::string(50, 'x')));
}

TEST_F(Registrations, FailedQueriesReadAsNo) {
    open("CUSTOMER", a, false);
    const BlindClient blind;
    EXPECT_FALSE(yes("istableusedbyarea", "CUSTOMER", a));
    EXPECT_FALSE(yes("istableinuse", "CUSTOMER"));
    EXPECT_FALSE(yes("istableinexclusivemode", "CUSTOMER"));
    EXPECT_EQ(call("getapprecnofromarea", "CUSTOMER", a).number(), 0);
    EXPECT_FALSE(open("CUSTOMER", a)) << "the index refuses a second row";
    EXPECT_TRUE(close("CUSTOMER", a)) << "nothing seems to be there to remove";
}

TEST_F(Registrations, FailedChangesAnswerFalse) {
    open("CUSTOMER", a);
    call("istable", "RDDSYS_OPN");  // the last query keeps its tables in use
    drop("RDDSYS_OPN");
    EXPECT_FALSE(open("CUSTOMER", a));
    EXPECT_TRUE(close("CUSTOMER", a));
}

TEST_F(Registrations, UnattachedObjectAnswersAsIfAllWentWell) {
    zmFBConn unattached;
    EXPECT_TRUE(unattached.call("settableusedbyarea", true, "CUSTOMER", a, true).logical());
    EXPECT_TRUE(unattached.call("settableusedbyarea", false, "CUSTOMER", a, true).logical());
    EXPECT_FALSE(unattached.call("istableinuse", "CUSTOMER").logical());
}

TEST_F(Registrations, NumberOfTheLastAppendIsLearned) {
    create_customer();
    open("CUSTOMER", a);
    EXPECT_EQ(call("getapprecnofromarea", "CUSTOMER", a).number(), 0) << "before the first";
    append("one", a);
    append("two", a);
    EXPECT_EQ(call("getapprecnofromarea", "customer", a).number(), 2);
    EXPECT_EQ(rows("select name, recno, rdd_areaid from customer order by recno"),
              (Rows{{"one", "1.000000000000000", "NULL"}, {"two", "2.000000000000000", "NULL"}}));
}

TEST_F(Registrations, EachAreaLearnsItsOwnAppend) {
    create_customer();
    open("CUSTOMER", a);
    open("CUSTOMER", b);
    append("one", a);
    append("two", b);
    append("three", b);
    EXPECT_EQ(call("getapprecnofromarea", "CUSTOMER", a).number(), 1);
    EXPECT_EQ(call("getapprecnofromarea", "CUSTOMER", b).number(), 3);
}

TEST_F(Registrations, UnregisteredAreaLearnsNothingAndItsIdStaysInTheRow) {
    create_customer();
    append("one", a);
    EXPECT_EQ(call("getapprecnofromarea", "CUSTOMER", a).number(), 0);
    EXPECT_EQ(rows("select rdd_areaid from customer"), (Rows{{a}}));
}

TEST_F(Registrations, NumberOfTheLastAppendIsWhole) {
    open("CUSTOMER", a);
    execute("update rddsys_opn set opn_apprecno = 2147483647");
    EXPECT_EQ(show(call("getapprecnofromarea", "CUSTOMER", a)), "2147483647");
}

TEST_F(Registrations, StatementsOfTheQuestions) {
    EXPECT_EQ(
        sent_by("istableusedbyarea", "Customer", "Ab"),
        (Statements{"SELECT COUNT(*) FROM RDDSYS_OPN WHERE OPN_TABLE = 'CUSTOMER' AND OPN_AREAID = 'Ab' "}));
    EXPECT_EQ(sent_by("istableinuse", "Customer"),
              (Statements{"SELECT FIRST 1 OPN_TABLE FROM RDDSYS_OPN WHERE OPN_TABLE = 'CUSTOMER'"}));
    EXPECT_EQ(sent_by("istableinexclusivemode", "Customer"),
              (Statements{"SELECT FIRST 1 OPN_TABLE FROM RDDSYS_OPN WHERE OPN_TABLE = 'CUSTOMER' AND "
                          "OPN_SHARED = 'F' "}));
    EXPECT_EQ(
        sent_by("getapprecnofromarea", "Customer", "Ab"),
        (Statements{
            "SELECT OPN_APPRECNO FROM RDDSYS_OPN WHERE OPN_TABLE = 'CUSTOMER' AND OPN_AREAID = 'Ab' "}));
}

TEST_F(Registrations, StatementsOfTheChanges) {
    const std::string used =
        "SELECT COUNT(*) FROM RDDSYS_OPN WHERE OPN_TABLE = 'CUSTOMER' AND OPN_AREAID = 'Ab' ";
    const std::string insert =
        "INSERT INTO RDDSYS_OPN (OPN_TABLE, OPN_AREAID, OPN_SHARED) VALUES('CUSTOMER', 'Ab', 'T') ";
    const std::string remove = "DELETE FROM RDDSYS_OPN WHERE OPN_TABLE = 'CUSTOMER' AND OPN_AREAID = 'Ab' ";
    EXPECT_EQ(sent_by("settableusedbyarea", true, "Customer", "Ab", true), (Statements{used, insert}));
    EXPECT_EQ(sent_by("settableusedbyarea", true, "Customer", "Ab", true), Statements{used});
    EXPECT_EQ(sent_by("settableusedbyarea", false, "Customer", "Ab", true), (Statements{used, remove}));
    EXPECT_EQ(sent_by("settableusedbyarea", false, "Customer", "Ab", true), Statements{used});
    EXPECT_EQ(sent_by("settableusedbyarea", true, "Customer", "Ab", false)[1],
              "INSERT INTO RDDSYS_OPN (OPN_TABLE, OPN_AREAID, OPN_SHARED) VALUES('CUSTOMER', 'Ab', 'F') ");
}

TEST_F(Registrations, ValuesThatHoldAPlaceholderOfALaterPairAreFilledToo) {
    EXPECT_EQ(sent_by("settableusedbyarea", true, "@@AREAID", "@@SHARED", true)[1],
              "INSERT INTO RDDSYS_OPN (OPN_TABLE, OPN_AREAID, OPN_SHARED) VALUES('T', 'T', 'T') ");
    EXPECT_EQ(sent_by("istableusedbyarea", "@@OPN_COL_AREAID", "@@TABLENAME"),
              (Statements{"SELECT COUNT(*) FROM RDDSYS_OPN WHERE OPN_TABLE = '@@OPN_COL_AREAID' AND "
                          "OPN_AREAID = '@@TABLENAME' "}))
        << "those of earlier pairs are not";
}

}  // namespace
}  // namespace zmfb::test
