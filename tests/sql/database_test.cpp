// Making databases, environments and attachments.
#include "zmfbconn/database.h"

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "sql/attach.h"
#include "sql/database.h"
#include "sql/state.h"
#include "tests/support/database.h"
#include "tests/support/environment.h"
#include "tests/support/faulty_client.h"

namespace zmfb::test {
namespace {

namespace fs = std::filesystem;
using namespace std::string_view_literals;

class Databases : public Database {
  protected:
    // The name that attaches to a file of this test, wherever the databases of this run are.
    std::string name_of(const std::string& file_name) const {
        const std::string path = file(file_name);
        return on_server() ? database().substr(0, database().find(':') + 1) + path : path;
    }
    static std::string create(std::string_view name) {
        return create_database(name, sysdba, sysdba_password).message();
    }
    static std::string run(std::string_view name, std::string_view script) {
        return run_script(name, sysdba, sysdba_password, script).message();
    }
};

TEST_F(Databases, NewOneIsOfDialectThreeWithoutACharacterSet) {
    ASSERT_EQ(create(name_of("new.fdb")), "");
    EXPECT_EQ(BareClient(name_of("new.fdb"))
                  .rows("select mon$sql_dialect, rdb$character_set_name from mon$database, rdb$database"),
              (Rows{{"3", "NONE"}}));
}

TEST_F(Databases, ExistingFileIsRefusedAndLeftAlone) {
    ASSERT_EQ(create(name_of("new.fdb")), "");
    ASSERT_EQ(run(name_of("new.fdb"), "create table KEPT (A integer);"), "");
    const std::string refusal = create(name_of("new.fdb"));
    EXPECT_NE(refusal.find("File exists"), std::string::npos) << refusal;
    EXPECT_EQ(BareClient(name_of("new.fdb")).rows("select count(*) from KEPT"), (Rows{{"0"}}));
}

TEST_F(Databases, ForeignFileIsRefusedAndLeftAlone) {
    write_file("notes.txt", "not a database");
    EXPECT_NE(create(name_of("notes.txt")), "");
    EXPECT_EQ(read_file(file("notes.txt")), "not a database");
}

TEST_F(Databases, FolderThatIsNotThereIsRefused) {
    const std::string refusal = create(name_of("nowhere/new.fdb"));
    EXPECT_NE(refusal.find("No such file or directory"), std::string::npos) << refusal;
}

TEST_F(Databases, NewOneHasItsNameWhenItIsFilled) {
    std::string during;
    const auto fill = [&](const std::string& name) {
        during = name;
        EXPECT_EQ(fs::exists(file("new.fdb")), on_server());
        return run_script(name, sysdba, sysdba_password, "create table FILLED (A integer);");
    };
    ASSERT_EQ(sql::create_database(name_of("new.fdb"), sysdba, sysdba_password, fill).message(), "");
    EXPECT_EQ(during, name_of("new.fdb") + (on_server() ? "" : "." + std::to_string(::getpid())));
    EXPECT_EQ(BareClient(name_of("new.fdb")).rows("select count(*) from FILLED"), (Rows{{"0"}}));
}

TEST_F(Databases, BlanksAroundTheNameOfANewOneDoNotCount) {
    ASSERT_EQ(create(name_of("new.fdb") + "  "), "");
    EXPECT_TRUE(fs::exists(file("new.fdb")));
}

TEST_F(Databases, OneThatCannotBeFilledIsNotThere) {
    if (on_server()) GTEST_SKIP() << "a server's files are not ours to remove";
    const auto refuse = [](const std::string&) { return Status("no"); };
    EXPECT_EQ(sql::create_database(name_of("new.fdb"), sysdba, "", refuse).message(), "no");
    const auto fail = [](const std::string&) -> Status { throw std::runtime_error("no"); };
    EXPECT_THROW((void)sql::create_database(name_of("new.fdb"), sysdba, "", fail), std::runtime_error);
    EXPECT_TRUE(fs::exists(file("database.fdb")));
    EXPECT_EQ(std::distance(fs::directory_iterator(folder()), fs::directory_iterator()), 1);
}

TEST_F(Databases, NewOneIsReadyForTheDriver) {
    ASSERT_EQ(create(name_of("new.fdb")), "");
    EXPECT_EQ(BareClient(name_of("new.fdb"))
                  .rows("select (select count(*) from rdb$functions where rdb$system_flag = 0), "
                        "(select count(*) from rdb$relations where rdb$relation_name like 'RDDSYS_%') "
                        "from rdb$database"),
              (Rows{{"11", "3"}}));
}

TEST_F(Databases, OneThatCannotBeMadeReadyIsNotThere) {
    struct Case {
        ClientCall call;
        int nth;
        const char* message;
    };
    constexpr int functions = 12;  // and a grant
    const Case cases[] = {
        {ClientCall::attach_database, 1, ""},
        {ClientCall::execute_immediate, functions, ""},
        {ClientCall::execute_immediate, functions + 1, "the driver's functions cannot be called\n"},
        {ClientCall::attach_database, 2, ""},
        {ClientCall::execute_immediate, functions + 2,
         "[FBCONN Error]\nError on creating Table\n FB Error: "},
    };
    for (const Case& one : cases) {
        const std::string name = "new" + std::to_string(&one - cases) + ".fdb";
        SCOPED_TRACE(name);
        FaultyClient client;
        client.fail(one.call, one.nth);
        const std::string message = create(name_of(name));
        EXPECT_TRUE(client.all_failed());
        EXPECT_TRUE(message.starts_with(one.message)) << message;
        EXPECT_NE(message.find("I/O error"), std::string::npos) << message;
        EXPECT_TRUE(on_server() || !fs::exists(file(name)));
    }
}

TEST_F(Databases, OneIsNotFilledInTheFileOfSomebodyElse) {
    if (on_server()) GTEST_SKIP() << "a server makes the file under its name";
    const std::string taken = "new.fdb." + std::to_string(::getpid());
    write_file(taken, "precious");
    EXPECT_EQ(create(name_of("new.fdb")), file(taken) + ": File exists");
    EXPECT_EQ(read_file(file(taken)), "precious");
    // While it is filled somebody makes a file of its name.
    const Status done = sql::create_database(name_of("b.fdb"), sysdba, "", [&](const std::string&) {
        write_file("b.fdb", "precious");
        return Status();
    });
    EXPECT_EQ(done.message(), "the new database cannot be called " + file("b.fdb") + ": File exists");
    EXPECT_EQ(read_file(file("b.fdb")), "precious");
}

TEST_F(Databases, CreatingLeavesNoAttachment) {
    FaultyClient client;
    ASSERT_EQ(create(name_of("new.fdb")), "");
    EXPECT_EQ(client.count(ClientCall::create_database), 1);
    EXPECT_EQ(client.count(ClientCall::detach_database), 1 + client.count(ClientCall::attach_database));
    EXPECT_EQ(client.open_blocks(), 0);
}

TEST_F(Databases, CreatingThatFailsGivesItsBlockBack) {
    FaultyClient client;
    client.fail(ClientCall::create_database);
    EXPECT_TRUE(create(name_of("new.fdb")).starts_with("I/O error"));
    EXPECT_EQ(client.open_blocks(), 0);
    EXPECT_EQ(client.count(ClientCall::detach_database), 0);
}

TEST_F(Databases, NamesAndCredentialsThatTheClientCannotTakeAreRefused) {
    const std::string long_text(256, 'x');
    EXPECT_EQ(create("a\0b.fdb"sv), "The database name or a credential holds a zero byte");
    EXPECT_EQ(create_database(name_of("new.fdb"), long_text, "").message(),
              "The user name is longer than 255 bytes");
    EXPECT_EQ(create_database(name_of("new.fdb"), "", long_text).message(),
              "The password is longer than 255 bytes");
    EXPECT_FALSE(fs::exists(file("new.fdb")));
}

TEST_F(Databases, ScriptRunsEachStatementInATransactionOfItsOwn) {
    ASSERT_EQ(create(name_of("new.fdb")), "");
    EXPECT_EQ(run(name_of("new.fdb"),
                  "-- a comment; with a semicolon;\n"
                  "create table T\n    (A integer);\r\n\n"
                  "  insert into T values (1);\n"
                  "insert into T values (2)"),
              "");
    EXPECT_EQ(BareClient(name_of("new.fdb")).rows("select A from T order by A"), (Rows{{"1"}, {"2"}}));
}

TEST_F(Databases, ScriptMaySayWhatEndsAStatement) {
    EXPECT_EQ(run(database(),
                  "create table T (A integer);\n"
                  "SET TERM ^ ;\n"
                  "create trigger R for T before insert as\nbegin\n  new.A = 2;\nend^\n"
                  "SET TERM ; ^\n"
                  "insert into T values (1);\n"),
              "");
    EXPECT_EQ(rows("select A from T"), (Rows{{"2"}}));
    EXPECT_EQ(rows("select rdb$trigger_source from rdb$triggers where rdb$trigger_name = 'R'"),
              (Rows{{"as\nbegin\n  new.A = 2;\nend"}}));
}

TEST_F(Databases, ScriptStopsAtTheFirstStatementThatFails) {
    FaultyClient client;
    const std::string failure =
        run(database(),
            "create table T (A integer);\ninsert into NOWHERE values (1);\ncreate table U (A integer);");
    EXPECT_EQ(failure,
              "Dynamic SQL Error\nSQL error code = -204\nTable unknown\nNOWHERE\nAt line 1, column 13");
    EXPECT_EQ(rows("select rdb$relation_name from rdb$relations where rdb$relation_name in ('T', 'U')"),
              (Rows{{"T"}}));
    EXPECT_EQ(client.open_transactions(), 0);
    EXPECT_EQ(client.count(ClientCall::detach_database), 1);
}

TEST_F(Databases, ScriptOnAMissingDatabaseSaysSo) {
    const std::string failure = run(name_of("nowhere.fdb"), "create table T (A integer);");
    EXPECT_NE(failure.find("No such file or directory"), std::string::npos) << failure;
}

TEST_F(Databases, CharacterSetsOfTheEngineAreThere) {
    EXPECT_EQ(run(database(),
                  "create table T (A varchar(4) character set iso8859_1);\n"
                  "insert into T values (_iso8859_1 'a\xe7');"),
              "");
    EXPECT_EQ(rows("select char_length(A), octet_length(A) from T"), (Rows{{"2", "2"}}));
}

TEST_F(Databases, EmptyScriptDoesNothing) { EXPECT_EQ(run(database(), "\n-- nothing\n\n"), ""); }

TEST_F(Databases, AttachRefusesWhatTheClientCannotTake) {
    FaultyClient client;
    const std::string long_text(256, 'x');
    const std::string& fits = long_text.substr(1);
    for (const sql::Attachment& refused :
         {sql::attach(database(), long_text, sysdba_password, ""),
          sql::attach(database(), sysdba, long_text, ""),
          sql::attach(database(), sysdba, sysdba_password, long_text), sql::attach("a\0b"sv, sysdba, "", ""),
          sql::attach(database(), "a\0b"sv, "", ""), sql::attach(database(), sysdba, "a\0b"sv, ""),
          sql::attach(database(), sysdba, "", "a\0b"sv)}) {
        EXPECT_EQ(refused.status.sqlcode(), -901);
        EXPECT_EQ(
            refused.message,
            "Unsuccessful execution caused by system error that does not preclude successful execution of "
            "subsequent statements");
        EXPECT_EQ(refused.handle, 0);
    }
    EXPECT_EQ(client.count(ClientCall::attach_database), 0);
    sql::attach(file("nowhere.fdb"), fits, fits, fits);
    EXPECT_EQ(client.count(ClientCall::attach_database), 1);
}

TEST_F(Databases, ObjectWithALongUserNameStaysUnattached) {
    zmFBConn object(database(), std::string(300, 'u'), sysdba_password);
    EXPECT_FALSE(object.isconnected());
    ASSERT_EQ(log_lines().size(), 1u);
    EXPECT_EQ(log_lines()[0].level, 0);
    EXPECT_TRUE(log_lines()[0].text.starts_with("[ERROR] SQLCODE=-901 (")) << log_text();
    EXPECT_EQ(last_engine_message(), "SQL error code = -901\nThe user name is longer than 255 bytes");
}

TEST_F(Databases, AttachToAMissingFileGivesCodeAndText) {
    const sql::Attachment made = sql::attach(file("nowhere.fdb"), sysdba, sysdba_password, "");
    EXPECT_EQ(made.status.sqlcode(), -902);
    EXPECT_EQ(made.message, FaultyClient::io_error_text());
}

TEST_F(Databases, AttachToAnUnreachableServerGivesCodeAndText) {
    const sql::Attachment made = sql::attach("127.0.0.1/1:/nowhere.fdb", sysdba, sysdba_password, "");
    EXPECT_EQ(made.status.sqlcode(), -902);
    EXPECT_NE(last_engine_message().find("127.0.0.1"), std::string::npos) << last_engine_message();
}

class Environments : public Runtime {
  protected:
    std::string make(EnvironmentOptions options) const {
        if (options.folder.empty()) options.folder = file("env");
        return make_environment(options).message();
    }
};

TEST_F(Environments, FolderHoldsWhatTheClientReads) {
    EXPECT_EQ(make({.folder = {},
                    .udf_folder = "/somewhere/udf",
                    .external_file_folders = {"/first", "/second folder"},
                    .extra_settings = {"RemoteServicePort = 3051"}}),
              "");
    EXPECT_EQ(read_file(file("env/firebird.conf")),
              "# Firebird settings of a private environment\n"
              "ServerMode = SuperClassic\nDeadlockTimeout = 1\n"
              "UdfAccess = Restrict /somewhere/udf\n"
              "ExternalFileAccess = Restrict /first;/second folder\n"
              "RemoteServicePort = 3051\n");
    EXPECT_TRUE(fs::exists(file("env/plugins.conf")));
    EXPECT_TRUE(fs::is_directory(file("env/plugins")));
    EXPECT_TRUE(fs::is_directory(file("env/lock")));
}

TEST_F(Environments, FoldersNotGivenAreLeftOut) {
    EXPECT_EQ(make({}), "");
    EXPECT_EQ(
        read_file(file("env/firebird.conf")),
        "# Firebird settings of a private environment\nServerMode = SuperClassic\nDeadlockTimeout = 1\n");
}

TEST_F(Environments, OneThatIsUpToDateIsLeftAlone) {
    ASSERT_EQ(make({}), "");
    const auto before = fs::last_write_time(file("env/firebird.conf"));
    fs::permissions(file("env/firebird.conf"), fs::perms::owner_read);
    EXPECT_EQ(make({}), "");
    EXPECT_EQ(fs::last_write_time(file("env/firebird.conf")), before);
    EXPECT_EQ(fs::status(file("env/firebird.conf")).permissions(), fs::perms::owner_read);
}

TEST_F(Environments, OneThatDiffersIsBroughtUpToDate) {
    ASSERT_EQ(make({.folder = {}, .udf_folder = "/old", .external_file_folders = {}, .extra_settings = {}}),
              "");
    fs::remove(file("env/plugins"));
    fs::create_directory_symlink("/nowhere", file("env/plugins"));
    ASSERT_EQ(make({.folder = {}, .udf_folder = "/new", .external_file_folders = {}, .extra_settings = {}}),
              "");
    EXPECT_NE(read_file(file("env/firebird.conf")).find("Restrict /new\n"), std::string::npos);
    EXPECT_TRUE(fs::is_directory(file("env/plugins")));
    for (const auto& entry : fs::directory_iterator(file("env"))) {
        const std::string name = entry.path().filename();
        EXPECT_EQ(name.find("." + std::to_string(::getpid())), std::string::npos) << name;
    }
}

TEST_F(Environments, WhatFirebirdsOwnInstallerPutsBesideTheLibraryIsTaken) {
    fs::create_directories(file("firebird/plugins"));
    fs::create_directories(file("firebird/intl"));
    const std::vector<std::string> files{"intl/libfbintl.so", "intl/fbintl.conf", "firebird.msg"};
    for (const std::string& name : files) write_file("firebird/" + name, name);
    EnvironmentOptions options{
        .folder = file("env"), .udf_folder = {}, .external_file_folders = {}, .extra_settings = {}};
    options.firebird_folder = file("firebird");
    ASSERT_EQ(make_environment(options).message(), "");
    for (const std::string& name : files) {
        EXPECT_EQ(read_file(file("env/" + name)), name);
        EXPECT_FALSE(fs::is_symlink(file("env/" + name))) << name;
    }
    write_file("firebird/firebird.msg", "of a later version");
    ASSERT_EQ(make_environment(options).message(), "");
    EXPECT_EQ(read_file(file("env/firebird.msg")), "of a later version");
}

TEST_F(Environments, PathsThatTheSettingsCannotHoldAreRefused) {
    for (const char* path : {"relative", "", "/a;b", "/a#b", "/a\nb", "/a\"b", "/$(root)"}) {
        const Status made = make_environment(
            {.folder = path, .udf_folder = {}, .external_file_folders = {}, .extra_settings = {}});
        EXPECT_FALSE(made.ok()) << path;
        EXPECT_NE(
            make({.folder = {}, .udf_folder = {}, .external_file_folders = {path}, .extra_settings = {}}), "")
            << path;
        if (*path != '\0') {
            EXPECT_NE(
                make({.folder = {}, .udf_folder = path, .external_file_folders = {}, .extra_settings = {}}),
                "")
                << path;
        }
    }
}

TEST_F(Environments, FolderThatCannotBeMadeIsReported) {
    write_file("env", "a file is in the way");
    EXPECT_NE(make({}), "");
    EXPECT_EQ(read_file(file("env")), "a file is in the way");
}

TEST(ServerNames, HaveAHostPart) {
    for (const char* name : {"server:/data/x.fdb", "server/3051:/data/x.fdb", "127.0.0.1/3050:alias",
                             "inet://host/x", "/odd:name.fdb"}) {
        EXPECT_TRUE(names_a_server(name)) << name;
    }
    for (const char* name : {"", "x.fdb", "/data/x.fdb", "./x.fdb", ":x.fdb", "/data/x.fdb:"}) {
        EXPECT_FALSE(names_a_server(name)) << name;
    }
}

}  // namespace
}  // namespace zmfb::test
