// A large table: 20,000 rows, as many as ZMFB_ROWS says in the long run.
#include <fmt/format.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <thread>

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

// Of the processor, in hundredths of a second.
long time_used(pid_t process) {
    std::ifstream about(fmt::format("/proc/{}/stat", process));
    std::string word;
    for (int i = 0; i < 13; ++i) about >> word;
    long user = 0, system = 0;
    about >> user >> system;
    return user + system;
}

// Ctrl-C gives up what runs, and ends the program when nothing does: it is pressed when the program is at
// work for sure.
TEST_F(BrowseManyRows, AreGivenUpByControlC) {
    const Tmux shown({"sh", "-c",
                      "echo $$ > " + file("pid") + "; exec " ZMFB_TOOL " --db " + database() +
                          " browse --query 'select a.code from customers a, customers b'"},
                     80, 24);
    shown.expect("row 1 ");
    pid_t process = 0;
    std::ifstream(file("pid")) >> process;
    ASSERT_GT(process, 1);
    const long before = time_used(process);
    shown.press({"C-End"});
    constexpr long at_work = 50;
    while (time_used(process) < before + at_work) std::this_thread::sleep_for(std::chrono::milliseconds(20));
    shown.press({"C-c"});
    shown.expect("given up");
    shown.press({"Down"});
    shown.expect("row 2 ");
    shown.press({"q"});
    shown.expect(Tmux::ended(0));
}

}  // namespace
}  // namespace zmfb::test
