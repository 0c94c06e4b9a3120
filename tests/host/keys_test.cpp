// INKEY, on a full screen and without one.
#include <unistd.h>

#include <chrono>

#include "on_screen.h"
#include "tests/support/show.h"

namespace zmfb::host {
namespace {

using host_test::on_screen;
using test::perform;
using test::Performance;
using test::Stage;

double seconds_of(const std::function<void()>& body) {
    const auto start = std::chrono::steady_clock::now();
    body();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

struct KeyCase {
    std::string_view typed;
    int code;
};

TEST(Keys, HaveTheirCodes) {
    const KeyCase cases[] = {
        {"a", 97},         {"\r", 13},        {"\x1B", 27},    {"\t", 9},       {"\x7F", 8},
        {"\xE9", 0xE9},    {"\x01", 1},       {"\x1BOA", 5},   {"\x1BOB", 24},  {"\x1BOD", 19},
        {"\x1BOC", 4},     {"\x1BOH", 1},     {"\x1BOF", 6},   {"\x1B[5~", 18}, {"\x1B[6~", 3},
        {"\x1B[2~", 22},   {"\x1B[3~", 7},    {"\x1BOP", 28},  {"\x1BOQ", -1},  {"\x1B[21~", -9},
        {"\x1B[23~", -40}, {"\x1B[24~", -41}, {"\x1B[Z", 271}, {"\n", 13},      {"\x1BOM", 13},
    };
    const Performance performance = on_screen([&](const Stage& stage) {
        for (const auto& [typed, code] : cases) {
            stage.type(typed);
            stage.report(test::show(inkey(5)));
        }
    });
    std::string expected;
    for (const auto& [typed, code] : cases) expected += std::to_string(code) + "\n";
    EXPECT_EQ(performance.report, expected);
}

TEST(Keys, AreWaitedForAsLongAsAsked) {
    const Performance performance = on_screen([](const Stage& stage) {
        Value key;
        const auto report = [&](const Value& seconds) {
            const double took = seconds_of([&] { key = inkey(seconds); });
            stage.report(test::show(key) + (took < 0.15 ? " at once" : took < 3 ? " later" : " too late"));
        };
        report({});
        report(-1);
        report(0.3);
        stage.type("k");
        report(10);
        stage.type("x");
        report(0);
        stage.type("pq");
        ::usleep(100000);
        report({});
        report({});
        report({});
    });
    EXPECT_EQ(
        performance.report,
        "0 at once\n0 at once\n0 later\n107 at once\n120 at once\n112 at once\n113 at once\n0 at once\n");
}

TEST(Keys, AreNotReadWithoutAFullScreen) {
    const Performance performance = perform(12, 40, "xterm", [](const Stage& stage) {
        stage.type("keys\n");
        const double paused = seconds_of([] { inkey(0.3); });
        const double at_once = seconds_of([] { inkey(0); });
        char buffer[16];
        const ssize_t got = ::read(STDIN_FILENO, buffer, sizeof buffer);
        stage.report(paused >= 0.3 && at_once < 0.15 ? "waited" : "wrong");
        stage.report(std::string_view(buffer, got < 0 ? 0 : static_cast<std::size_t>(got)));
    });
    EXPECT_EQ(performance.report, "waited\nkeys\n\n");
}

}  // namespace
}  // namespace zmfb::host
