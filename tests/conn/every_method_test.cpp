#include <algorithm>
#include <string>

#include "tests/support/database.h"
#include "tests/support/faulty_client.h"
#include "tests/transfer/open_files.h"
#include "zmfbconn/connection.h"

namespace zmfb::test {
namespace {

// Methods that end what the others need; the database is gone for later calls otherwise.
bool ends_the_attachment(std::string_view method) { return method == "disconnect" || method == "axit"; }

class EveryMethod : public Database {
  protected:
    // Calls every method of the table without arguments and then with the named table. Returns the names
    // that reached the handler of unknown names.
    std::vector<std::string> call_all(zmFBConn& object) {
        std::vector<std::string> unknown;
        for (const MethodRow& row : methods()) {
            if (row.kind == MethodKind::assign || row.name == "nomethod" || ends_the_attachment(row.name))
                continue;
            forget_raised();
            object.call(row.name);
            object.call(row.name, "CLIENT", "CLIENT", "CLIENT");
            if (std::ranges::any_of(raised(), is_of_unknown_name)) unknown.emplace_back(row.name);
        }
        return unknown;
    }

  private:
    static bool is_of_unknown_name(const std::string& text) {
        return text.find("has no Method named") != std::string::npos;
    }
    CurrentFolder here_{folder()};  // some methods write files where the program is
};

using Names = std::vector<std::string>;

TEST_F(EveryMethod, IsReachedByItsNameAndLeavesWhatItIsNotAskedFor) {
    const host::Value field = host::array_of("NAME", "C", 10, 0);
    for (const char* table : {"CLIENT", "OTHER"})
        ASSERT_TRUE(call("createtable", table, host::array_of(field)).logical());
    execute("insert into OTHER (NAME) values ('kept')");
    EXPECT_EQ(call_all(connection()), Names{"evalmeth"}) << "whose arguments name no method";
    EXPECT_EQ(rows("select NAME from OTHER"), (Rows{{"kept"}}));
    EXPECT_TRUE(call("istable", "OTHER").logical()) << "the object is of use no more";
}

TEST_F(EveryMethod, AsksNothingOfADatabaseWithoutOne) {
    FaultyClient client;
    zmFBConn object;
    EXPECT_EQ(call_all(object), Names{"evalmeth"});
    for (const ClientCall call : {ClientCall::start_transaction, ClientCall::prepare,
                                  ClientCall::execute_immediate, ClientCall::detach_database}) {
        EXPECT_EQ(client.count(call), 0) << name_of(call);
    }
    EXPECT_FALSE(object.isconnected());
}

}  // namespace
}  // namespace zmfb::test
