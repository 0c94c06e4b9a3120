// Putting the driver's functions into a database, in the place of others.
#include <fmt/format.h>

#include <string_view>

#include "tests/support/database.h"
#include "tests/support/environment.h"
#include "tests/support/faulty_client.h"

namespace zmfb::test {
namespace {

class InstallFunctions : public Database {
  protected:
    [[nodiscard]] std::string install(Functions functions) const {
        return install_functions(database(), sysdba, sysdba_password, functions).message();
    }
    // How many of the eleven are the module's, and how many are stored.
    [[nodiscard]] Row counts() const {
        return rows(
            "select sum(iif(rdb$module_name = 'zmrddudfs', 1, 0)), sum(iif(rdb$module_name is null, 1, 0)) "
            "from rdb$functions where rdb$system_flag = 0")[0];
    }
    [[nodiscard]] Rows rights() const {
        return rows(
            "select rdb$user, rdb$relation_name, rdb$grant_option from rdb$user_privileges where "
            "rdb$object_type = 15 and rdb$user_type <> 15 and rdb$user <> 'SYSDBA' order by 1, 2");
    }
};

const Row all_stored{"0", "11"}, all_modules{"11", "0"};

TEST_F(InstallFunctions, NewDatabasesHaveStoredOnesUnlessAskedOtherwise) {
    must_succeed(create_database(file("a.fdb"), sysdba, sysdba_password));
    EXPECT_EQ(
        BareClient(file("a.fdb")).rows("select count(*) from rdb$functions where rdb$module_name is null"),
        (Rows{{"11"}}));
    must_succeed(create_database(file("b.fdb"), sysdba, sysdba_password, Functions::module));
    EXPECT_EQ(BareClient(file("b.fdb"))
                  .rows("select count(*) from rdb$functions where rdb$module_name = 'zmrddudfs'"),
              (Rows{{"11"}}));
}

TEST_F(InstallFunctions, StoredOnesTakeThePlaceOfTheModulesWithAllThatUsesThem) {
    ASSERT_EQ(install(Functions::module), "");
    execute("create table T (V varchar(20), U computed by (zmupper(V)))");
    execute("create view W as select zmtrim(V) L from T");
    execute("create index I_T on T computed by (cast(zmupper(V) as char(20)))");
    execute("create trigger TR for T before insert as begin new.V = zmpadr(new.V, 3); end");
    execute("create procedure P returns (X varchar(10)) as begin X = zmpadl('a', 3); suspend; end");
    execute("create domain D as varchar(10) check (zmtrim(value) <> '')");
    execute("grant execute on function ZMUPPER to ANNA with grant option");
    execute("insert into T (V) values ('ab')");
    ASSERT_EQ(install(Functions::stored), "");
    EXPECT_EQ(counts(), all_stored);
    execute("insert into T (V) values ('c')");
    EXPECT_EQ(
        rows("select U || '|', L || '|', '|' || X from T join W on L = trim(V) cross join P order by 1"),
        (Rows{{"AB |", "ab|", "|  a"}, {"C  |", "c|", "|  a"}}));
    EXPECT_EQ(rows("select V from T where cast(zmupper(V) as char(20)) = 'C'"), (Rows{{"c"}}));
    EXPECT_EQ(rights(), (Rows{{"ANNA", "ZMUPPER", "1"}}));
}

TEST_F(InstallFunctions, TheModulesTakeThePlaceOfStoredOnesWithTheirRights) {
    ASSERT_EQ(install(Functions::stored), "");
    execute("create role CLERKS");
    execute("grant execute on function ZMTRIM to role CLERKS");
    execute("grant execute on function ZMTRIM to user \"O'\"\"Brien\" with grant option");
    execute("grant execute on function ZMSTR to public");
    const Rows before = rights();
    EXPECT_EQ(before.size(), 3U);
    ASSERT_EQ(install(Functions::module), "");
    EXPECT_EQ(counts(), all_modules);
    EXPECT_EQ(rights(), before);
    EXPECT_EQ(rows("select zmstrzero(-1.5, 8, 2) from rdb$database"), (Rows{{"-0001.50"}}));
    ASSERT_EQ(install(Functions::module), "");
    EXPECT_EQ(rights(), before);
}

TEST_F(InstallFunctions, WhatUsesAStoredOneKeepsAllOfThemStored) {
    ASSERT_EQ(install(Functions::stored), "");
    execute("create view W as select zmpadl('x', 3) L from rdb$database");
    const std::string refusal = install(Functions::module);
    EXPECT_NE(refusal.find("there are 1 dependencies"), std::string::npos) << refusal;
    EXPECT_EQ(counts(), all_stored);
    EXPECT_EQ(rows("select L from W"), (Rows{{"  x"}}));
}

TEST_F(InstallFunctions, WhoMayPrintZerosNeedNoRightToPrintBlanks) {
    ASSERT_EQ(install(Functions::stored), "");
    execute("grant execute on function ZMSTRZERO to ANNA");
    const char as_anna[] = {isc_dpb_user_name, 4, 'A', 'N', 'N', 'A'};
    if (on_server()) GTEST_SKIP() << "a server asks for a password";
    BareClient anna(database(), std::string(as_anna, sizeof as_anna));
    EXPECT_EQ(anna.rows("select zmstrzero(1, 3, 0) from rdb$database"), (Rows{{"001"}}));
    EXPECT_THROW(anna.rows("select zmstr(1, 3, 0) from rdb$database"), std::runtime_error);
}

TEST_F(InstallFunctions, AllAreThereOrNone) {
    for (const auto& [before, wanted, last] : {std::tuple(Functions::module, Functions::stored, 12),
                                               std::tuple(Functions::stored, Functions::module, 11)}) {
        ASSERT_EQ(install(before), "");
        const Row were = counts();
        FaultyClient client;
        client.fail(ClientCall::execute_immediate, last);
        EXPECT_TRUE(install(wanted).starts_with("I/O error"));
        EXPECT_TRUE(client.all_failed());
        EXPECT_EQ(client.open_transactions(), 0);
        EXPECT_EQ(counts(), were);
    }
}

TEST_F(InstallFunctions, OneIsCalledInTheEnd) {
    FaultyClient client;
    client.fail(ClientCall::execute_immediate, 13);
    EXPECT_TRUE(install(Functions::stored).starts_with("the driver's functions cannot be called\nI/O error"));
}

TEST_F(InstallFunctions, TheyComeIntoADatabaseOfAnotherCharacterSet) {
    for (const Functions functions : {Functions::module, Functions::stored}) {
        execute("alter database set default character set UTF8");
        ASSERT_EQ(install(functions), "");
        EXPECT_EQ(
            rows("select octet_length(zmupper(_utf8 x'C3A7')), octet_length(zmpadr(_utf8 x'C3A7', 5)) from "
                 "rdb$database"),
            (Rows{{"2", "5"}}));
    }
}

}  // namespace
}  // namespace zmfb::test
