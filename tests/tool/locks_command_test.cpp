#include <unistd.h>

#include <csignal>

#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

class LocksCommand : public Tool {
  protected:
    LocksCommand() : path(database()) { on(path, {"call", "createtable('CLIENT', {{'NAME', 'C', 10, 0}})"}); }
    // Locks record 4 and opens the table exclusively, as an area of a process of another host.
    void lock_from_afar() const {
        on(path, {"call", "setrecordaslocked('CLIENT', 'CLIENT:A1:7:afar', '4')",
                  "settableusedbyarea(.T., 'CLIENT', 'CLIENT:A1:7:afar', .F.)"});
    }
    std::string path;
};

TEST_F(LocksCommand, ListsEveryLockWithItsHolder) {
    EXPECT_EQ(on(path, {"locks"}).out, "no locks\n");
    lock_from_afar();
    on(path, {"call", "settableaslocked('OTHER', 'OTHER:B:999999999:afar')"});
    EXPECT_EQ(on(path, {"locks"}).out,
              "table   lock    record  area    process  host  state\n"
              "------  ------  ------  ----  ---------  ----  -------\n"
              "OTHER   table           B     999999999  afar  unknown\n"
              "CLIENT  record       4  A1            7  afar  unknown\n");
}

TEST_F(LocksCommand, TellsOfThisHostWhetherTheProcessLives) {
    // The area id of a tool process that has ended by the time its locks are looked at.
    const std::string id = on(path, {"call", "getuniqueareaid('CLIENT', 'A1')"}).out;
    on(path, {"call", "setrecordaslocked('CLIENT', " + id + ", '4')"});
    EXPECT_NE(on(path, {"locks"}).out.find("dead"), std::string::npos);
    // And that of this test, which does live.
    const std::size_t host = id.rfind(':');
    const std::string mine =
        id.substr(0, id.rfind(':', host - 1) + 1) + std::to_string(getpid()) + id.substr(host);
    on(path, {"call", "setrecordaslocked('CLIENT', " + mine + ", '5')"});
    EXPECT_NE(on(path, {"locks"}).out.find("alive"), std::string::npos);
}

TEST_F(LocksCommand, JsonHasTheHolderTakenApart) {
    lock_from_afar();
    EXPECT_EQ(on(path, {"--json", "locks"}).out, R"([
  {
    "table": "CLIENT",
    "lock": "record",
    "record": 4,
    "holder": {
      "table": "CLIENT",
      "area": "A1",
      "process": 7,
      "host": "afar",
      "state": "unknown"
    }
  }
]
)");
}

TEST_F(LocksCommand, OpensListsTheRegistrations) {
    EXPECT_EQ(on(path, {"opens"}).out, "no tables are open\n");
    lock_from_afar();
    EXPECT_EQ(on(path, {"opens"}).out,
              "table   mode       last append  area  process  host  state\n"
              "------  ---------  -----------  ----  -------  ----  -------\n"
              "CLIENT  exclusive               A1          7  afar  unknown\n");
}

TEST_F(LocksCommand, UnlockAsksFirst) {
    lock_from_afar();
    const Finished refused = on(path, {"unlock", "client"}, "n\n");
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.err,
              "Remove every lock on client, whoever holds it? [y/N] error: nothing was unlocked\n");
    EXPECT_EQ(on(path, {"unlock", "client"}, "").status, 1);
    EXPECT_NE(on(path, {"locks"}).out, "no locks\n");
    const Finished done = on(path, {"unlock", "client"}, "y\n");
    EXPECT_EQ(done.status, 0);
    EXPECT_EQ(done.out, "client has no locks now\n");
    EXPECT_EQ(on(path, {"locks"}).out, "no locks\n");
}

TEST_F(LocksCommand, UnlockOfNoTableIsRefused) {
    const Finished run = on(path, {"unlock", "--yes", "nosuch"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "error: there is no table nosuch\n");
}

TEST_F(LocksCommand, ClearSaysHowDangerousItIsAndAsksFirst) {
    lock_from_afar();
    const Finished refused = on(path, {"clear"}, "no\n");
    EXPECT_EQ(refused.status, 1);
    EXPECT_NE(refused.err.find("DANGEROUS"), std::string::npos);
    EXPECT_NE(on(path, {"opens"}).out, "no tables are open\n");
    const Finished done = on(path, {"clear", "--yes"});
    EXPECT_EQ(done.status, 0);
    EXPECT_EQ(done.out, "the system tables are clear\n");
    EXPECT_EQ(done.err, "");
    EXPECT_EQ(on(path, {"opens"}).out, "no tables are open\n");
    EXPECT_EQ(on(path, {"locks"}).out, "no locks\n");
}

TEST_F(LocksCommand, YesIsAnsweredInJsonToo) {
    EXPECT_EQ(on(path, {"--json", "unlock", "-y", "CLIENT"}).out, "{\"unlocked\":\"CLIENT\"}\n");
    EXPECT_EQ(on(path, {"--json", "clear", "-y"}).out, "{\"cleared\":true}\n");
}

TEST_F(LocksCommand, WhatCannotBeReadOrRemovedIsSaidInTheEnginesWords) {
    struct Case {
        std::vector<std::string> before;
        std::vector<std::string> words;
        std::string error;
        std::string engine;
    };
    const std::string refuses = "before delete as begin exception no_way; end";
    const std::string not_cleared = "the system tables could not be cleared";
    lock_from_afar();
    on(path, {"call", "settableaslocked('OTHER', 'OTHER:B:7:afar')"});
    on(path, {"exec", "create exception no_way 'not today'"});
    for (const Case& one : std::vector<Case>{
             {{"create trigger t_rlk for rddsys_rlk " + refuses},
              {"unlock", "-y", "client"},
              "the locks of client could not all be removed",
              "not today"},
             // The other tables are empty afterwards.
             {{}, {"clear", "-y"}, not_cleared, "not today"},
             {{"drop trigger t_rlk", "create trigger t_opn for rddsys_opn " + refuses,
               "insert into rddsys_opn (opn_table, opn_areaid, opn_apprecno, opn_shared) values ('C', "
               "'C:A:7:afar', 0, 'T')"},
              {"clear", "-y"},
              not_cleared,
              "not today"},
             {{"drop index i_rddsys_flk", "alter table rddsys_flk drop flk_areaid"},
              {"locks"},
              "cannot read the system tables",
              "FLK_AREAID"},
         }) {
        for (const std::string& statement : one.before)
            ASSERT_EQ(on(path, {"exec", statement}).status, 0) << statement;
        const Finished run = on(path, one.words);
        EXPECT_EQ(run.status, 1);
        EXPECT_EQ(run.out, "");
        EXPECT_NE(("\n" + run.err).find("\nerror: " + one.error + "\n"), std::string::npos) << run.err;
        EXPECT_NE(run.err.find("\n  " + one.engine + "\n"), std::string::npos) << run.err;
    }
}

TEST_F(LocksCommand, DropOfATableThatSomebodyHasOpenNamesHim) {
    lock_from_afar();
    const Finished refused = on(path, {"drop", "client", "--yes"});
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.err,
              "error: the table CLIENT is open in A1, process 7 on afar\n"
              "hint: \"zmfb opens\" lists what is open; \"zmfb clear\" forgets what is left of programs that "
              "have crashed\n");
    EXPECT_TRUE(has_table(path, "CLIENT"));
    on(path, {"clear", "--yes"});
    EXPECT_EQ(on(path, {"drop", "client", "--yes"}).status, 0);
}

TEST_F(LocksCommand, DropOfATableThatAStatementUsesIsRefusedAndDoesNotWaitForItsEnd) {
    const Finished refused = while_another(path, {"query", endless_query("client")}, [this] {
        return on(path, {"drop", "client", "--yes"});
    });
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.err, "error: the table CLIENT is in use by another program\n");
    EXPECT_TRUE(has_table(path, "CLIENT"));
    EXPECT_EQ(on(path, {"drop", "client", "--yes"}).status, 0) << "of one that was killed the engine lets go";
}

}  // namespace
}  // namespace zmfb::test
