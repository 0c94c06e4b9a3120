#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <map>
#include <nlohmann/json.hpp>

#include "tests/support/environment.h"
#include "tests/tool/tool.h"
#include "zmfbconn/connection.h"

namespace zmfb::test {
namespace {

class Usage : public Tool {};

TEST_F(Usage, MethodsListsNameParametersAndKindOneALine) {
    const Finished run = zmfb({"methods"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    std::string expected;
    for (const MethodRow& row : methods()) {
        expected += fmt::format("{}\t{}\t{}\n", row.name, row.parameters.size(), host::kind_name(row.kind));
    }
    EXPECT_EQ(run.out, expected);
}

TEST_F(Usage, WrongUsageEndsWithTwo) {
    for (const std::vector<std::string>& words :
         std::vector<std::vector<std::string>>{{},
                                               {"nosuchcommand"},
                                               {"--nosuchoption", "methods"},
                                               {"call"},
                                               {"import"},
                                               {"struct"},
                                               {"query"},
                                               {"exec"},
                                               {"--log-level", "x", "methods"},
                                               {"tables"},
                                               {"create"}}) {
        const Finished run = zmfb(words);
        EXPECT_EQ(run.status, 2) << (words.empty() ? "" : words[0]);
        EXPECT_NE(run.err, "");
        EXPECT_EQ(run.out, "");
    }
}

TEST_F(Usage, NumbersThatAreNoneAreRefusedWithWhatTheyMayBe) {
    const std::tuple<std::vector<std::string>, std::string> cases[] = {
        {{"browse", "--refresh", "0.1"}, "--refresh: 0.1 is no number of seconds from 0 to 86400"},
        {{"browse", "--refresh", "-1"}, "--refresh: -1 is no number of seconds from 0 to 86400"},
        {{"locks", "--refresh", "0"}, "--refresh: 0 is no number of seconds from 1 to 86400"},
        {{"locks", "--refresh", "99999999999999999999"},
         "--refresh: 99999999999999999999 is no number of seconds from 1 to 86400"},
        {{"log", "-n", "x"}, "--count: x is no number of entries from 0 to 1000000000"},
        {{"import", "--jobs", "0", "a.dbf"}, "--jobs: 0 is no number of processes from 1 to 1000"},
    };
    for (const auto& [words, told] : cases) {
        const Finished run = zmfb(words);
        EXPECT_EQ(run.status, 2);
        EXPECT_EQ(run.err, "error: " + told + "\nhint: zmfb " + words[0] + " --help says more\n");
    }
}

TEST_F(Usage, HelpAndVersionEndWithZero) {
    for (const char* word : {"--help", "--version"}) {
        const Finished run = zmfb({word});
        EXPECT_EQ(run.status, 0);
        EXPECT_NE(run.out, "");
        EXPECT_EQ(run.err, "");
    }
    EXPECT_NE(zmfb({"call", "--help"}).out.find("EXPR"), std::string::npos);
}

TEST_F(Usage, HelpHasTheCommandsInGroupsAndAnExampleOfEach) {
    const std::string help = zmfb({"--help"}).out;
    for (const char* group :
         {"Databases and DBF files", "Tables", "Rows and calls", "Health", "The tool itself"})
        EXPECT_NE(help.find("\n" + std::string(group) + ":\n"), std::string::npos) << group << "\n" << help;
    EXPECT_NE(zmfb({"import", "--help"}).out.find("\nExample:\n  zmfb "), std::string::npos);
}

TEST_F(Usage, HelpOfACommandIsTheSameBothWays) {
    for (const std::vector<std::string>& command :
         std::vector<std::vector<std::string>>{{}, {"import"}, {"matrix"}, {"matrix", "check"}}) {
        std::vector<std::string> behind = command, before = command;
        behind.push_back("--help");
        before.insert(before.begin(), "help");
        const Finished run = zmfb(before);
        EXPECT_EQ(run.status, 0) << run.err;
        EXPECT_EQ(run.out, zmfb(behind).out);
        EXPECT_EQ(run.err, "");
        before.insert(before.begin(), {"--json", "--user", "anna"});
        EXPECT_EQ(zmfb(before).out, run.out);
        before.erase(before.begin());
        EXPECT_EQ(zmfb(before).status, 0);
    }
}

TEST_F(Usage, ADatabaseThatIsNotThereEndsWithThreeAndTheEnginesWords) {
    const Finished run = on(new_database(), {"tables"});
    EXPECT_EQ(run.status, 3);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(lines(run.err).at(0), "error: cannot attach to " + new_database());
    EXPECT_NE(run.err.find("No such file or directory"), std::string::npos);
    EXPECT_FALSE(std::filesystem::exists(new_database()));
}

TEST_F(Usage, AServerThatDoesNotAnswerEndsWithThree) {
    const Finished run = on("127.0.0.1/1:/nowhere.fdb", {"--user", "anna", "tables"});
    EXPECT_EQ(run.status, 3);
    EXPECT_EQ(lines(run.err).at(0), "error: cannot attach to 127.0.0.1/1:/nowhere.fdb");
}

TEST_F(Usage, VersionNamesTheClientLibraryAndTheEngineOfAGivenDatabase) {
    const Finished alone = zmfb({"--version"});
    ASSERT_EQ(lines(alone.out).size(), 2U) << alone.out;
    EXPECT_TRUE(lines(alone.out)[0].starts_with("zmfb ")) << alone.out;
    EXPECT_NE(lines(alone.out)[1].find("Firebird"), std::string::npos) << alone.out;
    const std::string path = database();
    for (const std::vector<std::string>& words :
         std::vector<std::vector<std::string>>{{"--db", path, "--version"}, {"--version", "--db", path}}) {
        const Finished run = zmfb(words);
        EXPECT_EQ(run.status, 0);
        ASSERT_EQ(lines(run.out).size(), 3U) << run.out;
        EXPECT_TRUE(lines(run.out)[2].starts_with("engine ")) << run.out;
        EXPECT_GT(std::stoi(lines(run.out)[2].substr(7)), 1);
    }
    EXPECT_NE(on(as_database("nosuch.fdb"), {"--version"}).out.find("\nengine unknown: cannot attach to "),
              std::string::npos);
}

struct Mistyped {
    std::vector<std::string> words;
    std::string said;
};

TEST_F(Usage, AMistypedCommandOrOptionGetsASuggestion) {
    const Mistyped cases[] = {
        {{"tabels"}, "there is no command tabels\nhint: did you mean \"zmfb tables\"?"},
        {{"help", "improt"}, "there is no command improt\nhint: did you mean \"zmfb import\"?"},
        {{"help", "matrix", "chek"}, "there is no command chek\nhint: did you mean \"zmfb matrix check\"?"},
        {{"matrix", "chek", "m.mtx"}, "there is no command chek\nhint: did you mean \"zmfb matrix check\"?"},
        {{"xylophone"}, "there is no command xylophone\nhint: zmfb --help says more"},
        {{"--jsno", "tables"}, "there is no option --jsno\nhint: did you mean \"--json\"?"},
        {{"import", "--tabel=X", "x.dbf"}, "there is no option --tabel\nhint: did you mean \"--table\"?"},
        {{"import", "--dry-rn"}, "there is no option --dry-rn\nhint: did you mean \"--dry-run\"?"},
        {{"matrix", "apply", "--jsno", "m.mtx"}, "there is no option --jsno\nhint: did you mean \"--json\"?"},
        {{"tables", "--xylophone"}, "there is no option --xylophone\nhint: zmfb tables --help says more"},
        {{"tables", "-x"}, "there is no option -x\nhint: zmfb tables --help says more"},
        {{"query"}, "SQL is required\nhint: zmfb query --help says more"},
    };
    for (const auto& [words, said] : cases) {
        const Finished run = zmfb(words);
        EXPECT_EQ(run.status, 2) << said;
        EXPECT_EQ(run.err, "error: " + said + "\n");
    }
}

TEST_F(Usage, AMistypedMethodGetsASuggestion) {
    const Finished method = zmfb({"call", "istabel('X')"});
    EXPECT_NE(method.err.find("has no Method named: istabel\nhint: did you mean istable?\n"),
              std::string::npos)
        << method.err;
}

TEST_F(Usage, ErrorsOfTheEngineHaveAHint) {
    EXPECT_NE(on(new_database(), {"tables"}).err.find("\nhint: \"zmfb create\" makes a new database\n"),
              std::string::npos);
    EXPECT_NE(on("127.0.0.1/1:/nowhere.fdb", {"--user", "anna", "tables"})
                  .err.find("\nhint: is the server running"),
              std::string::npos);
    write_file("notes.txt", std::string(20000, 'x'));
    EXPECT_NE(on(as_database("notes.txt"), {"tables"}).err.find("\nhint: the file is no"), std::string::npos);
}

TEST_F(Usage, AFolderForLockFilesThatIsNotThereGetsAHintToo) {
    if (on_server()) GTEST_SKIP() << "the lock files are the embedded engine's";
    const Finished run = zmfb({"--db", database(), "tables"}, "",
                              {"FIREBIRD=" + file(""), "FIREBIRD_LOCK=" + file("nowhere")});
    EXPECT_EQ(run.status, 3);
    EXPECT_NE(run.err.find("  cannot use the folder of the engine's lock files, " + file("nowhere") +
                           ": No such file or directory\nhint: FIREBIRD_LOCK names a folder of this user"),
              std::string::npos)
        << run.err;
}

TEST_F(Usage, ADatabaseFileThatMayOnlyBeReadGetsAHintAboutTheFile) {
    if (on_server()) GTEST_SKIP() << "a server's files are not the tool's";
    const std::string path = database();
    ASSERT_EQ(::chmod(path.c_str(), 0444), 0);
    std::filesystem::create_directory(file("cache"));
    std::vector<std::string> settings{"XDG_CACHE_HOME=" + file("cache")};
    if (::geteuid() == 0) {
        // Root may write it all the same.
        if (const std::string why = why_no_other_user(); !why.empty()) GTEST_SKIP() << why;
        ASSERT_EQ(::chown(file("cache").c_str(), 4711, 4711), 0);
        for (const std::string& word : as_user(4711)) settings.push_back(word);
    }
    const Finished run = zmfb({"--db", path, "tables"}, "", settings);
    EXPECT_EQ(run.status, 3);
    EXPECT_NE(run.err.find("\nhint: the file or its disk is read-only for the user who runs the engine"),
              std::string::npos)
        << run.err;
}

TEST_F(Usage, TextsOfAnotherSingleByteSetAreShownAndFound) {
    const std::string path = database();
    on(path, {"call", "createtable('T', {{'NAME', 'C', 10, 0}})"});
    EXPECT_EQ(on(path, {"--encoding", "ISO-8859-7", "exec", "insert into t (name) values ('αβγ')"}).status,
              0);
    EXPECT_EQ(on(path, {"--encoding", "ISO-8859-7", "query", "--mode", "csv", "select name from t"}).out,
              "NAME\r\nαβγ\r\n");
    EXPECT_EQ(
        on(path, {"--encoding", "CP1253", "call", "getrow('T', \"NAME = 'αβγ'\", 'RECNO', '', 0)"}).status,
        0);
    EXPECT_EQ(on(path, {"query", "--mode", "csv", "select name from t"}).out, "NAME\r\náâã\r\n");
    const Finished refused = on(path, {"exec", "insert into t (name) values ('αβγ')"});
    EXPECT_EQ(refused.status, 2);
    EXPECT_EQ(refused.err, "error: the statement has a character outside ISO-8859-1\n");
    EXPECT_EQ(on(path, {"--encoding", "CP1253", "exec", "insert into t (name) values ('ã')"}).err,
              "error: the statement has a character outside CP1253\n");
}

TEST_F(Usage, AnEncodingThatIsNoSingleByteSetIsRefused) {
    for (const char* name :
         {"nosuch", "UTF-8", "UTF-16", "SHIFT_JIS", "EUC-JP", "EBCDIC-US", "CP866//IGNORE", "CP866 "}) {
        const Finished run = zmfb({"--encoding", name, "methods"});
        EXPECT_EQ(run.status, 2) << name;
        EXPECT_EQ(run.err, "error: " + std::string(name) +
                               " is no single-byte character set\nhint: iconv --list has the names\n");
    }
}

TEST_F(Usage, TheDatabaseMayComeFromTheEnvironment) {
    const std::string path = database();
    const Finished run = zmfb({"call", "isconnected()"}, "", {"ZMFB_DB=" + path});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out, ".T.\n");
}

TEST_F(Usage, ADatabaseThatIsNoneOfTheDriversEndsWithThreeAndSaysWhatHelps) {
    const std::string path = database();
    on(path, {"exec", "drop function zmpadl"});
    const Finished run = on(path, {"tables"});
    EXPECT_EQ(run.status, 3);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(
        run.err,
        "raised: [FBCONN Error]\n  The DataBase:\n  " + path +
            "\n  Does not have all needed UDFs installed!!\nerror: " + path +
            " is no database the driver can use\nhint: \"zmfb doctor\" says what it misses, and how to add "
            "that\n");
}

TEST_F(Usage, MethodsAsJsonHaveTheirHelp) {
    const auto listed = nlohmann::json::parse(zmfb({"--json", "methods"}).out);
    ASSERT_EQ(listed.size(), methods().size());
    for (std::size_t i = 0; i < listed.size(); ++i) {
        EXPECT_EQ(listed[i]["name"], methods()[i].name);
        EXPECT_EQ(listed[i]["parameters"], methods()[i].parameters.size());
        EXPECT_EQ(listed[i]["kind"], host::kind_name(methods()[i].kind));
        EXPECT_EQ(listed[i]["help"], methods()[i].help);
    }
}

TEST_F(Usage, MethodsAsJsonHaveTheirSignatures) {
    std::map<std::string, std::string> found;
    for (const auto& row : nlohmann::json::parse(zmfb({"--json", "methods"}).out)) {
        found[row["name"].get<std::string>() + " " + row["kind"].get<std::string>()] = row["signature"];
    }
    const std::map<std::string, std::string> expected{
        {"setrecordaslocked exported", "setrecordaslocked(tbl: table, areaid: area, recno: record): logical"},
        {"fopnfile protected", "fopnfile(name: text, [mode: text]): number"},
        {"closealltables exported", "closealltables(): NIL"},
        {"getlockedrecords exported", "getlockedrecords(tbl: table, areaid: area): records"},
        {"applymatrix exported", "applymatrix(matrix: matrix, [simulate: logical]): {ok, log}"},
        {"sdbname access", "sdbname: text"},
        {"bconn assign", "bconn := value"},
    };
    for (const auto& [method, signature] : expected) EXPECT_EQ(found[method], signature);
}

}  // namespace
}  // namespace zmfb::test
