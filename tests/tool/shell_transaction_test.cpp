// Transactions of the shell, row counts, and rows of statements that change something.
#include "tests/support/dialogue.h"
#include "tests/support/environment.h"
#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

constexpr const char* prompt = "zmfb> ";
constexpr const char* prompt_within = "zmfb*> ";
constexpr const char* control_d = "\x04";

class ShellTransaction : public Tool {
  protected:
    ShellTransaction() { exec(path, "create table t (a integer primary key, b varchar(10))"); }
    [[nodiscard]] Finished shell(const std::string& input) const { return on(path, {"shell"}, input); }
    [[nodiscard]] std::vector<std::string> on_a_terminal() const {
        return command({"--db", path, "shell"}, {"NO_COLOR=1"});
    }
    [[nodiscard]] std::string stored() const {
        std::string all;
        for (const std::string& line :
             lines(on(path, {"query", "select a from t order by a", "--mode", "csv"}).out))
            all += line.substr(0, line.find('\r')) + " ";
        return all;
    }
    const std::string path = database();
};

TEST_F(ShellTransaction, KeepsWhatIsCommittedAndUndoesWhatIsRolledBack) {
    const Finished run = shell(
        "begin;\ninsert into t values (1, 'x');\nselect count(*) as n from t;\ncommit;\n"
        "begin transaction;\ninsert into t values (2, 'x');\nrollback work;\n"
        "start transaction;\ninsert into t values (3, 'x');\ncommit transaction;\n"
        "set transaction; insert into t values (4, 'x'); rollback;\n");
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out,
              "done: begin\ndone: insert, 1 row\nN\n-\n1\n(1 row)\ndone: commit\n"
              "done: begin\ndone: insert, 1 row\ndone: rollback\n"
              "done: begin\ndone: insert, 1 row\ndone: commit\n"
              "done: begin\ndone: insert, 1 row\ndone: rollback\n");
    EXPECT_EQ(stored(), "A 1 3 ");
}

TEST_F(ShellTransaction, WordsAloneInALineBeginAndEndItWhateverTheirCommentsSay) {
    const Finished run =
        shell("begin /* ; */\ninsert into t values (1, 'x');\ncommit -- ;\nbegin -- x\nrollback; -- y\n");
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out, "done: begin\ndone: insert, 1 row\ndone: commit\ndone: begin\ndone: rollback\n");
}

TEST_F(ShellTransaction, IsTheOneOfStarttransactionAndCommitchanges) {
    const Finished run = shell(
        "starttransaction()\ninsert into t values (1, 'x');\ncachedupdate(\"insert into t values (2, "
        "'x')\")\n"
        "rollback;\nbegin;\ncachedupdate(\"insert into t values (3, "
        "'x')\")\ncommitchanges()\nbegin;\nrollback;\n");
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(stored(), "A 3 ");
}

TEST_F(ShellTransaction, AStatementThatFailsInItUndoesItselfAlone) {
    const Finished run = shell(
        "begin;\ninsert into t values (1, 'x');\ninsert into t values (1, 'x');\ninsert into t values (2, "
        "'x');\ncommit;\n");
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.err.find("error: line 3: [ERROR] SQLCODE=-803"), std::string::npos) << run.err;
    EXPECT_EQ(stored(), "A 1 2 ");
}

TEST_F(ShellTransaction, MethodsHaveTheirOwnAndNameItWhenItIsInTheirWay) {
    exec(path, "insert into t values (1, 'x')");
    const Finished run = shell(
        "begin;\nupdate t set b = 'y';\nexecuteupdate(\"update t set b = 'z'\")\n"
        "executequery(\"select b from t\")\ncommit;\n");
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.out.find("{\"x         \"}}"), std::string::npos) << run.out;
    EXPECT_NE(run.err.find("is the open one of this session: a call of a method has one of its own"),
              std::string::npos)
        << run.err;
    EXPECT_EQ(on(path, {"query", "select b from t", "--mode", "csv"}).out, "B\r\ny\r\n");
}

TEST_F(ShellTransaction, StructuresInItAreThoseOfTheEngine) {
    const Finished run = shell(
        "begin;\ncreate table u (a integer);\nrollback;\nistable('U')\n"
        "begin;\ncreate table u (a integer);\ncommit;\nistable('U')\n");
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out,
              "done: begin\ndone: create table\ndone: rollback\n.F.\n"
              "done: begin\ndone: create table\ndone: commit\n.T.\n");
}

TEST_F(ShellTransaction, SavepointsUndoAPartOfIt) {
    const Finished run = shell(
        "begin;\ninsert into t values (1, 'x');\nsavepoint s;\ninsert into t values (2, 'x');\n"
        "rollback to savepoint s;\nrelease savepoint s;\ncommit;\n");
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(stored(), "A 1 ");
}

TEST_F(ShellTransaction, WordsThatFindNoneOrOneTooManySayWhatIsSo) {
    const Finished run = shell("commit;\nrollback;\nsavepoint s;\nbegin;\nbegin;\ncommit;\n");
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err,
              "note: no transaction is open: each statement is committed by itself\n"
              "error: line 2: no transaction is open: nothing is undone\n"
              "  Each statement was committed by itself. begin; opens a transaction.\n"
              "error: line 3: there is no transaction\n  begin; opens one.\n"
              "error: line 5: a transaction is open already\n  commit; or rollback; ends it.\n");
    EXPECT_EQ(shell("commit;\n").status, 0);
}

TEST_F(ShellTransaction, OneThatIsOpenAtTheEndOfAScriptIsRolledBackAndSaid) {
    for (const char* last : {"", ".quit\n"}) {
        const Finished run = shell(std::string("begin;\ninsert into t values (1, 'x');\n") + last);
        EXPECT_EQ(run.status, 1);
        EXPECT_EQ(run.out, "done: begin\ndone: insert, 1 row\ndone: rollback\n");
        EXPECT_EQ(
            run.err,
            "error: the transaction that was open at the end is rolled back\nhint: commit; keeps what it "
            "did\n");
        EXPECT_EQ(stored(), "A ");
    }
}

TEST_F(ShellTransaction, ThePromptShowsItAndLeavingAsks) {
    if (on_server()) GTEST_SKIP() << "the same there";
    struct Case {
        const char* leave;
        const char* answer;
        const char* said;
        const char* stored;
    };
    for (const Case& one :
         {Case{".quit\n", "c\n", "done: commit", "A 1 "}, Case{".quit\n", "r\n", "done: rollback", "A 1 "},
          Case{control_d, control_d, "done: rollback", "A 1 "},
          Case{control_d, "commit\n", "done: commit", "A 1 2 "}}) {
        Dialogue talk(on_a_terminal());
        talk.expect_prompt(prompt);
        talk.type("begin\n");
        talk.expect_prompt(prompt_within);
        talk.type("insert into t select coalesce(max(a), 0) + 1, 'x' from t;\n");
        talk.expect("done: insert, 1 row, 0.");
        talk.expect_prompt(prompt_within);
        talk.type(".quit\n");
        talk.expect("stay? [c/r/S]");
        talk.type("\n");
        talk.expect_prompt(prompt_within);
        talk.type(one.leave);
        talk.expect("stay? [c/r/S]");
        talk.type(one.answer);
        talk.expect(one.said);
        EXPECT_EQ(talk.end(), 0);
        EXPECT_EQ(stored(), one.stored) << one.said;
    }
}

TEST_F(ShellTransaction, StatementsSayHowManyRowsTheyChanged) {
    const std::pair<const char*, const char*> cases[] = {
        {"insert into t select row_number() over (), 'x' from rdb$database", "insert, 1 row"},
        {"insert into t values (2, 'y')", "insert, 1 row"},
        {"update t set b = 'z'", "update, 2 rows"},
        {"update t set b = 'z' where a = 99", "update, 0 rows"},
        {"update or insert into t values (3, 'w')", "update, 1 row"},
        {"merge into t using (select 4 as n from rdb$database) s on t.a = s.n when not matched then insert "
         "values "
         "(s.n, 'm')",
         "merge, 1 row"},
        {"execute block as begin update t set b = 'k'; end", "execute block, 4 rows"},
        {"delete from t where a > 2", "delete, 2 rows"},
        {"create index i on t (b)", "create index"},
        {"comment on table t is 'x'", "comment table"},
    };
    std::string input, expected;
    for (const auto& [statement, said] : cases) {
        input += std::string(statement) + ";\n";
        expected += std::string("done: ") + said + "\n";
    }
    EXPECT_EQ(shell(input).out, expected);
}

TEST_F(ShellTransaction, StatementsThatReturnRowsShowThem) {
    exec(path, "create procedure p (x integer) returns (y integer) as begin y = x + 1; end");
    const Finished run = shell(
        "insert into t values (1, 'x') returning a, b;\nupdate t set b = 'y' where a = 99 returning b;\n"
        "execute block returns (n integer) as begin n = 1; suspend; n = 2; suspend; end;\n"
        "execute procedure p(41);\n.mode csv\ndelete from t returning a;\n");
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(
        run.out,
        "A  B\n-  -\n1  x\n(1 row)\nB\n-\n(0 rows)\nN\n-\n1\n2\n(2 rows)\n Y\n--\n42\n(1 row)\nA\r\n1\r\n");
    EXPECT_EQ(stored(), "A ");
}

TEST_F(ShellTransaction, ExecDoesTheSame) {
    EXPECT_EQ(on(path, {"exec", "insert into t values (1, 'x')"}).out, "done, 1 row\n");
    EXPECT_EQ(on(path, {"exec", "update t set b = 'y' where a = 2"}).out, "done, 0 rows\n");
    EXPECT_EQ(on(path, {"exec", "create index i on t (b)"}).out, "done\n");
    EXPECT_EQ(on(path, {"exec", "delete from t returning b"}).out, "B\n-\nx\n(1 row)\n");
    EXPECT_EQ(on(path, {"--json", "exec", "delete from t"}).out, "{\"done\":\"delete\",\"rows\":0}\n");
    EXPECT_EQ(on(path, {"--json", "exec", "insert into t values (1, 'x') returning a"}).out,
              "[\n  {\"A\": 1}\n]\n");
    EXPECT_EQ(stored(), "A 1 ");
}

TEST_F(ShellTransaction, ExecOfAQueryNamesTheCommandForIt) {
    for (const char* query : {"select 'x' from t", "with x as (select 1 as n from t) select n from x"}) {
        const Finished run = on(path, {"exec", query});
        EXPECT_EQ(run.status, 2);
        EXPECT_EQ(run.out, "");
    }
    EXPECT_EQ(on(path, {"exec", "select 'x' from t"}).err,
              "error: exec shows no query\nhint: zmfb query \"select 'x' from t\"\n");
}

}  // namespace
}  // namespace zmfb::test
