#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

class QueryCommand : public Tool {
  protected:
    QueryCommand() : path(database()) {
        on(path, {"exec", "create table t (a integer, b varchar(10))"});
        on(path, {"exec", "insert into t values (7, 'ação')"});
        on(path, {"exec", "insert into t values (12345, null)"});
    }
    std::string path;
};

TEST_F(QueryCommand, ShowsRowsUnderTheirHeads) {
    const Finished run = on(path, {"query", "select a, b from t order by a"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out,
              "    A  B\n"
              "-----  ----\n"
              "    7  ação\n"
              "12345  NULL\n"
              "(2 rows)\n");
}

TEST_F(QueryCommand, ShowsTextsInTheCharacterSetsOfTheirColumns) {
    on(path,
       {"exec",
        "create table w (b varchar(5) character set win1252, c blob sub_type text character set utf8)"});
    on(path, {"exec", "insert into w values (_win1252 x'80', _utf8 x'E282AC')"});
    EXPECT_EQ(on(path, {"query", "--mode", "csv", "select b, c from w"}).out, "B,C\r\n€,€\r\n");
}

TEST_F(QueryCommand, JsonIsAnArrayOfObjects) {
    EXPECT_EQ(on(path, {"--json", "query", "select b from t where a = 7"}).out,
              "[\n  {\"B\": \"ação\"}\n]\n");
}

TEST_F(QueryCommand, AStatementTheEngineRefusesShowsTheEnginesWords) {
    const Finished run = on(path, {"query", "select nosuch from t"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(lines(run.err).at(0), "error: the query failed");
    EXPECT_NE(run.err.find("NOSUCH"), std::string::npos);
}

TEST_F(QueryCommand, AMistypedTableOrColumnGetsASuggestion) {
    exec(path, "create table customers (code integer, name varchar(10), nation varchar(3))");
    exec(path, "create table orders (naem integer)");
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"query", "select c.naem from customers c", "NAME"},
        {"query", "select nmae from customers, t", "NAME"},
        {"query", "select code from custmers", "CUSTOMERS"},
        {"exec", "update customers set coed = 1", "CODE"},
        {"exec", "insert into custommers (code) values (1)", "CUSTOMERS"},
        {"exec", "drop table custommers", "CUSTOMERS"},
        {"exec", "alter table customers drop nmae", "NAME"},
    };
    for (const auto& [command, statement, meant] : cases) {
        const Finished run = on(path, {command, statement});
        EXPECT_EQ(run.status, 1);
        EXPECT_TRUE(run.err.ends_with("\nhint: did you mean " + std::string(meant) + "?\n")) << run.err;
    }
    // The table alone is wrong; a name that is like none.
    for (const char* statement : {"select x.name from customers c", "select xylophone from customers"}) {
        EXPECT_EQ(on(path, {"query", statement}).err.find("did you mean"), std::string::npos) << statement;
    }
    EXPECT_EQ(on(path, {"struct", "custmers"}).err,
              "error: there is no table custmers\nhint: did you mean CUSTOMERS?\n");
}

TEST_F(QueryCommand, AnUpdateTheEngineRefusesShowsTheSqlcodeAndTheEnginesWords) {
    const Finished run = on(path, {"exec", "delete from nosuch"});
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(run.err.starts_with("error: [ERROR] SQLCODE=-204 (")) << run.err;
    EXPECT_NE(run.err.find("NOSUCH"), std::string::npos);
}

}  // namespace
}  // namespace zmfb::test
