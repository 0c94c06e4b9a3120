// The greeting box, on terminals of several kinds and sizes.
#include <unistd.h>

#include "host/screen.h"
#include "tests/support/runtime.h"
#include "tests/support/terminal.h"
#include "zmfbconn/connection.h"

namespace zmfb::test {
namespace {

using Greeting = Runtime;

// Fills the screen with letters in several colours, as an application that is at work.
void paint() {
    const int columns = static_cast<int>(host::maxcol().number()) + 1;
    constexpr std::string_view colours[] = {"W/N", "GR+/B", "BG/R", "N/W"};
    for (int row = 0; row <= static_cast<int>(host::maxrow().number()); ++row) {
        host::devpos(row, 0);
        host::devout(std::string(static_cast<std::size_t>(columns), static_cast<char>('a' + row % 26)),
                     colours[row % 4]);
    }
}

Performance on_full_screen(int rows, int columns, const std::string& kind,
                           const std::function<void(const Stage&)>& body) {
    return perform(rows, columns, kind, [&](const Stage& stage) {
        host::screen_begin();
        paint();
        stage.snapshot("before");
        body(stage);
        stage.snapshot("after");
        host::screen_end();
    });
}

// What a row of the box must show, in colours as the terminal counts them.
void expect_row(const TerminalScreen& screen, int row, std::string_view text, int foreground,
                int background) {
    constexpr int column = 79 - 50;
    EXPECT_EQ(screen.line(row).substr(column, text.size()), text);
    for (int i = 0; i < static_cast<int>(text.size()); ++i) {
        Cell expected{
            .byte = text[static_cast<std::size_t>(i)], .foreground = foreground, .background = background};
        EXPECT_TRUE(screen.at(row, column + i) == expected) << "row " << row << ", column " << column + i;
    }
    const char around = static_cast<char>('a' + row % 26);
    EXPECT_EQ(screen.line(row).substr(0, column), std::string(column, around));
    EXPECT_EQ(screen.line(row).substr(column + 43), std::string(80 - column - 43, around));
}

TEST_F(Greeting, TheBoxStandsInTheLowerRightCornerUntilItIsHidden) {
    const Performance performance = on_full_screen(24, 80, "xterm", [](const Stage& stage) {
        zmFBConn object;
        object.call("showgreetscr");
        stage.snapshot("during");
        object.call("hidegreetscr");
    });
    EXPECT_EQ(performance.status, 0) << performance.report;
    const TerminalScreen& during = performance.snapshot("during");
    std::string version(library_version());
    version = "zmfbconn " + version + " ";
    version.insert(0, 43 - version.size(), ' ');
    expect_row(during, 19, "      *** Connecting to Firebird ***       ", 6, 0);
    expect_row(during, 20, std::string(43, ' '), 6, 4);
    expect_row(during, 22, version, 6, 4);
    EXPECT_EQ(during.line(21).substr(29, 43), "   Please wait...         driver ZMRDDFIRE ");
    for (int column = 0; column < 43; ++column) {
        const Cell& cell = during.at(21, 29 + column);
        EXPECT_EQ(cell.background, 4);
        if (cell.byte == ' ') continue;
        EXPECT_EQ(cell.foreground, column >= 3 && column < 17 ? 3 : 6) << column;
    }
    for (const int row : {0, 18, 23}) EXPECT_EQ(during.line(row), performance.snapshot("before").line(row));
    EXPECT_TRUE(performance.snapshot("after") == performance.snapshot("before"));
}

TEST_F(Greeting, AnAttachShowsItAndPutsTheScreenBack) {
    for (const char* kind : {"xterm", "xterm-256color", "vt100"}) {
        const Performance performance = on_full_screen(24, 80, kind, [&](const Stage& stage) {
            zmFBConn object(file("no/such/database.fdb"), "SYSDBA", "masterkey");
            stage.report(show(object.call("iscurseson")) + show(object.isconnected()));
        });
        EXPECT_EQ(performance.report, ".T..F.\n");
        EXPECT_NE(performance.bytes.find("*** Connecting to Firebird ***"), std::string::npos);
        EXPECT_NE(performance.bytes.find("Please wait..."), std::string::npos);
        EXPECT_TRUE(performance.snapshot("after") == performance.snapshot("before")) << kind;
    }
}

TEST_F(Greeting, AnObjectWithoutADatabaseShowsNothing) {
    const Performance performance =
        on_full_screen(24, 80, "xterm", [](const Stage&) { const zmFBConn object; });
    EXPECT_EQ(performance.status, 0);
    EXPECT_EQ(performance.bytes.find("Connecting"), std::string::npos);
}

TEST_F(Greeting, ABatchProgramWritesNoByte) {
    const Performance performance = perform(24, 80, "xterm", [&](const Stage& stage) {
        ::dup2(STDOUT_FILENO, STDERR_FILENO);
        zmFBConn object(file("no/such/database.fdb"), "SYSDBA", "masterkey");
        object.call("showgreetscr");
        object.call("hidegreetscr");
        stage.report(show(object.call("iscurseson")) + show(object.isconnected()));
    });
    EXPECT_EQ(performance.status, 0);
    EXPECT_EQ(performance.report, ".F..F.\n");
    EXPECT_EQ(performance.bytes, "");
}

TEST_F(Greeting, AScreenSmallerThanTheBoxShowsTheRestOfIt) {
    for (const auto& [rows, columns] : {std::pair{4, 80}, {24, 50}, {3, 20}, {1, 10}}) {
        const Performance performance = on_full_screen(rows, columns, "xterm", [](const Stage& stage) {
            zmFBConn object;
            object.call("showgreetscr");
            stage.snapshot("during");
            object.call("hidegreetscr");
        });
        EXPECT_EQ(performance.status, 0) << rows << " x " << columns << performance.report;
        EXPECT_EQ(performance.snapshot("during") == performance.snapshot("before"), rows == 1);
        EXPECT_TRUE(performance.snapshot("after") == performance.snapshot("before"))
            << rows << " x " << columns;
    }
}

TEST_F(Greeting, HidingWithoutShowingChangesNothing) {
    const Performance performance = on_full_screen(24, 80, "xterm", [](const Stage&) {
        zmFBConn object;
        object.call("hidegreetscr");
    });
    EXPECT_EQ(performance.status, 0);
    EXPECT_TRUE(performance.snapshot("after") == performance.snapshot("before"));
}

TEST_F(Greeting, TheScreenOfTheLastShowingIsPutBack) {
    const Performance performance = on_full_screen(24, 80, "xterm", [](const Stage& stage) {
        zmFBConn object;
        object.call("showgreetscr");
        object.call("hidegreetscr");
        host::devpos(22, 40);
        host::devout("changed meanwhile");
        stage.snapshot("changed");
        object.call("showgreetscr");
        object.call("hidegreetscr");
        stage.snapshot("hidden");
        host::devpos(22, 40);
        host::devout("changed once more");
        object.call("hidegreetscr");
    });
    EXPECT_TRUE(performance.snapshot("hidden") == performance.snapshot("changed"));
    EXPECT_TRUE(performance.snapshot("after") == performance.snapshot("changed"));
}

}  // namespace
}  // namespace zmfb::test
