#include <algorithm>
#include <string>

#include "tests/support/database.h"
#include "zmfbconn/connection.h"

namespace zmfb::test {
namespace {

/// Methods that end what the others need; the database is gone for later calls otherwise.
bool ends_the_attachment(std::string_view method) { return method == "disconnect" || method == "axit"; }

class EveryMethod : public Database {
  protected:
    /// Calls every method of the table without arguments and then with the named table; returns what was
    /// raised.
    std::vector<std::string> call_all(zmFBConn& object) {
        for (std::size_t i = 0; i < method_count(); ++i) {
            const MethodRow row = method_row(i);
            if (row.kind == "assign" || ends_the_attachment(row.name)) continue;
            object.call(row.name);
            object.call(row.name, "CLIENT", "CLIENT", "CLIENT");
        }
        return raised();
    }
};

bool says_not_built(const std::string& text) { return text.find("built") != std::string::npos; }

TEST_F(EveryMethod, IsBuilt) {
    host::Value field = host::array_of("NAME", "C", 10, 0);
    ASSERT_TRUE(call("createtable", "CLIENT", host::array_of(field)).logical());
    const auto texts = call_all(connection());
    EXPECT_FALSE(texts.empty());  // most of them refuse to work on nothing
    EXPECT_EQ(std::ranges::count_if(texts, says_not_built), 0);
}

TEST_F(EveryMethod, IsBuiltAndHarmlessOnAnObjectWithoutADatabase) {
    zmFBConn object;
    const auto texts = call_all(object);
    EXPECT_FALSE(texts.empty());
    EXPECT_EQ(std::ranges::count_if(texts, says_not_built), 0);
}

TEST_F(EveryMethod, LeavesTheObjectUsable) {
    call_all(connection());
    zmFBConn object = connect();
    EXPECT_TRUE(object.call("istable", "RDDSYS_OPN").logical());
}

}  // namespace
}  // namespace zmfb::test
