// Imports into a server that is as it was installed, from a disk that it does not see.
#include <filesystem>

#include "tests/support/dbf_builder.h"
#include "tests/support/environment.h"
#include "tests/support/memo_builder.h"
#include "tests/support/server.h"
#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

class ImportFar : public Tool {
  protected:
    ImportFar() {
        std::filesystem::create_directory(file("mine"));
        std::filesystem::create_directory(file("shown"));
    }
    static std::vector<std::string> login() {
        return {std::string("ISC_USER=") + sysdba, std::string("ISC_PASSWORD=") + sysdba_password};
    }
    Finished as_sysdba(const std::string& database, std::vector<std::string> words) const {
        words.insert(words.begin(), {"--db", database});
        return zmfb(words, "", login());
    }
    // Runs zmfb where the folder "mine" is another disk, which no other process sees: with what lies in
    // "shown".
    Finished from_far(const std::string& database, std::vector<std::string> words) const {
        std::vector<std::string> command{"unshare",
                                         "--mount",
                                         "--map-root-user",
                                         "sh",
                                         "-c",
                                         "mount -t tmpfs none '" + file("mine") + "' && cp '" +
                                             file("shown") + "'/* '" + file("mine") + "' && rm '" +
                                             file("shown") + "'/* && exec \"$@\"",
                                         "sh",
                                         ZMFB_TOOL,
                                         "--db",
                                         database};
        command.insert(command.end(), words.begin(), words.end());
        return run(command, "", login());
    }
    // Why there can be no such disk here; "" when there can.
    std::string why_not_far() const {
        const Finished tried =
            run({"unshare", "--mount", "--map-root-user", "mount", "-t", "tmpfs", "none", file("mine")});
        return tried.status == 0 ? "" : "this user may not mount anything: " + tried.err;
    }
    std::string query(const std::string& database, const std::string& text) const {
        const Finished found = as_sysdba(database, {"query", "--mode", "csv", text});
        EXPECT_EQ(found.status, 0) << found.err;
        return found.out.substr(std::min(found.out.size(), found.out.find('\n') + 1));
    }
    void show(const std::string& name, const DbfBuilder& dbf) const { dbf.write(file("shown/" + name)); }
};

DbfBuilder people() { return DbfBuilder().type(0xF5).field("NAME", 'C', 8).field("NOTE", 'M', 10); }

TEST_F(ImportFar, AServerWithDefaultSettingsNeedsToSeeNothing) {
    if (const std::string why = why_not_far(); !why.empty()) GTEST_SKIP() << why;
    ServerSetup setup = setup_of_this_run();
    setup.as_it_comes = true;
    const Server server(setup);
    const std::string database = server.name_of(file("far.fdb"));
    ASSERT_EQ(as_sysdba(database, {"create"}).err, "");

    MemoBuilder memos(MemoFormat::foxpro, 64);
    const std::string block = std::to_string(memos.add(std::string(50000, 'x')));
    write_file("shown/people.fpt", memos.bytes());
    show("people.dbf", people().record({"Ana", block}).record({"Bob", ""}, '*'));
    show("towns.dbf", DbfBuilder().field("TOWN", 'C', 8).record({"Porto"}));
    const Finished run = from_far(database, {"import", file("mine"), "--jobs", "2", "--mark-deleted"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_FALSE(std::filesystem::exists(file("mine/people.dbf"))) << "the server could see it";
    EXPECT_EQ(
        query(database, "select trim(name), char_length(note), deleted_, recno from people order by recno"),
        "Ana,50000,F,1\r\nBob,,T,2\r\n");
    EXPECT_EQ(query(database, "select trim(town) from towns"), "Porto\r\n");

    show("towns.dbf", DbfBuilder().field("TOWN", 'C', 8).record({"Lisboa"}).record({"Faro"}));
    EXPECT_EQ(from_far(database, {"import", file("mine/towns.dbf"), "--append", "--mark-deleted"}).status, 0);
    EXPECT_EQ(query(database, "select trim(town), recno from towns order by recno"),
              "Porto,1\r\nLisboa,2\r\nFaro,3\r\n");
    show("towns.dbf", DbfBuilder().field("TOWN", 'C', 8).record({"Viseu"}));
    EXPECT_EQ(from_far(database, {"import", file("mine/towns.dbf"), "--replace", "--yes"}).status, 0);
    EXPECT_EQ(query(database, "select trim(town), recno from towns"), "Viseu,1\r\n");
    EXPECT_EQ(as_sysdba(database, {"call", "counttablerecords('PEOPLE')"}).out, "2\n");

    const Finished external =
        as_sysdba(database, {"exec", "create table E external file '" + file("e.dat") + "' (A char(1))"});
    const Finished inserted = as_sysdba(database, {"exec", "insert into E values ('a')"});
    EXPECT_NE(external.status + inserted.status, 0) << "the server allows external files";
}

}  // namespace
}  // namespace zmfb::test
