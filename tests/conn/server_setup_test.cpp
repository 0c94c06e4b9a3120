// The servers of the tests: which Firebird they are, and what they allow.
#include <gtest/gtest.h>

#include "sql/database.h"
#include "tests/support/bare_client.h"
#include "tests/support/environment.h"
#include "tests/support/process.h"
#include "tests/support/server.h"

namespace zmfb::test {
namespace {

std::string new_database(const Server& server) {
    const std::string name = server.name_of(server.folder() / "new.fdb");
    must_succeed(sql::create_database(name, sysdba, sysdba_password));
    return name;
}

std::string why_no_external_file(const std::string& database) {
    try {
        BareClient(database).execute("create table E external '" + (process_folder() / "e").string() +
                                     "' (A char(1))");
        BareClient(database).rows("select * from E");
    } catch (const std::runtime_error& failure) {
        return failure.what();
    }
    return "";
}

TEST(ServerSetup, TheServerIsTheFirebirdOfTheRun) {
    const ServerSetup setup = setup_of_this_run();
    const Finished told =
        run({server_program(setup), "-z"}, "", server_environment(process_folder() / "environment", setup));
    const Server server(setup);
    const std::string version =
        BareClient(new_database(server))
            .rows("select rdb$get_context('SYSTEM', 'ENGINE_VERSION') from rdb$database")[0][0];
    EXPECT_NE(told.out.find("LI-V" + version + "."), std::string::npos) << version << '\n' << told.out;
}

TEST(ServerSetup, AsItComesItAllowsNoExternalFilesAndElseItDoes) {
    ServerSetup setup = setup_of_this_run();
    setup.as_it_comes = true;
    const Server as_it_comes(setup);
    EXPECT_NE(why_no_external_file(new_database(as_it_comes)).find("Use of external file at location"),
              std::string::npos);
    setup.as_it_comes = false;
    const Server open(setup);
    EXPECT_EQ(why_no_external_file(new_database(open)), "");
}

TEST(ServerSetup, FurtherSettingsCount) {
    ServerSetup setup = setup_of_this_run();
    setup.settings = {"DatabaseAccess = None"};
    const Server closed(setup);
    EXPECT_THROW(new_database(closed), std::runtime_error);
}

}  // namespace
}  // namespace zmfb::test
