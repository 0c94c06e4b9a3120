#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "tests/support/dialogue.h"
#include "tests/support/environment.h"
#include "tests/support/server.h"
#include "tests/tool/tool.h"
#include "zmfbconn/database.h"

namespace zmfb::test {
namespace {

class DoctorCommand : public Tool {
  protected:
    // How the line of the external tables begins, which a server as it was installed does not allow.
    static std::string of_external_tables() {
        return why_no_external_files().empty() ? "[ok] external tables: a row was written and read\n"
                                               : "[note] external tables: ";
    }
    DoctorCommand() : path(database()) {}
    // What --json says of one check.
    nlohmann::json check(const std::string& name) const {
        const Finished run = on(path, {"--json", "doctor"});
        const auto all = nlohmann::json::parse(run.out);
        EXPECT_EQ(all["ok"].get<bool>(), run.status == 0);
        for (const auto& one : all["checks"]) {
            if (one["check"] == name) return one;
        }
        ADD_FAILURE() << name << " is not in\n" << run.out;
        return {};
    }
    std::string path;
};

TEST_F(DoctorCommand, AFreshDatabaseIsWell) {
    const Finished run = on(path, {"doctor"});
    EXPECT_EQ(run.status, 0) << run.out;
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out.find("[bad]"), std::string::npos) << run.out;
    for (const std::string& part : std::vector<std::string>{
             "[ok] client library: ", "[ok] log: ", "[ok] attach: ", "[ok] engine: Firebird ",
             "[ok] functions declared: all eleven, stored ones\n",
             "[ok] functions callable: ", "[ok] character set: NONE, a byte for each character\n",
             "[ok] data-file folder: /tmp: ", of_external_tables(), "[ok] system tables: ",
             "[ok] dead processes: ", "[ok] tables: none of the driver's is half made\n",
             "[ok] leftovers: ", "[note] validity: ", "gfix -v -full -user SYSDBA "}) {
        EXPECT_NE(run.out.find(part), std::string::npos) << part << " is not in\n" << run.out;
    }
}

TEST_F(DoctorCommand, ItLeavesNothingBehind) {
    const std::string before = on(path, {"tables"}).out;
    on(path, {"doctor"});
    EXPECT_EQ(on(path, {"tables"}).out, before);
}

TEST_F(DoctorCommand, ADatabaseThatIsNotThereEndsWithThree) {
    const Finished run = on(as_database("nosuch.fdb"), {"doctor"});
    EXPECT_EQ(run.status, 3);
    EXPECT_NE(run.out.find("[bad] attach: cannot attach to " + as_database("nosuch.fdb")), std::string::npos)
        << run.out;
    EXPECT_NE(run.out.find("zmfb create"), std::string::npos);
    EXPECT_EQ(zmfb({"doctor"}).status, 2);
}

TEST_F(DoctorCommand, MissingFunctionsAreNamed) {
    on(path, {"exec", "drop function zmpadl"});
    const auto found = check("functions declared");
    EXPECT_EQ(found["state"], "bad");
    EXPECT_EQ(found["text"], "missing: ZMPADL");
    EXPECT_EQ(found["advice"], "zmfb functions stored");
    EXPECT_EQ(check("functions callable")["state"], "ok");
}

TEST_F(DoctorCommand, ADefaultCharacterSetOfMoreThanAByteIsBadAndUtf8WorthKnowing) {
    on(path, {"exec", "alter database set default character set UTF8"});
    const auto known = check("character set");
    EXPECT_EQ(known["state"], "note");
    EXPECT_EQ(known["text"],
              "UTF8: the tool converts the texts of imports and queries; methods want a set of "
              "one byte a character");
    on(path, {"exec", "alter database set default character set SJIS_0208"});
    const auto found = check("character set");
    EXPECT_EQ(found["state"], "bad");
    EXPECT_EQ(
        found["text"],
        "the database's default character set SJIS_0208 takes up to 2 bytes a character; DBF files go in "
        "and out of databases where it takes one");
    on(path, {"exec", "alter database set default character set WIN1252"});
    EXPECT_EQ(check("character set")["text"], "WIN1252, a byte for each character");
}

TEST_F(DoctorCommand, AFunctionOfAnotherEntryPointIsNotCallable) {
    on(path,
       {"call", "executeupdate('drop function zmpadl')",
        "executeupdate(\"declare external function zmpadl cstring(10), integer returns cstring(10) free_it "
        "entry_point 'nosuch' module_name 'zmrddudfs'\")"});
    const auto declared = check("functions declared");
    EXPECT_EQ(declared["state"], "bad");
    EXPECT_EQ(declared["text"],
              "neither all the module's nor all stored ones with the parameters they should have");
    const auto found = check("functions callable");
    EXPECT_EQ(found["state"], "bad");
    EXPECT_TRUE(found["text"].get<std::string>().starts_with("ZMPADL failed: ")) << found;
}

TEST_F(DoctorCommand, ASystemTableWithoutItsUniqueIndexIsBadAndTheAdviceHelps) {
    on(path, {"exec", "drop index I_RDDSYS_FLK"});
    EXPECT_EQ(check("system tables")["state"], "bad");
    const auto advice = check("system tables")["advice"].get<std::string>();
    EXPECT_EQ(advice, "zmfb exec \"create unique index I_RDDSYS_FLK on RDDSYS_FLK (FLK_TABLE)\"");
    on(path, {"exec", advice.substr(11, advice.size() - 12)});
    EXPECT_EQ(check("system tables")["state"], "ok");
}

TEST_F(DoctorCommand, LocksOfDeadProcessesOfThisHostAreCounted) {
    const pid_t child = fork();
    if (child == 0) _exit(0);
    waitpid(child, nullptr, 0);
    std::string host = on(path, {"call", "gethostname()"}).out;
    host = host.substr(1, host.size() - 3);
    const std::string id = "'C:A:" + std::to_string(child) + ":" + host + "'";
    on(path, {"call", "setrecordaslocked('C', " + id + ", '4')", "settableaslocked('C', " + id + ")",
              "setrecordaslocked('C', 'C:A:7:afar', '5')"});
    const auto found = check("dead processes");
    EXPECT_EQ(found["state"], "bad");
    EXPECT_EQ(found["text"], "process " + std::to_string(child) + " left 2 rows");
    on(path, {"clear", "--yes"});
    EXPECT_EQ(check("dead processes")["state"], "ok");
}

TEST_F(DoctorCommand, AHalfMadeTableIsNamedWithWhatItLacks) {
    on(path, {"call", "createtable('C', {{'NAME', 'C', 10, 0}})", "droptrigger('T_C_DELETES')"});
    const auto found = check("tables");
    EXPECT_EQ(found["state"], "bad");
    EXPECT_EQ(found["text"], "C lacks a trigger");
    EXPECT_EQ(found["advice"], "when a table has no rows: zmfb call 'droptable(\"C\")', and make it anew");
    on(path, {"call", "droptable('C')"});
    EXPECT_EQ(check("tables")["state"], "ok");
    on(path, {"exec", "create table D (RDD_AREAID varchar(50), RECNO double precision)"});
    EXPECT_EQ(check("tables")["text"], "D lacks its description, its index, a generator, a trigger");
}

TEST_F(DoctorCommand, HalfMadeThingsAreListedWithWhatDropsThem) {
    on(path, {"call", "createtable('C', {{'NAME', 'C', 10, 0}})",
              "createtableexternal('EXT_C', {{'NAME', 'C', 10, 0}}, '/tmp/nosuch.dat')"});
    on(path, {"exec", "alter table c add rddaux_name char(10), add rddaux_born char(10)"});
    on(path, {"exec", "create trigger c_nulldates for c before insert as begin end"});
    const auto found = check("leftovers");
    EXPECT_EQ(found["state"], "bad");
    EXPECT_EQ(
        found["advice"],
        "when nobody is at work: zmfb exec \"drop table EXT_C\"; zmfb exec \"drop trigger C_NULLDATES\"; "
        "zmfb exec \"alter table C alter RDDAUX_BORN to BORN\"; "
        "zmfb exec \"alter table C drop RDDAUX_NAME\"");
    for (const char* statement :
         {"drop table EXT_C", "drop trigger C_NULLDATES", "alter table C alter RDDAUX_BORN to BORN",
          "alter table C drop RDDAUX_NAME"}) {
        EXPECT_EQ(on(path, {"exec", statement}).status, 0);
    }
    EXPECT_EQ(check("leftovers")["state"], "ok");
}

TEST_F(DoctorCommand, AnUnwritableLogIsANoteOnly) {
    const Finished run = zmfb({"--db", path, "doctor"}, "", {"ZMFB_TEST_LOG=/nowhere/log"});
    EXPECT_EQ(run.status, 0);
    EXPECT_NE(run.out.find("[note] log: /nowhere/log is not there and cannot be made"), std::string::npos)
        << run.out;
}

TEST_F(DoctorCommand, ADatabaseOnAServerIsLookedAtInTheSameWay) {
    const std::string name = Server::shared().name_of(file("on_server.fdb"));
    const std::vector<std::string> secret{std::string("ISC_PASSWORD=") + sysdba_password};
    EXPECT_EQ(zmfb({"--db", name, "--user", "SYSDBA", "create"}, "", secret).status, 0);
    const Finished run = zmfb({"--db", name, "--user", "SYSDBA", "doctor"}, "", secret);
    EXPECT_EQ(run.status, 0) << run.out;
    EXPECT_EQ(run.err, "");
    EXPECT_NE(run.out.find(of_external_tables()), std::string::npos) << run.out;
    const Finished refused = zmfb({"--db", name, "--user", "SYSDBA", "doctor"}, "", {"ISC_PASSWORD=wrong"});
    EXPECT_EQ(refused.status, 3);
    EXPECT_NE(refused.out.find("[bad] attach: "), std::string::npos) << refused.out;
    EXPECT_NE(refused.out.find("       check --user and the password"), std::string::npos) << refused.out;
}

// An engine whose settings let no external file be used, and no function be loaded. Nothing but two methods
// needs the one; without the other there is no driver.
TEST_F(DoctorCommand, FunctionsThatTheEngineDoesNotLoadAreBadAndExternalTablesANote) {
    if (on_server()) GTEST_SKIP() << "the server's settings are not the client's to choose";
    ASSERT_EQ(on(path, {"functions", "module"}).status, 0);
    const std::string settings = file("engine");
    const Status made = make_environment(
        {.folder = settings, .udf_folder = "", .external_file_folders = {}, .extra_settings = {}});
    ASSERT_TRUE(made.ok()) << made.message();
    const std::vector<std::string> environment{"FIREBIRD=" + settings, "FIREBIRD_LOCK=" + settings + "/lock"};
    const Finished run = zmfb({"--db", path, "doctor"}, "", environment);
    EXPECT_EQ(run.status, 1) << run.out << run.err;
    EXPECT_NE(run.out.find("[note] external tables: "), std::string::npos) << run.out;
    EXPECT_NE(
        run.out.find("\n       only bringdbf and exiletable use them: ExternalFileAccess in the engine's "
                     "firebird.conf must allow that folder; docs/deployment.md says how\n"),
        std::string::npos)
        << run.out;
    EXPECT_NE(run.out.find("[bad] functions callable: "), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("\n       \"zmfb functions stored\" makes functions that need no module; or "),
              std::string::npos)
        << run.out;
    EXPECT_NE(run.out.find("UdfAccess"), std::string::npos) << run.out;
    ASSERT_EQ(zmfb({"--db", path, "functions", "stored"}, "", environment).status, 0);
    const Finished well = zmfb({"--db", path, "doctor"}, "", environment);
    EXPECT_EQ(well.status, 0) << well.out;
    EXPECT_NE(well.out.find("[note] external tables: "), std::string::npos) << well.out;
}

TEST_F(DoctorCommand, ALogThatIsNotThereYetWillBeMade) {
    const Finished run = zmfb({"--db", path, "doctor"}, "", {"ZMFB_TEST_LOG=" + file("new.log")});
    EXPECT_NE(run.out.find("[ok] log: " + file("new.log") + " will be made by the first entry\n"),
              std::string::npos)
        << run.out;
}

TEST_F(DoctorCommand, AMissingSystemTableIsNamed) {
    on(path, {"exec", "drop table RDDSYS_FLK"});
    const auto found = check("system tables");
    EXPECT_EQ(found["state"], "bad");
    EXPECT_EQ(found["text"], "RDDSYS_FLK is missing");
    EXPECT_EQ(found["advice"], "zmfb prepare");
    EXPECT_EQ(check("system tables")["state"], "bad") << "looking makes nothing";
}

TEST_F(DoctorCommand, ACheckThatCannotBeMadeIsBadInOneLineAndTheOthersGoOn) {
    on(path, {"exec", "drop index I_RDDSYS_FLK"});
    ASSERT_EQ(on(path, {"exec", "alter table RDDSYS_FLK drop FLK_AREAID"}).status, 0);
    const Finished run = on(path, {"doctor"});
    EXPECT_EQ(run.status, 1);
    const auto shown = lines(run.out);
    const auto failed = std::ranges::find_if(
        shown, [](const std::string& line) { return line.starts_with("[bad] database: "); });
    ASSERT_NE(failed, shown.end()) << run.out;
    EXPECT_TRUE(failed->starts_with("[bad] database: cannot read the engine's tables: ")) << *failed;
    EXPECT_NE(failed->find("FLK_AREAID"), std::string::npos) << *failed;
    EXPECT_NE(run.out.find("\n[ok] tables: "), std::string::npos) << run.out;
}

// Such a name is none of the driver's, and what it says to a shell or a terminal is not to be found out.
TEST_F(DoctorCommand, NothingIsAdvisedOfNamesThatNeedQuotes) {
    on(path, {"exec", "create table \"D\x1b[2J\" (RDD_AREAID varchar(50), RECNO double precision)"});
    on(path, {"exec", "create table \"c; drop table D\" (RDDAUX_A integer, \"RDDAUX_b\" integer)"});
    on(path, {"exec", "create table \"EXT_ D\" external '/tmp/nosuch.dat' (A char(1))"});
    on(path, {"exec", "create trigger \"d --_NULLDATES\" for \"EXT_ D\" before insert as begin end"});
    on(path, {"exec", "create sequence \"G_d_I\""});
    const Finished run = on(path, {"doctor"});
    EXPECT_EQ(run.status, 0) << run.out;
    EXPECT_EQ(run.out.find('\x1b'), std::string::npos);
    EXPECT_NE(run.out.find("\n[ok] tables: "), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("\n[ok] leftovers: "), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("\n[ok] generators: "), std::string::npos) << run.out;
}

TEST_F(DoctorCommand, GeneratorsOfADroppedTableAreNamedAndTheAdviceHelps) {
    on(path, {"call", "createtable('C', {{'NAME', 'C', 10, 0}})"});
    on(path, {"exec", "drop table C"});
    on(path, {"exec", "create sequence G_COUNTED_I"});
    on(path, {"exec", "create procedure counts as declare n bigint; begin n = gen_id(G_COUNTED_I, 1); end"});
    EXPECT_TRUE(
        on(path, {"exec", "create sequence G_C_I"})
            .err.ends_with("  Sequence G_C_I already exists\nhint: a table of that name was dropped without "
                           "its generators; \"zmfb doctor\" says what drops them\n"));
    const auto found = check("generators");
    EXPECT_EQ(found["state"], "note");
    EXPECT_EQ(found["text"], "without a table: G_C_D, G_C_I; a new table of that name is refused");
    EXPECT_EQ(found["advice"],
              "unless a program of your own uses them: zmfb call 'dropgenerator(\"G_C_D\")'; zmfb call "
              "'dropgenerator(\"G_C_I\")'");
    on(path, {"call", "dropgenerator(\"G_C_D\")", "dropgenerator(\"G_C_I\")"});
    EXPECT_EQ(check("generators")["state"], "ok");
}

TEST_F(DoctorCommand, StatesHaveColoursOnATerminal) {
    on(path, {"exec", "drop function zmpadl"});
    for (const std::string setting : {"NO_COLOR=", "NO_COLOR=1"}) {
        Dialogue talk(command({"--db", path, "doctor"}, {setting}));
        const std::string shown = talk.expect("gfix ");
        EXPECT_EQ(talk.end(), 1);
        for (const std::string state : {"\x1b[32m[ok]", "\x1b[31m[bad]", "\x1b[33m[note]"}) {
            EXPECT_EQ(shown.find(state + "\x1b[0m ") != std::string::npos, setting == "NO_COLOR=") << state;
        }
    }
}

}  // namespace
}  // namespace zmfb::test
