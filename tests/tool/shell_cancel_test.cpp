// Ctrl-C while a statement runs or waits for a lock, embedded and on a server.
#include <poll.h>

#include "tests/support/dialogue.h"
#include "tests/support/environment.h"
#include "tests/support/server.h"
#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

constexpr const char* prompt = "zmfb> ";
constexpr const char* prompt_within = "zmfb*> ";
constexpr const char* control_c = "\x03";

enum class Where { embedded, server };

class ShellCancel : public Tool, public ::testing::WithParamInterface<Where> {
  protected:
    ShellCancel() {
        if (GetParam() == Where::server) {
            database_ = Server::shared().name_of(file("shop.fdb"));
            environment_ = {std::string("ISC_USER=") + sysdba,
                            std::string("ISC_PASSWORD=") + sysdba_password};
        }
        EXPECT_EQ(tool({"create"}).err, "");
        tool({"exec", "create table T (A integer primary key, B varchar(10))"});
        tool({"exec", "insert into T values (1, 'x')"});
    }
    Finished tool(std::vector<std::string> words) const {
        words.insert(words.begin(), {"--db", database_});
        return zmfb(words, "", environment_);
    }
    [[nodiscard]] std::vector<std::string> shell() const {
        std::vector<std::string> settings = environment_;
        settings.emplace_back("NO_COLOR=1");
        return command({"--db", database_, "shell"}, settings);
    }
    // Waits until a statement of another attachment with these letters runs.
    void wait_until_runs(const std::string& letters) const {
        const std::string query =
            "select count(*) as n from mon$statements where mon$state = 1 and "
            "mon$attachment_id <> current_connection and mon$sql_text containing '" +
            letters + "'";
        for (int i = 0; i < 300; ++i) {
            if (tool({"query", query, "--mode", "csv"}).out == "N\r\n1\r\n") return;
            ::poll(nullptr, 0, 20);
        }
        FAIL() << letters << " does not run";
    }
    static void say(Dialogue& talk, const std::string& line, const std::string& answer, const char* then) {
        talk.type(line + "\n");
        talk.expect(answer);
        talk.expect_prompt(then);
    }
    static void hold_the_record(Dialogue& holder) {
        holder.expect_prompt(prompt);
        say(holder, "begin", "done: begin", prompt_within);
        say(holder, "update t set b = 'held';", "done: update", prompt_within);
    }
    [[nodiscard]] bool is_server_of(const std::string& version) const {
        const std::string query = "select rdb$get_context('SYSTEM', 'ENGINE_VERSION') as v from rdb$database";
        return GetParam() == Where::server &&
               tool({"query", query, "--mode", "csv"}).out.starts_with("V\r\n" + version);
    }
    [[nodiscard]] std::string stored() const {
        return tool({"query", "select list(A || B) as l from T", "--mode", "csv"}).out;
    }
    std::string database_ = file("shop.fdb");
    std::vector<std::string> environment_;
};

INSTANTIATE_TEST_SUITE_P(Tool, ShellCancel, ::testing::Values(Where::embedded, Where::server),
                         [](const auto& info) {
                             return info.param == Where::embedded ? "Embedded" : "OnAServer";
                         });

TEST_P(ShellCancel, EndsWhatRunsAndTheShellLivesOn) {
    Dialogue talk(shell());
    talk.expect_prompt(prompt);
    talk.type("execute block as declare n bigint = 0; begin while (n >= 0) do n = mod(n + 1, 1000); end;\n");
    wait_until_runs("mod(n + 1, 1000)");
    talk.type(control_c);
    talk.expect("error: interrupted");
    EXPECT_EQ(talk.expect_prompt(prompt).find("if it waited"), std::string::npos);
    say(talk, "select 'still ' || 'here' as t from rdb$database;", "still here", prompt);
    talk.type(".quit\n");
    EXPECT_EQ(talk.end(), 0);
}

// What waits is given up, and whoever has the record is named.
TEST_P(ShellCancel, EndsAWaitForARecordAndSaysWhoHasIt) {
    Dialogue holder(shell());
    hold_the_record(holder);
    say(holder, "insert into t values (2, 'held');", "done: insert", prompt_within);
    const std::string who = "of SYSDBA, process " + std::to_string(holder.pid());
    Dialogue talk(shell());
    talk.expect_prompt(prompt);
    std::vector<std::string> statements{"update t set b = 'm1';", "delete from t where b <> 'm2';",
                                        "insert into t values (2, 'm3');",
                                        "executeupdate(\"update t set b = 'm4'\")"};
    // A server of Firebird 5.0 goes on with it.
    if (!is_server_of("5.")) statements.emplace_back("update t set b = 'm5' returning b;");
    for (const std::string& statement : statements) {
        talk.type(statement + "\n");
        wait_until_runs(statement.substr(statement.find("'m") + 1, 2));
        talk.type(control_c);
        talk.expect("error: interrupted");
        talk.expect("if it waited, then for one of these to end:");
        talk.expect(who);
        talk.expect("has changed T");
        talk.expect_prompt(prompt);
    }
    say(holder, "rollback;", "done: rollback", prompt);
    EXPECT_EQ(stored(), "L\r\n1x\r\n");
    say(talk, "update t set b = 'mine';", "done: update, 1 row", prompt);
    EXPECT_EQ(stored(), "L\r\n1mine\r\n");
}

TEST_P(ShellCancel, WithinATransactionUndoesTheStatementAlone) {
    Dialogue holder(shell());
    hold_the_record(holder);
    Dialogue talk(shell());
    talk.expect_prompt(prompt);
    say(talk, "begin", "done: begin", prompt_within);
    say(talk, "insert into t values (5, 'kept');", "done: insert", prompt_within);
    talk.type("update t set b = 'mine';\n");
    wait_until_runs("mine");
    talk.type(control_c);
    talk.expect("process " + std::to_string(holder.pid()));
    talk.expect_prompt(prompt_within);
    say(talk, "commit", "done: commit", prompt);
    say(holder, "rollback", "done: rollback", prompt);
    EXPECT_EQ(stored(), "L\r\n\"1x,5kept\"\r\n");
}

TEST_P(ShellCancel, AConflictNamesItsOwner) {
    Dialogue holder(shell());
    hold_the_record(holder);
    Dialogue talk(shell());
    talk.expect_prompt(prompt);
    say(talk, "begin", "done: begin", prompt_within);
    talk.type("executeupdate(\"update t set b = 'mine'\")\n");
    talk.expect("concurrent transaction number is ");
    talk.expect("process " + std::to_string(holder.pid()));
    talk.expect_prompt(prompt_within);
}

// Once the other one has committed, the waiting statement changes what is there then.
TEST_P(ShellCancel, AWaitThatIsNotEndedGoesOnBehindTheCommit) {
    Dialogue holder(shell());
    hold_the_record(holder);
    Dialogue talk(shell());
    talk.expect_prompt(prompt);
    talk.type("update t set b = b || '!m1';\n");
    wait_until_runs("m1");
    say(holder, "commit", "done: commit", prompt);
    talk.expect("done: update, 1 row");
    EXPECT_EQ(stored(), "L\r\n1held!m1\r\n");
}

}  // namespace
}  // namespace zmfb::test
