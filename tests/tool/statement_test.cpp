#include "tool/shell/statement.h"

#include <gtest/gtest.h>

#include <tuple>
#include <vector>

namespace zmfb::test {
namespace {

using tool::Input;

TEST(InputKind, IsToldByTheBeginningOfTheLine) {
    const std::pair<const char*, Input> cases[] = {
        {"", Input::nothing},
        {"  \t", Input::nothing},
        {"-- only a comment", Input::nothing},
        {"/* only a comment */", Input::nothing},
        {"/* one that goes on", Input::statement},
        {".tables", Input::dot_command},
        {"  .tables", Input::dot_command},
        {"\\d", Input::dot_command},
        {"  \\d customers", Input::dot_command},
        {"select 1", Input::statement},
        {"SELECT(1)", Input::statement},
        {"-- first\nselect 1", Input::statement},
        {"/* first */ with x", Input::statement},
        {"istable(\"X\")", Input::call},
        {"ISTABLE (\"X\")", Input::call},
        {"nosuchmethod()", Input::call},
        {"isconnected", Input::call},
        {"isconnected;", Input::call},
        {"isconnected what", Input::unknown},
        {"selct 1", Input::unknown},
        {"show tables", Input::unknown},
        {"\"x\"", Input::unknown},
        {"(select 1)", Input::unknown},
    };
    for (const auto& [line, kind] : cases) EXPECT_EQ(tool::input_of(line), kind) << line;
}

// The statements of a text, and what is left behind the last.
std::vector<std::string> parts(std::string text) {
    std::vector<std::string> found;
    while (const auto end = tool::StatementScan().end_in(text)) {
        found.push_back(text.substr(0, *end));
        text.erase(0, *end);
    }
    found.push_back(text);
    return found;
}

TEST(EndOfStatement, IsItsSemicolon) {
    using Parts = std::vector<std::string>;
    EXPECT_EQ(parts("select 1;"), (Parts{"select 1;", ""}));
    EXPECT_EQ(parts("select 1; select 2"), (Parts{"select 1;", " select 2"}));
    EXPECT_EQ(parts("select 1"), (Parts{"select 1"}));
    EXPECT_EQ(parts(";"), (Parts{";", ""}));
}

TEST(EndOfStatement, IsNotInQuotesAndComments) {
    for (const char* text : {"select ';';", "select 'it''s; x';", "select \"a;b\";", "select 1 -- x;\n;",
                             "select /* ; */ 1;", "select ';' || \";\";"}) {
        EXPECT_EQ(parts(text).size(), 2u) << text;
        EXPECT_EQ(parts(text).back(), "") << text;
    }
    for (const char* text : {"select 'x;", "select \"x;", "select 1 -- x;", "select /* x;"}) {
        EXPECT_EQ(parts(text).size(), 1u) << text;
    }
}

TEST(EndOfStatement, IsBehindTheLastEndOfABody) {
    for (const char* text :
         {"create trigger t for x before insert as begin a = 1; b = 2; end;",
          "create or alter procedure p (a integer = cast(1 as integer)) as declare b integer; begin "
          "if (a = 1) then begin b = 1; end b = case a when 1 then 2 end; end;",
          "recreate procedure p returns (n integer) as begin for select x as y from t into n do suspend; "
          "end;",
          "execute block as begin execute statement 'begin;'; end;",
          "CREATE FUNCTION F RETURNS INTEGER AS BEGIN RETURN 1; END;",
          "create package p as begin procedure q; end;", "alter trigger t inactive;",
          "create function f returns integer external name 'x!y' engine udr;",
          "update t set a = case b when 1 then 2 end;", "select x as y from t;", "execute procedure p;",
          "create table t (a integer);"}) {
        EXPECT_EQ(parts(text).size(), 2u) << text;
        EXPECT_EQ(parts(text).back(), "") << text;
    }
    EXPECT_EQ(parts("create trigger t for x before insert as begin a = 1;").size(), 1u);
    EXPECT_EQ(parts("create procedure p as declare a integer;").size(), 1u);
}

TEST(Statement, IsAQueryWhenItBeginsLikeOne) {
    for (const char* query : {"select 1", "SELECT 1", " with x as (select 1)", "/* x */ select 1"}) {
        EXPECT_TRUE(tool::is_query(query)) << query;
    }
    for (const char* other : {"update t set a = 1", "selected", "", "insert into t select 1 from x"}) {
        EXPECT_FALSE(tool::is_query(other)) << other;
    }
}

TEST(Statement, MayBeginOrEndATransaction) {
    using tool::Step;
    const std::pair<const char*, Step> cases[] = {
        {"begin", Step::begin},
        {"BEGIN ;", Step::begin},
        {"begin work", Step::begin},
        {"start transaction", Step::begin},
        {"set transaction;", Step::begin},
        {"set transaction read only", Step::none},
        {"start", Step::none},
        {"commit -- all of it", Step::commit},
        {"commit work", Step::commit},
        {"commit retain", Step::none},
        {"rollback transaction", Step::roll_back},
        {"rollback to s", Step::none},
        {"begin; commit", Step::none},
        {"select 1", Step::none},
        {"", Step::none},
    };
    for (const auto& [statement, step] : cases) EXPECT_EQ(tool::step_of(statement), step) << statement;
}

TEST(Statement, HasTheAreaWhereItIsNamed) {
    const std::pair<const char*, const char*> cases[] = {
        {"select :area, :AREA from t", "select 'X', 'X' from t"},
        {"select :area", "select 'X'"},
        {"select ':area', \":area\" -- :area", "select ':area', \":area\" -- :area"},
        {"select : area, :areas, a.area", "select : area, :areas, a.area"},
        {"execute block as begin a = :area; end", "execute block as begin a = :area; end"},
    };
    for (const auto& [typed, sent] : cases)
        EXPECT_EQ(tool::with_area(typed, [] { return "X"; }), sent) << typed;
}

TEST(Statement, HasAnAction) {
    const std::pair<const char*, const char*> cases[] = {
        {"update t set a = 1", "update"},
        {"CREATE TABLE t (a integer)", "create table"},
        {"create or alter trigger t", "create trigger"},
        {"create unique descending index i on t (a)", "create index"},
        {"recreate global temporary table t", "recreate table"},
        {"comment on table t is 'x'", "comment table"},
        {"execute block as begin end", "execute block"},
        {"drop", "drop"},
    };
    for (const auto& [statement, action] : cases) EXPECT_EQ(tool::action_of(statement), action) << statement;
}

TEST(TablesOfAStatement, AreThoseBehindTheWordsThatTakeOne) {
    using Names = std::vector<std::string_view>;
    const std::pair<const char*, Names> cases[] = {
        {"", {}},
        {"select a, b", {}},
        {"select a from t", {"t"}},
        {"select a, b from T x, \"Odd one\" as y, u where v in (1, 2)", {"T", "\"Odd one\"", "u"}},
        {"select a from t left join u on t.a = u.a, w order by a, b", {"t", "u", "w"}},
        {"select a from (select b from t), u", {"t"}},
        {"insert into t (a, b) values (1, 2)", {"t"}},
        {"update t set a = 1, b = 2", {"t"}},
        {"delete from t", {"t"}},
        {"alter table t add a integer", {"t"}},
        {"select 'from x' from t -- from y", {"t"}},
        {"select a from ", {}},
    };
    for (const auto& [statement, names] : cases) EXPECT_EQ(tool::tables_in(statement), names) << statement;
}

TEST(TablesOfAStatement, AreExpectedWhereOneIsToCome) {
    const std::pair<const char*, bool> cases[] = {{"select a from ", true},
                                                  {"select a from t, ", true},
                                                  {"select a from t join ", true},
                                                  {"update ", true},
                                                  {"insert into ", true},
                                                  {"drop table ", true},
                                                  {"select a, ", false},
                                                  {"select a from t ", false},
                                                  {"select a from t where ", false},
                                                  {"update t set a = 1, ", false},
                                                  {"", false}};
    for (const auto& [beginning, expected] : cases)
        EXPECT_EQ(tool::expects_table(beginning), expected) << beginning;
}

}  // namespace
}  // namespace zmfb::test
