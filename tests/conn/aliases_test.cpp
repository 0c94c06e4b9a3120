#include "tests/support/runtime.h"
#include "zmfbconn/connection.h"

namespace zmfb::test {
namespace {

// The aliases of an object are seen through the log lines of closealltables: one for each, in order.
class Aliases : public Runtime {
  protected:
    std::vector<std::string> announced() {
        log_at(5);
        clear_log();
        object.call("closealltables");
        std::vector<std::string> names;
        for (const LogEntry& entry : log_lines()) names.push_back(entry.text);
        log_at(0);
        return names;
    }
    static std::string closing(const std::string& alias) { return "[FORCED] Trying close alias: " + alias; }

    zmFBConn object;
};

TEST_F(Aliases, AreClosedInTheOrderOfTheirAnnouncement) {
    for (const char* alias : {"A", "B", "A"}) object.call("announcealias", alias);
    EXPECT_EQ(announced(), (std::vector<std::string>{closing("A"), closing("B"), closing("A")}));
}

TEST_F(Aliases, RemovingOneRemovesItsFirstEntryOnly) {
    for (const char* alias : {"A", "B", "A"}) object.call("announcealias", alias);
    object.call("removealias", "A");
    EXPECT_EQ(announced(), (std::vector<std::string>{closing("B"), closing("A")}));
}

TEST_F(Aliases, AreComparedExactly) {
    object.call("announcealias", "CUSTOMER");
    for (const char* other : {"customer", "CUSTOMER ", "CUST", ""}) object.call("removealias", other);
    EXPECT_EQ(announced(), (std::vector<std::string>{closing("CUSTOMER")}));
}

TEST_F(Aliases, RemovingDropsEntriesThatWereEmpty) {
    for (const char* alias : {"A", "  ", "B"}) object.call("announcealias", alias);
    object.call("removealias", "NOSUCH");
    object.call("announcealias", "C");
    EXPECT_EQ(announced(), (std::vector<std::string>{closing("A"), closing("B"), closing("C")}));
}

TEST_F(Aliases, EmptyOnesAreNotClosed) {
    object.call("announcealias", Value());
    object.call("announcealias", "  ");
    EXPECT_EQ(announced(), std::vector<std::string>{});
}

TEST_F(Aliases, ThoseThatAreNoTextAreNeitherClosedNorInTheWay) {
    for (const Value& alias : {Value(5), Value(true), host::array_of("A"), Value("A"), Value(5)})
        object.call("announcealias", alias);
    object.call("removealias", 7);
    EXPECT_EQ(announced(), (std::vector<std::string>{closing("A")}));
    object.call("removealias", "A");
    EXPECT_EQ(announced(), std::vector<std::string>{});
}

}  // namespace
}  // namespace zmfb::test
