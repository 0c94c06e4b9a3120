// What others do while one looks: changes, locks, and the list of them.
#include "tests/tool/browse/editing.h"

namespace zmfb::test {
namespace {

using BrowseOthers = Editing;

// How a changed cell looks.
const std::string lit = "\x1B[43m";

TEST_F(BrowseOthers, ChangeCellsThatAreLitForAMoment) {
    const auto shown = at_column("CODE", {"--refresh", "1"});
    std::string painted;
    wait_until([&] {
        execute("update CUSTOMERS set CREDIT = CREDIT + 1 where RECNO = 3");
        painted = shown->screen({"-e"});
        return painted.find(lit) != std::string::npos;
    });
    EXPECT_NE(painted.find("Siobh"), std::string::npos);
    EXPECT_GT(painted.find(lit), painted.find("Siobh"));
    EXPECT_LT(painted.find(lit), painted.find("Dubois"));
    EXPECT_EQ(painted.find(lit), painted.rfind(lit)) << "one cell";
    wait_until([&] { return shown->screen({"-e"}).find(lit) == std::string::npos; });
}

TEST_F(BrowseOthers, AddAndDeleteRowsAndTheCursorStays) {
    const auto shown = at_column("CODE", {"--refresh", "1"});
    shown->press({"Down", "Down"});
    shown->expect("record 3 ");
    execute("delete from CUSTOMERS where RECNO in (1, 4)");
    execute("insert into CUSTOMERS (NAME) values ('the newest one')");
    const std::string screen = shown->expect("the newest one");
    EXPECT_EQ(screen.find("Ana"), std::string::npos);
    EXPECT_EQ(screen.find("Ren"), std::string::npos);
    shown->expect("record 3 ");
    execute("delete from CUSTOMERS where RECNO = 3");
    shown->expect("record 5 ");
}

TEST_F(BrowseOthers, AreReadAgainInTheOrder) {
    make_orders();
    const auto shown = browse({"customers", "--refresh", "1"});
    shown->expect("record 1 ");
    shown->press({"o"});
    shown->expect("order ");
    execute("insert into CUSTOMERS (NAME, CREDIT) values ('Bert', 500)");
    shown->expect("Bert");
    shown->expect("record 1 ");
    execute("insert into CUSTOMERS (NAME, CREDIT) values ('Aaron', -500)");
    shown->expect("Aaron");
    shown->expect("record 1 ");
}

TEST_F(BrowseOthers, ReadNothingByThemselvesWithoutRefresh) {
    const auto shown = at_column("CODE", {"--refresh", "0"});
    execute("update CUSTOMERS set CITY = 'Porto' where RECNO = 3");
    shown->press({"Down"});
    EXPECT_EQ(shown->expect("record 2 ").find("Porto"), std::string::npos);
    shown->press({"F5"});
    shown->expect("Porto");
}

TEST_F(BrowseOthers, LocksAreMarked) {
    Area till(connection(), "CUSTOMERS", {.alias = "TILL"});
    till.go(3);
    const auto shown = at_column("CODE", {"--refresh", "1"});
    {
        const Held held = till.lock();
        shown->expect("3*Siobh");
    }
    shown->expect("3║Siobh");
    till.lock_table();
    shown->expect("locked by " + Holder(till.id()).words());
    till.unlock_table();
    wait_until([&] { return shown->screen().find("locked by") == std::string::npos; });
}

TEST_F(BrowseOthers, LocksAndRegistrationsAreShownLive) {
    const auto shown = at_column("CODE", {"--refresh", "1"}, 100);
    shown->press({"l"});
    shown->expect("no locks");
    shown->expect("browse");
    Area till(connection(), "CUSTOMERS", {.alias = "TILL"});
    shown->expect("TILL");
    {
        const Held held = till.lock();
        shown->expect("Locks 1 ");
        shown->expect("seen since");
    }
    shown->expect("Locks 0 ");
    shown->press({"Escape"});
    shown->expect("record 1 ");
}

TEST_F(BrowseOthers, LocksAreWatchedAlone) {
    Area till(connection(), "CUSTOMERS", {.alias = "TILL"});
    std::optional<Held> held = till.lock();
    const Tmux shown({ZMFB_TOOL, "--db", database(), "locks", "--watch", "--refresh", "1"}, 100, 24);
    const std::string screen = shown.expect("Locks 1 ");
    EXPECT_NE(screen.find("CUSTOMERS  record       1  TILL"), std::string::npos) << screen;
    EXPECT_NE(screen.find("CUSTOMERS  shared  TILL"), std::string::npos) << screen;
    held.reset();
    shown.expect("no locks");
    shown.press({"q"});
    shown.expect(Tmux::ended(0));
}

TEST_F(BrowseOthers, LocksAreWatchedOnATerminalOnly) {
    const Finished refused = run({ZMFB_TOOL, "--db", database(), "locks", "--watch"});
    EXPECT_EQ(refused.status, 2);
    EXPECT_EQ(refused.out, "");
    EXPECT_EQ(refused.err,
              "error: --watch shows locks on a terminal, which standard input and output are not\n"
              "hint: zmfb locks lists them once\n");
}

}  // namespace
}  // namespace zmfb::test
