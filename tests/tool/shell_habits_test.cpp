// What people from psql, sqlite3 and isql type, and what happens here.
#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

struct Habit {
    const char* from;
    const char* typed;
    const char* out;  // begins standard output; nothing when ""
    const char* err;  // is in standard error; nothing there when ""
    int status = 0;
};

constexpr const char* nothing = "";

class ShellHabits : public Tool {
  protected:
    ShellHabits() {
        exec(path, "create table t (a integer primary key, b varchar(10))");
        exec(path, "insert into t values (1, 'x')");
    }
    const std::string path = database();
};

// Each in a shell of its own, on a table T of one row.
const Habit habits[] = {
    {"psql", "\\q\nselct;\n", nothing, nothing},
    {"psql", "quit\nselct;\n", nothing, nothing},
    {"psql", "exit\n", nothing, nothing},
    {"psql", "help\n", "SELECT ...;", nothing},
    {"psql", "\\?\n", "SELECT ...;", nothing},
    {"psql", "\\d\n", "table", nothing},
    {"psql", "\\dt\n", "table", nothing},
    {"psql", "\\d t\n", "T: foreign table, 1 record\n", nothing},
    {"psql", "\\x\nselect a from t;\n", "A = 1\n", nothing},
    {"psql", "\\timing\n", "off\n", nothing},
    {"psql", "\\i nosuch.sql\n", nothing, "cannot read nosuch.sql", 1},
    {"psql", "BEGIN;\nupdate t set b = 'y';\nROLLBACK;\nselect b from t;\n", "done: begin\n", nothing},
    {"psql", "START TRANSACTION;\nCOMMIT;\n", "done: begin\ndone: commit\n", nothing},
    {"psql", "end;\n", nothing, "\"end\" begins neither SQL nor a call", 1},
    {"psql", "insert into t values (2, 'y') returning a;\n", "A\n-\n2\n(1 row)\n", nothing},
    {"psql", "select a from t limit 1;\n", nothing, "Token unknown", 1},
    {"psql", "select 1;\n", nothing, "Unexpected end of command\n", 1},
    {"psql", "savepoint s;\n", nothing, "there is no transaction", 1},
    {"psql", "show tables;\n", nothing, ".tables lists the tables", 1},
    {"psql", "select 'a''b' as q from rdb$database;\n", "Q\n---\na'b\n", nothing},
    {"sqlite3", ".quit\nselct;\n", nothing, nothing},
    {"sqlite3", ".exit\n", nothing, nothing},
    {"sqlite3", ".help\n", "SELECT ...;", nothing},
    {"sqlite3", ".tables\n", "table", nothing},
    {"sqlite3", ".schema t\n", nothing, "there is no command .schema", 1},
    {"sqlite3", ".mode csv\nselect a, b from t;\n", "A,B\r\n1,x\r\n", nothing},
    {"sqlite3", ".mode line\nselect a from t;\n", "A = 1\n", nothing},
    {"sqlite3", ".mode column\n", nothing, "there is no mode column", 1},
    {"sqlite3", ".headers on\n", nothing, "there is no command .headers", 1},
    {"sqlite3", ".timer\n", "off\n", nothing},
    {"sqlite3", ".read nosuch.sql\n", nothing, "cannot read nosuch.sql", 1},
    {"sqlite3", ".bail on\n", nothing, "there is no command .bail", 1},
    {"isql", "commit;\n", nothing, "note: no transaction is open: each statement is committed by itself\n"},
    {"isql", "rollback;\n", nothing, "no transaction is open: nothing is undone", 1},
    {"isql", "commit work;\n", nothing, "note: no transaction is open"},
    {"isql", "set transaction;\ncommit;\n", "done: begin\ndone: commit\n", nothing},
    {"isql", "set term ^ ;\n", nothing, "there is no SET TERM", 1},
    {"isql", "show table t;\n", nothing, ".struct shows one of them", 1},
    {"isql", "set autoddl on;\n", nothing, "Token unknown", 1},
    {"isql", "input 'nosuch.sql';\n", nothing, "begins neither SQL nor a call", 1},
    {"isql", "execute procedure p;\n", nothing, "Procedure unknown", 1},
    {"isql", "create table u (a integer);\ninsert into u values (1);\n",
     "done: create table\ndone: insert, 1 row\n", nothing},
};

TEST_F(ShellHabits, AreMetOrAnswered) {
    EXPECT_GE(std::size(habits), 40u);
    for (const Habit& habit : habits) {
        const Finished run = on(path, {"shell"}, habit.typed);
        EXPECT_EQ(run.status, habit.status) << habit.typed << run.err;
        const std::string out = habit.out, err = habit.err;
        EXPECT_TRUE(out.empty() ? run.out.empty() : run.out.starts_with(out)) << habit.typed << run.out;
        EXPECT_TRUE(err.empty() ? run.err.empty() : run.err.find(err) != std::string::npos)
            << habit.typed << run.err;
        on(path, {"exec", "delete from t where a > 1"});
    }
}

}  // namespace
}  // namespace zmfb::test
