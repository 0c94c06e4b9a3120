// Which call of a program last_engine_message() tells of.
#include "host/error.h"
#include "sql/state.h"
#include "tests/support/database.h"
#include "tests/support/environment.h"
#include "zmfbconn/database.h"

namespace zmfb::test {
namespace {

using host::Value;

class EngineMessage : public Database {
  protected:
    EngineMessage() { call("executeupdate", "create table T (A integer)"); }

    void fail() {
        call("executeupdate", "delete from NOWHERE");
        ASSERT_TRUE(tells_of_nowhere());
    }
    static bool tells_of_nowhere() { return last_engine_message().find("NOWHERE") != std::string::npos; }
};

TEST_F(EngineMessage, IsGoneAfterACallThatWentWell) {
    struct Case {
        const char* method;
        std::vector<Value> arguments;
    };
    const Case cases[] = {{"executeupdate", {"insert into T values (1)"}},
                          {"executequery", {"select A from T"}},
                          {"istable", {"T"}},
                          {"starttransaction", {}},
                          {"cachedupdate", {"insert into T values (2)"}},
                          {"commitchanges", {}},
                          {"setrecordaslocked", {"T", "T:1:1:here", "1"}},
                          {"evalmeth", {"istable", host::array_of("T")}}};
    for (const auto& [method, arguments] : cases) {
        if (std::string_view(method) != "cachedupdate" && std::string_view(method) != "commitchanges") fail();
        connection().call_with(method, host::Args(arguments));
        EXPECT_EQ(last_engine_message(), "") << method;
    }
}

TEST_F(EngineMessage, IsGoneAfterAnotherObjectsCallThatWentWell) {
    zmFBConn other = connect();
    fail();
    EXPECT_TRUE(other.call("istable", "T").logical());
    EXPECT_EQ(last_engine_message(), "");
}

TEST_F(EngineMessage, IsGoneAfterAttachingAndAfterFunctionsThatWentWell) {
    fail();
    connect();
    EXPECT_EQ(last_engine_message(), "");
    fail();
    EXPECT_EQ(run_script(database(), sysdba, sysdba_password, "create table U (A integer);").message(), "");
    EXPECT_EQ(last_engine_message(), "");
}

TEST_F(EngineMessage, StaysThroughCallsThatDoNotReachTheEngine) {
    fail();
    EXPECT_TRUE(connection().isconnected());
    EXPECT_EQ(call("getloglevel").number(), 0);
    EXPECT_EQ(call("getfilename", "a/b").string(), "b");
    EXPECT_TRUE(tells_of_nowhere());
}

TEST_F(EngineMessage, OfAnAttachThatFailedIsThereWhenItIsAskedWhetherItIsAttached) {
    call("istable", "T");
    zmFBConn none(file("nowhere.fdb"), sysdba, sysdba_password);
    EXPECT_FALSE(none.isconnected());
    EXPECT_NE(last_engine_message().find("nowhere.fdb"), std::string::npos) << last_engine_message();
}

TEST_F(EngineMessage, StaysWhenTheObjectGoes) {
    fail();
    disconnect();
    EXPECT_TRUE(tells_of_nowhere());
}

TEST_F(EngineMessage, TellsAHalfResultFromAWholeOne) {
    for (const char* a : {"4", "2", "0", "1"}) execute(std::string("insert into T values (") + a + ")");
    EXPECT_EQ(call("executequery", "select 8 / A from T").size(), 3U);
    EXPECT_NE(last_engine_message(), "");
    EXPECT_EQ(call("executequery", "select 8 / A from T where A > 1").size(), 3U);
    EXPECT_EQ(last_engine_message(), "");
}

TEST_F(EngineMessage, OfAQuestionThatFailedStaysWhenItsCallGoesOn) {
    EXPECT_EQ(call("gettablereccount", "T").number(), 0) << "counted, for it has no generators";
    EXPECT_NE(last_engine_message().find("G_T_I"), std::string::npos) << last_engine_message();
}

TEST_F(EngineMessage, StaysThroughTheCallsOfAnErrorBlock) {
    const Value asks = Value::block([this](host::Args) -> Value {
        call("istable", "T");
        return {};
    });
    const host::ScopedErrorBlock block(asks);
    EXPECT_FALSE(call("deleteallrecords", "NOWHERE").logical());
    EXPECT_TRUE(tells_of_nowhere());
}

TEST_F(EngineMessage, IsGoneAfterTheNextCallWhenAnErrorBlockHasThrown) {
    const host::ThrowingErrors thrown;
    EXPECT_THROW(call("deleteallrecords", "NOWHERE"), host::RaisedError);
    EXPECT_TRUE(tells_of_nowhere());
    call("istable", "T");
    EXPECT_EQ(last_engine_message(), "");
}

TEST_F(EngineMessage, OfLaterEnginesHasItsWordsWhateverTheClientKnows) {
    constexpr ISC_STATUS effective_user = 335545254, no_create_permission = 335545264;
    const ISC_STATUS refused[] = {isc_arg_gds,    isc_no_meta_update,
                                  isc_arg_gds,    no_create_permission,
                                  isc_arg_string, reinterpret_cast<ISC_STATUS>("TABLE"),
                                  isc_arg_gds,    effective_user,
                                  isc_arg_string, reinterpret_cast<ISC_STATUS>("ANNA"),
                                  isc_arg_end};
    EXPECT_EQ(
        sql::keep_message(refused),
        "unsuccessful metadata update\nNo permission for CREATE TABLE operation\nEffective user is ANNA");
}

}  // namespace
}  // namespace zmfb::test
