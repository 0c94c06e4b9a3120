// A large table: 20,000 rows, as many as ZMFB_ROWS says in the long run.
#include <fmt/format.h>

#include <cstdlib>

#include "tests/tool/browse/browser.h"

namespace zmfb::test {
namespace {

class BrowseManyRows : public Browser {
  protected:
    BrowseManyRows() {
        const char* const given = std::getenv("ZMFB_ROWS");
        if (given != nullptr) count = std::atoi(given);
        execute("delete from customers");
        execute(
            fmt::format("execute block as declare i integer = 0; begin while (i < {}) do begin i = i + 1; "
                        "insert into customers (code, name, city, credit, active) values (mod(:i, 1000), "
                        "'N' || lpad(mod(:i * 7, {}), 8, '0'), 'City', 0, 'T'); end end",
                        count, count));
        Area(connection(), "CUSTOMERS").create_order("NAME", "NAME");
    }
    int count = 20000;
};

TEST_F(BrowseManyRows, AreGoneThroughFromEndToEndInAnOrder) {
    const auto shown = browse({"customers"});
    shown->expect(fmt::format("row 1 of {} ", count));
    shown->press({"o"});
    shown->expect("order NAME: NAME");
    shown->press({"C-End"});
    shown->expect(fmt::format("N{:08}", count - 1));
    shown->expect(fmt::format("row {} of {} ", count, count));
    shown->press({"PageUp", "PageUp"});
    shown->expect(fmt::format("row {} of {} ", count - 40, count));
    shown->press({"C-Home", "PageDown", "PageDown"});
    shown->expect(fmt::format("row 41 of {} ", count));
    shown->expect("N00000059");
    shown->press({"/"});
    shown->type(fmt::format("N{:08}", count / 2));
    shown->press({"Enter"});
    shown->expect(fmt::format("row {} of {} ", count / 2 + 1, count));
    shown->press({"q"});
    shown->expect(Tmux::ended(0));
}

TEST_F(BrowseManyRows, AreGivenUpByControlC) {
    const auto shown = browse({"--query", "select a.code from customers a, customers b"});
    shown->expect("row 1 ");
    shown->press({"C-End"});
    shown->press({"C-c"});
    shown->expect("given up");
    shown->press({"Down"});
    shown->expect("row 2 ");
    shown->press({"q"});
    shown->expect(Tmux::ended(0));
}

}  // namespace
}  // namespace zmfb::test
