// The SQL methods of an object without a database: silent, and nothing reaches the client library.
#include "tests/support/faulty_client.h"
#include "tests/support/runtime.h"
#include "zmfbconn/connection.h"

namespace zmfb::test {
namespace {

using host::Value;

class Unattached : public Runtime {
  protected:
    Unattached() { log_at(10); }
    ~Unattached() override {
        for (std::size_t i = 0; i < client_call_count; ++i) {
            EXPECT_EQ(client_.count(static_cast<ClientCall>(i)), 0) << name_of(static_cast<ClientCall>(i));
        }
    }
    using Entries = std::vector<LogEntry>;

    FaultyClient client_;
    zmFBConn object_;
};

TEST_F(Unattached, InternalselectGivesAnEmptyArrayAndLogsTheStatement) {
    EXPECT_EQ(show(object_.call("internalselect", "select 1 from rdb$database")), "{}");
    EXPECT_EQ(log_lines(), (Entries{{8, "[QURY] Statement: select 1 from rdb$database"}}));
}

TEST_F(Unattached, ExecutequeryIsInternalselect) {
    EXPECT_EQ(show(object_.call("executequery", "select 1 from rdb$database")), "{}");
    EXPECT_EQ(log_lines(), (Entries{{8, "[QURY] Statement: select 1 from rdb$database"}}));
}

TEST_F(Unattached, ExecuteupdateReportsSuccessAndLogsOnlyTheStatement) {
    EXPECT_EQ(show(object_.call("executeupdate", "delete from T")), "\"\"");
    EXPECT_EQ(log_lines(), (Entries{{7, "[UPDT] Statement: delete from T"}}));
}

TEST_F(Unattached, ExecuteupdateLogsNothingBelowItsLevel) {
    log_at(6);
    EXPECT_EQ(show(object_.call("executeupdate", "delete from T")), "\"\"");
    EXPECT_EQ(log_text(), "");
}

TEST_F(Unattached, BatchReportsSuccess) {
    EXPECT_EQ(show(object_.call("starttransaction")), "NIL");
    EXPECT_EQ(show(object_.call("cachedupdate", "delete from T")), "\"\"");
    EXPECT_EQ(show(object_.call("commitchanges")), "NIL");
    EXPECT_EQ(log_lines(), (Entries{{7, "[TRANS] Starting Transaction"},
                                    {7, "[CACHE] Statement: delete from T"},
                                    {7, "[COMMIT] Commit"}}));
}

TEST_F(Unattached, PositioningGivesEmptyArrays) {
    EXPECT_EQ(show(object_.call("getrow", "T", "RECNO > 0", "RECNO", "", 0)), "{}");
    EXPECT_EQ(show(object_.call("getfirstrows", "T", "RECNO > 0", "RECNO", "", 5, 0)), "{}");
    EXPECT_EQ(show(object_.call("executeudfskippad", "NAME", "T", "1")), "{}");
}

TEST_F(Unattached, GetrowSendsItsStatement) {
    object_.call("getrow", "CLIENT", "RECNO > 0", "RECNO", "", 10);
    object_.call("getrow", "CLIENT", "RECNO > 0", "RECNO", Value(), 10);
    object_.call("getrow", "CLIENT", "RECNO > 0", "RECNO", " plan (CLIENT natural)", 0);
    object_.call("getrow", "CLIENT", "A = 1", "A, B desc", "plan", 2000000000);
    EXPECT_EQ(sql_log(),
              (std::vector<std::string>{
                  "select first 1 skip 10 * from CLIENT where RECNO > 0 order by RECNO",
                  "select first 1 skip 10 * from CLIENT where RECNO > 0 order by RECNO",
                  "select first 1 skip 0 * from CLIENT where RECNO > 0 plan (CLIENT natural) order by RECNO",
                  "select first 1 skip 2000000000 * from CLIENT where A = 1plan order by A, B desc"}));
}

TEST_F(Unattached, GetfirstrowsSendsItsStatement) {
    object_.call("getfirstrows", "CLIENT", "RECNO > 0", "RECNO", "", 5, 10);
    object_.call("getfirstrows", "CLIENT", "RECNO > 0", "RECNO", " plan (CLIENT natural)", 0, 0);
    EXPECT_EQ(
        sql_log(),
        (std::vector<std::string>{
            "select first 5 skip 10 * from CLIENT where RECNO > 0 order by RECNO",
            "select first 0 skip 0 * from CLIENT where RECNO > 0 plan (CLIENT natural) order by RECNO"}));
}

TEST_F(Unattached, ExecuteudfskippadSendsItsStatement) {
    object_.call("executeudfskippad", "'{{D}}' || BORN", "CLIENT", "17");
    EXPECT_EQ(sql_log(), (std::vector<std::string>{
                             "select skippad('{{D}}' || BORN) from CLIENT where recno = 17 order by recno"}));
}

TEST_F(Unattached, LooptestRaisesTheTableNameAndGivesAnEmptyArray) {
    EXPECT_EQ(show(object_.call("looptest", "CUSTOMER", "a", "b", "c")), "{}");
    EXPECT_EQ(raised(), std::vector<std::string>{"[FBCONN Error];CUSTOMER"});
    EXPECT_EQ(log_text(), "");
}

TEST_F(Unattached, HandleOfAnotherKindCountsAsNone) {
    for (const Value& handle : {Value("12"), Value(), Value(true), host::array_of(1)}) {
        object_.set("dbhndl", handle);
        EXPECT_EQ(show(object_.call("internalselect", "select 1 from rdb$database")), "{}");
        EXPECT_EQ(show(object_.call("executeupdate", "delete from T")), "\"\"");
    }
}

TEST_F(Unattached, StatementOfAnotherKindIsRaisedOnce) {
    EXPECT_EQ(show(object_.call("internalselect", 7)), "{}");
    EXPECT_EQ(raised().size(), 1u);
}

}  // namespace
}  // namespace zmfb::test
