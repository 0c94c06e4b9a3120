#include <limits>

#include "host/date.h"
#include "host/error.h"
#include "tests/support/runtime.h"
#include "zmfbconn/connection.h"

namespace zmfb::test {
namespace {

using host::array_of;

// Objects without a database.
class Dispatch : public Runtime {
  protected:
    zmFBConn object;
};

TEST_F(Dispatch, ANewObjectWithoutArgumentsLogsNothingAndIsInactive) {
    EXPECT_EQ(log_text(), "");
    EXPECT_FALSE(object.isconnected());
    EXPECT_FALSE(object.call("isrddactive").logical());
}

TEST_F(Dispatch, VariablesStartAtTheirDefaults) {
    EXPECT_EQ(show(object.get("bconn")), ".F.");
    EXPECT_EQ(show(object.get("dbhndl")), "0");
    EXPECT_EQ(show(object.get("sdbname")), "\"\"");
    EXPECT_EQ(show(object.get("srolename")), "\"\"");
    EXPECT_EQ(show(object.get("susername")), "\"\"");
    EXPECT_EQ(show(object.call("getglbskipmode")), "1");
    EXPECT_EQ(show(object.call("getglbskipcachesize")), "11");
    EXPECT_EQ(show(object.call("getfullpathdatfile")), "\"\"");
}

TEST_F(Dispatch, AnUnknownNameIsLoggedAndThenRaised) {
    EXPECT_TRUE(object.call("frobnicate", 1, 2).is_nil());
    EXPECT_EQ(log_lines(),
              (std::vector<LogEntry>{{0, "[ERROR] Meth: frobnicate does not exist inside zmFBConn"}}));
    EXPECT_EQ(raised(),
              (std::vector<std::string>{"[FBCONN Error];zmFBConn has no Method named: frobnicate"}));
}

TEST_F(Dispatch, NamesAreFoundInAnyCaseOfLetters) {
    EXPECT_EQ(show(object.call("ISCONNECTED")), ".F.");
    EXPECT_EQ(show(object.call("evalmeth", "IsConnected", Value())), ".F.");
    EXPECT_EQ(show(object.call("EvalMeth", "TOARRAY", array_of("a::b", "::"))), "{\"a\", \"b\"}");
}

TEST_F(Dispatch, AnUnknownNameIsToldAsItWasWritten) {
    object.call("Frobnicate");
    object.call("évalmeth");
    EXPECT_EQ(raised(), (std::vector<std::string>{"[FBCONN Error];zmFBConn has no Method named: Frobnicate",
                                                  "[FBCONN Error];zmFBConn has no Method named: évalmeth"}));
}

TEST_F(Dispatch, EvalmethWithNilPassesFiveEmptyTexts) {
    EXPECT_EQ(show(object.call("evalmeth", "getloglevel", Value())), "0");
    // This one keeps its argument as it came.
    object.call("evalmeth", "setrddactive", Value());
    EXPECT_EQ(show(object.call("isrddactive")), "\"\"");
}

TEST_F(Dispatch, EvalmethTakesItsArgumentsFromTheArray) {
    object.call("evalmeth", "setrddactive", array_of("first"));
    EXPECT_EQ(show(object.call("isrddactive")), "\"first\"");
    EXPECT_EQ(show(object.call("evalmeth", "toarray", array_of("a::b", "::"))), "{\"a\", \"b\"}");
}

TEST_F(Dispatch, EvalmethWithAPlainTextPassesFiveEmptyTexts) {
    object.call("evalmeth", "setrddactive", "CUSTOMER");
    EXPECT_EQ(show(object.call("isrddactive")), "\"\"");
}

TEST_F(Dispatch, EvalmethIgnoresElementsBeyondTheFifth) {
    object.call("evalmeth", "setrddactive", array_of("1", "2", "3", "4", "5", "6", "7"));
    EXPECT_EQ(show(object.call("isrddactive")), "\"1\"");
}

TEST_F(Dispatch, EvalmethCannotCallAMethodOfSixParameters) {
    object.call("evalmeth", "getfirstrows", array_of("T", "1 = 1", "RECNO", "", 5, 0));
    EXPECT_EQ(raised().front(), "Argument error: STR");
}

TEST_F(Dispatch, EvalmethOfAnUnknownNameReachesNomethod) {
    object.call("evalmeth", "frobnicate", array_of(1));
    EXPECT_EQ(raised(),
              (std::vector<std::string>{"[FBCONN Error];zmFBConn has no Method named: frobnicate"}));
}

TEST_F(Dispatch, AssigningBconnAndDbhndlStoresAnythingUnchecked) {
    object.set("dbhndl", "seven");
    EXPECT_EQ(show(object.get("dbhndl")), "\"seven\"");
    object.set("dbhndl", 0);
    object.set("bconn", true);
    EXPECT_TRUE(object.isconnected());
    object.set("bconn", false);
}

TEST_F(Dispatch, DisconnectingAndReleasingRaiseNothingWhateverWasAssigned) {
    const Value values[] = {{},
                            "seven",
                            1e300,
                            -1,
                            0.5,
                            std::numeric_limits<double>::quiet_NaN(),
                            true,
                            false,
                            host::date(),
                            array_of(true),
                            host::error_new(),
                            Value::block([](Args) { return Value(true); })};
    for (const Value& bconn : values) {
        for (const Value& dbhndl : values) {
            zmFBConn assigned;
            assigned.set("bconn", bconn);
            assigned.set("dbhndl", dbhndl);
            assigned.call("disconnect");
            EXPECT_FALSE(assigned.isconnected());
            assigned.set("bconn", bconn);
        }
    }
}

TEST_F(Dispatch, TheThreeTextsHaveNoAssign) {
    for (const char* name : {"sdbname", "srolename", "susername"}) object.set(name, "x");
    EXPECT_EQ(show(object.get("sdbname")), "\"\"");
    EXPECT_EQ(raised(),
              (std::vector<std::string>{"No exported variable: sdbname", "No exported variable: srolename",
                                        "No exported variable: susername"}));
}

TEST_F(Dispatch, HiddenAndProtectedVariablesAreNotReadFromOutside) {
    object.get("aaliases");
    EXPECT_EQ(raised(), (std::vector<std::string>{"No exported variable: aaliases"}));
}

TEST_F(Dispatch, APropertyCanBeCalledLikeAMethod) { EXPECT_EQ(show(object.call("bconn")), ".F."); }

TEST_F(Dispatch, ReleasingTheLastHandleLogsThatTheObjectIsGone) {
    { const zmFBConn second(object); }
    EXPECT_EQ(log_text(), "");
    { const zmFBConn gone; }
    EXPECT_EQ(log_lines(), (std::vector<LogEntry>{{0, "[GONE] Class: zmFBConn no longer exists. DB: "}}));
}

TEST_F(Dispatch, AHandleOfAnObjectSharesItAndOneOfNoneIsUnattached) {
    object.set("dbhndl", 7);
    zmFBConn again = zmFBConn::of(object.value());
    EXPECT_EQ(show(again.get("dbhndl")), "7");
    zmFBConn other = zmFBConn::of("no object");
    EXPECT_FALSE(other.isconnected());
    EXPECT_EQ(show(other.get("dbhndl")), "0");
}

TEST_F(Dispatch, AxitMayBeCalledByTheApplicationAndAnswersTrue) {
    EXPECT_EQ(show(object.call("axit")), ".T.");
    EXPECT_EQ(log_lines(), (std::vector<LogEntry>{{0, "[GONE] Class: zmFBConn no longer exists. DB: "}}));
}

TEST_F(Dispatch, AHandlerThatThrowsLeavesTheObjectUsable) {
    const host::ThrowingErrors thrown;
    EXPECT_THROW(object.call("looptest", "CUSTOMER"), host::RaisedError);
    EXPECT_EQ(show(object.call("getloglevel")), "0");
}

}  // namespace
}  // namespace zmfb::test
