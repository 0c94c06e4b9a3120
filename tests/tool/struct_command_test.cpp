#include <map>
#include <nlohmann/json.hpp>

#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

class StructCommand : public Tool {
  protected:
    StructCommand() : path(database()) {
        on(path, {"call", "createtable('CLIENT', {{'NAME','C',10,0},{'PRICE','N',8,2},{'SINCE','D',8,0}})"});
        on(path, {"exec", "insert into client (name, price) values ('Ana', 1.5)"});
        on(path, {"exec", "insert into client (name, price) values ('Rui', 2)"});
        on(path, {"exec", "delete from client where name = 'Ana'"});
    }
    std::string path;
};

TEST_F(StructCommand, ShowsFieldsIndexesTriggersAndGenerators) {
    const Finished run = on(path, {"struct", "client"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out,
              "CLIENT: driver table, 1 record\n"
              "\n"
              "field       type  length  decimals  in the database            kept by the driver\n"
              "----------  ----  ------  --------  -------------------------  ------------------\n"
              "NAME        C         10         0  CHAR(10) NOT NULL\n"
              "PRICE       N          8         2  NUMERIC(8,2) NOT NULL\n"
              "SINCE       D          8         0  TIMESTAMP\n"
              "RDD_AREAID  C         50         0  VARCHAR(50)                work area\n"
              "RECNO       N         15         0  DOUBLE PRECISION NOT NULL  record number\n"
              "\n"
              "index              fields  kind\n"
              "-----------------  ------  -------------------\n"
              "CLIENT_RECNO_DESC  RECNO   unique, descending\n"
              "RDB$PRIMARY4       RECNO   unique, PRIMARY KEY\n"
              "\n"
              "trigger           fires\n"
              "----------------  -------------\n"
              "T_CLIENT_RECNO    BEFORE INSERT\n"
              "T_CLIENT_DELETES  AFTER DELETE\n"
              "\n"
              "generator   value\n"
              "----------  -----\n"
              "G_CLIENT_I      2\n"
              "G_CLIENT_D      1\n");
}

TEST_F(StructCommand, JsonHasTheSame) {
    const auto json = nlohmann::json::parse(on(path, {"--json", "struct", "client"}).out);
    EXPECT_EQ(json["table"], "CLIENT");
    EXPECT_EQ(json["kind"], "driver");
    EXPECT_EQ(json["records"], 1);
    EXPECT_EQ(json["fields"][1], nlohmann::json::parse(R"({"field": "PRICE", "type": "N", "length": 8,
        "decimals": 2, "sql_type": "NUMERIC(8,2) NOT NULL", "driver": false})"));
    EXPECT_EQ(json["fields"][4]["driver"], true);
    EXPECT_EQ(json["indexes"][0], nlohmann::json::parse(R"({"name": "CLIENT_RECNO_DESC", "fields": ["RECNO"],
        "unique": true, "descending": true, "active": true, "constraint": ""})"));
    EXPECT_EQ(json["triggers"][1]["fires"], "AFTER DELETE");
    EXPECT_EQ(json["generators"][0], nlohmann::json::parse(R"({"name": "G_CLIENT_I", "value": 2})"));
}

TEST_F(StructCommand, ATriggerOfSeveralActionsHasThemAll) {
    on(path, {"exec", "create table plain (a integer)"});
    const std::vector<std::string> moments{
        "BEFORE INSERT OR UPDATE",           "AFTER INSERT OR DELETE",
        "BEFORE UPDATE OR DELETE",           "AFTER INSERT OR UPDATE OR DELETE",
        "BEFORE INSERT OR UPDATE OR DELETE", "AFTER DELETE OR INSERT OR UPDATE"};
    for (std::size_t i = 0; i < moments.size(); ++i) {
        on(path, {"exec", "create trigger t" + std::to_string(i) + " for plain " + moments[i] +
                              " position 0 as begin end"});
    }
    const auto json = nlohmann::json::parse(on(path, {"--json", "struct", "plain"}).out);
    std::map<std::string, std::string> fires;
    for (const auto& trigger : json["triggers"]) fires[trigger["name"]] = trigger["fires"];
    ASSERT_EQ(fires.size(), moments.size());
    for (std::size_t i = 0; i < moments.size(); ++i) EXPECT_EQ(fires["T" + std::to_string(i)], moments[i]);
}

TEST_F(StructCommand, ATableOfSomebodyElseHasItsTypesNamed) {
    on(path, {"exec",
              "create table plain (b bigint, n decimal(18,3), s smallint, t blob sub_type text, x blob, "
              "f boolean, d date, v varchar(7), c computed by (b + 1))"});
    on(path, {"exec", "create index plain_two on plain (b, s)"});
    const std::string out = on(path, {"struct", "plain"}).out;
    for (const char* part :
         {"PLAIN: foreign table, 0 records\n", "  BIGINT\n", "  DECIMAL(18,3)\n", "  SMALLINT\n",
          "  BLOB SUB_TYPE TEXT\n", "  BLOB SUB_TYPE BINARY\n", "  BOOLEAN\n", "  DATE\n", "  VARCHAR(7)\n",
          " COMPUTED\n", "PLAIN_TWO  B, S\n"}) {
        EXPECT_NE(out.find(part), std::string::npos) << part << " is not in\n" << out;
    }
    EXPECT_EQ(out.find("generator"), std::string::npos);
}

TEST_F(StructCommand, ANameThatIsNoTableIsSaidSo) {
    for (const char* name : {"nosuch", "x' or '1'='1", "日本"}) {
        const Finished run = on(path, {"struct", name});
        EXPECT_EQ(run.status, 1);
        EXPECT_EQ(run.out, "");
        EXPECT_EQ(run.err, "error: there is no table " + std::string(name) + "\n");
    }
}

TEST_F(StructCommand, TablesTellsTheKinds) {
    on(path, {"exec", "create table plain (a integer)"});
    on(path, {"exec", "create view names (n) as select name from client"});
    const auto json = nlohmann::json::parse(on(path, {"--json", "tables"}).out);
    std::vector<std::string> kinds;
    for (const auto& table : json)
        kinds.push_back(table["table"].get<std::string>() + " " + table["kind"].get<std::string>());
    EXPECT_EQ(kinds,
              (std::vector<std::string>{"CLIENT driver", "NAMES view", "PLAIN foreign", "RDDSYS_FLK system",
                                        "RDDSYS_OPN system", "RDDSYS_RLK system"}));
    EXPECT_EQ(json[0]["records"], 1);
}

using DropCommand = StructCommand;

TEST_F(DropCommand, AsksAndNamesTheViewsThatGoAlong) {
    on(path, {"exec", "create view names (n) as select name from client"});
    const Finished refused = on(path, {"drop", "client"}, "n\n");
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.out, "");
    EXPECT_EQ(refused.err,
              "Drop CLIENT with its 1 record and the views built on it (NAMES)? [y/N] error: nothing was "
              "dropped\n");
    EXPECT_EQ(on(path, {"call", "istable('CLIENT')"}).out, ".T.\n");
    const Finished done = on(path, {"drop", "client"}, "y\n");
    EXPECT_EQ(done.status, 0);
    EXPECT_EQ(done.out, "CLIENT and NAMES dropped\n");
    EXPECT_EQ(on(path, {"call", "istable('CLIENT')", "istable('NAMES')"}).out, ".F.\n.F.\n");
    EXPECT_EQ(
        on(path, {"query", "--mode", "csv",
                  "select count(*) as n from rdb$generators where rdb$generator_name starting 'G_CLIENT'"})
            .out,
        "N\r\n0\r\n");
}

TEST_F(DropCommand, WithYesNothingIsAsked) {
    const Finished run = on(path, {"--json", "drop", "-y", "client"});
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out, "{\"dropped\":\"CLIENT\",\"views\":[]}\n");
}

TEST_F(DropCommand, TablesThatAreNotTheDriversAreRefusedWithAHint) {
    on(path, {"exec", "create table plain (a integer)"});
    on(path, {"exec", "create view names (n) as select name from client"});
    EXPECT_EQ(on(path, {"drop", "-y", "plain"}).err,
              "error: PLAIN was not made by the driver\nhint: zmfb exec 'drop table \"PLAIN\"'\n");
    EXPECT_EQ(on(path, {"drop", "-y", "names"}).err,
              "error: NAMES is a view, not a table\nhint: zmfb exec 'drop view \"NAMES\"'\n");
    const Finished system = on(path, {"drop", "-y", "rddsys_rlk"});
    EXPECT_EQ(system.status, 1);
    EXPECT_TRUE(system.err.starts_with("error: RDDSYS_RLK is the driver's own and stays\nhint: "))
        << system.err;
    EXPECT_EQ(on(path, {"drop", "-y", "nosuch"}).err, "error: there is no table nosuch\n");
    EXPECT_EQ(lines(on(path, {"tables"}).out).size(), 8U);
}

TEST_F(DropCommand, WhatIsInTheWayIsNamedAndNothingIsDropped) {
    on(path, {"exec", "create view a_first (n) as select name from client"});
    on(path, {"exec", "create view names (n) as select name from client"});
    on(path, {"exec", "create view more (n) as select n from names"});
    const Finished run = on(path, {"drop", "-y", "client"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err,
              "error: CLIENT was not dropped: in use by view MORE\nhint: zmfb exec 'drop view \"MORE\"'\n");
    EXPECT_EQ(on(path, {"call", "istable('CLIENT')", "istable('A_FIRST')", "istable('NAMES')"}).out,
              ".T.\n.T.\n.T.\n");
    on(path, {"exec", "drop view more"});
    EXPECT_EQ(on(path, {"drop", "-y", "client"}).out, "CLIENT and A_FIRST, NAMES dropped\n");
}

TEST_F(DropCommand, AViewThatNamesTheTableTwiceGoesWithItAtOnce) {
    on(path, {"exec", "create view pairs (a, b) as select x.name, y.name from client x, client y"});
    const Finished run = on(path, {"drop", "-y", "client"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out, "CLIENT and PAIRS dropped\n");
    EXPECT_EQ(on(path, {"call", "istable('CLIENT')", "istable('PAIRS')"}).out, ".F.\n.F.\n");
}

}  // namespace
}  // namespace zmfb::test
