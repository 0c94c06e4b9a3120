// A shell, and calls, whose connection to the server breaks.
#include "tests/support/bare_client.h"
#include "tests/support/dialogue.h"
#include "tests/support/environment.h"
#include "tests/support/server.h"
#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

constexpr const char* prompt = "zmfb> ";
constexpr const char* prompt_within = "zmfb*> ";
constexpr const char* is_lost = " is lost; what comes next attaches anew";

class ShellConnection : public Tool {
  protected:
    ShellConnection() {
        setenv("ISC_USER", sysdba, 1);
        setenv("ISC_PASSWORD", sysdba_password, 1);
        EXPECT_EQ(zmfb({"--db", database_, "create"}, "", password()).err, "");
        EXPECT_EQ(zmfb({"--db", database_, "exec", "create table T (A integer)"}, "", password()).err, "");
    }
    static std::vector<std::string> password() {
        return {std::string("ISC_USER=") + sysdba, std::string("ISC_PASSWORD=") + sysdba_password};
    }
    [[nodiscard]] std::vector<std::string> shell() const {
        return command({"--db", database_, "shell"}, {"NO_COLOR=1", password()[0], password()[1]});
    }
    // Ends every other attachment, as an administrator does.
    void end_attachments() const {
        BareClient(database_).execute(
            "delete from mon$attachments where mon$attachment_id <> current_connection and mon$system_flag = "
            "0");
    }
    Server server_;
    std::string database_ = server_.name_of(file("shop.fdb"));
};

TEST_F(ShellConnection, ABrokenOneIsToldAndTheNextStatementAttachesAnew) {
    Dialogue talk(shell());
    talk.expect_prompt(prompt);
    talk.type("insert into t values (1);\n");
    talk.expect("done: insert");
    talk.expect_prompt(prompt);
    server_.kill();
    talk.type("select count(*) from t;\n");
    EXPECT_NE(talk.expect(is_lost).find("error: the query failed"), std::string::npos);
    talk.expect_prompt(prompt);
    talk.type("select count(*) from t;\n");
    talk.expect("error: cannot attach to " + database_);
    talk.expect_prompt(prompt);
    server_.start();
    talk.type("select count(*) as n from t;\n");
    EXPECT_EQ(talk.expect("(1 row)").find("error"), std::string::npos);
    talk.expect_prompt(prompt);
    talk.type(".quit\n");
    EXPECT_EQ(talk.end(), 0);
}

TEST_F(ShellConnection, AnOpenTransactionIsGoneWithItAndItsEndDoesNothing) {
    Dialogue talk(shell());
    talk.expect_prompt(prompt);
    talk.type("starttransaction()\n");
    talk.expect_prompt(prompt_within);
    talk.type("cachedupdate('insert into t values (1)')\n");
    talk.expect_prompt(prompt_within);
    end_attachments();
    talk.type("cachedupdate('insert into t values (2)')\n");
    talk.expect(" is lost, and with it the transaction that was open; what comes next attaches anew");
    talk.expect_prompt(prompt);
    talk.type("cachedupdate('insert into t values (3)')\n");
    talk.expect_prompt(prompt);
    talk.type("commitchanges()\n");
    talk.expect_prompt(prompt);
    talk.type("select 'rows: ' || count(*) from t;\n");
    talk.expect("rows: 0");
    talk.expect_prompt(prompt);
    talk.type(".quit\n");
    EXPECT_EQ(talk.end(), 0);
}

TEST_F(ShellConnection, LinesThatAreReadGoOnTheSameWayAndTheStatusTellsOfIt) {
    const std::string ends_itself =
        "execute block as begin execute statement 'delete from mon$attachments where mon$attachment_id = ' "
        "|| "
        "current_connection on external '" +
        database_ + "' as user '" + sysdba + "' password '" + sysdba_password + "'; end;\n";
    const std::string input = "insert into t values (1);\n" + ends_itself +
                              "select count(*) as n from t;\n.mode csv\nselect count(*) as n from t;\n";
    const Finished run = zmfb({"--db", database_, "shell"}, input, password());
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.err.find(is_lost), std::string::npos) << run.err;
    EXPECT_TRUE(run.out.ends_with("N\r\n1\r\n")) << run.out << run.err;
}

TEST_F(ShellConnection, CommandsOfTheShellTellOfItToo) {
    Dialogue talk(shell());
    talk.expect_prompt(prompt);
    end_attachments();
    talk.type(".tables\n");
    talk.expect(is_lost);
    talk.expect_prompt(prompt);
    talk.type("istable('T')\n");
    talk.expect(".T.");
    talk.expect_prompt(prompt);
    end_attachments();
    talk.type("istable('T')\n");
    talk.expect(is_lost);
    talk.expect_prompt(prompt);
    talk.type(".quit\n");
    EXPECT_EQ(talk.end(), 0);
}

TEST_F(ShellConnection, ACallThatMeetsABrokenOneHasFailedWhateverItAnswers) {
    Dialogue talk(command({"--db", database_, "call", "-"}, password()));
    talk.type("istable('T')\n");
    talk.expect(".T.");
    end_attachments();
    talk.type("istable('T')\n");
    talk.expect(".F.");
    talk.expect(is_lost);
    talk.type("istable('T')\n\x04");
    talk.expect(".T.");
    EXPECT_EQ(talk.end(), 1);
}

}  // namespace
}  // namespace zmfb::test
