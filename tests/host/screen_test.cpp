#include "host/screen.h"

#include <fcntl.h>
#include <unistd.h>

#include "errors.h"
#include "folder.h"
#include "host/date.h"
#include "on_screen.h"
#include "tests/support/show.h"
#include "tests/support/terminal.h"
#include "values.h"

#define NCURSES_NOMACROS
#include <curses.h>

namespace zmfb::host {
namespace {

using host_test::columns;
using host_test::in_child;
using host_test::is_same;
using host_test::on_screen;
using host_test::rows;
using test::Cell;
using test::perform;
using test::Performance;
using test::Stage;
using test::TerminalScreen;
using namespace std::string_view_literals;

void say(const Value& row, const Value& column, const Value& value, const Value& colour = {}) {
    devpos(row, column);
    devout(value, colour);
}

// A screen with text, colours and attributes on it.
void paint() {
    for (int row = 0; row < rows; ++row)
        say(row, 0, std::string(columns, static_cast<char>('a' + row)), row % 2 == 0 ? "W/B" : "GR+/R");
    say(3, 5, "underlined", "U/N");
    say(4, 5, "blinking", "R*/G");
    say(5, 5, "inverse", "I");
}

TEST(Screen, NothingReachesTheTerminalOutsideTheFullScreen) {
    const Performance performance = perform(rows, columns, "xterm", [](const Stage& stage) {
        const Value saved = savescreen(0, 0, maxrow(), maxcol());
        say(3, 4, "text", "BG/N");
        restscreen(0, 0, maxrow(), maxcol(), saved);
        inkey();
        screen_end();
        stage.report(test::show(array_of(saved, maxrow(), maxcol(), standard_screen() == nullptr)));
    });
    EXPECT_EQ(performance.status, 0);
    EXPECT_EQ(performance.report, "{NIL, 24, 79, .T.}\n");
    EXPECT_EQ(performance.bytes, "");
}

TEST(Screen, ThereIsNoFullScreenWithoutATerminal) {
    const int outcome = in_child([] {
        const int nowhere = ::open("/dev/null", O_RDWR);
        ::dup2(nowhere, STDIN_FILENO);
        ::dup2(nowhere, STDOUT_FILENO);
        screen_begin();
        return standard_screen() == nullptr ? 0 : 1;
    });
    EXPECT_EQ(outcome, 0);
}

TEST(Screen, ThereIsNoFullScreenOnATerminalOfUnknownKind) {
    const Performance performance = perform(rows, columns, "no-such-terminal", [](const Stage& stage) {
        screen_begin();
        stage.report(standard_screen() == nullptr ? "none" : "a screen");
    });
    EXPECT_EQ(performance.report, "none\n");
    EXPECT_EQ(performance.bytes, "");
}

TEST(Screen, TheLastRowAndColumnAreThoseOfTheTerminal) {
    const Performance performance =
        on_screen([](const Stage& stage) { stage.report(test::show(array_of(maxrow(), maxcol()))); });
    EXPECT_EQ(performance.report, "{11, 39}\n");
}

struct ColourCase {
    const char* kind;
    const char* notation;
    Cell expected;
};

TEST(Screen, ColoursShowAsFarAsTheTerminalHasThem) {
    const ColourCase cases[] = {
        {"xterm", "BG/N", {.byte = 'x', .foreground = 6, .background = 0}},
        {"xterm", "BG/B", {.byte = 'x', .foreground = 6, .background = 4}},
        {"xterm", "GR/B", {.byte = 'x', .foreground = 3, .background = 4}},
        {"xterm", "R/W", {.byte = 'x', .foreground = 1, .background = 7}},
        {"xterm", "GR+/B", {.byte = 'x', .foreground = 3, .background = 4, .bold = true}},
        {"xterm", "7/9", {.byte = 'x', .foreground = 7, .background = 4}},
        {"xterm", "G*/R", {.byte = 'x', .foreground = 2, .background = 1, .blink = true}},
        {"xterm-256color", "GR+/B", {.byte = 'x', .foreground = 11, .background = 4}},
        {"xterm-256color", "7/9", {.byte = 'x', .foreground = 7, .background = 12}},
        {"vt100", "BG/N", {.byte = 'x'}},
        {"vt100", "BG/B", {.byte = 'x', .reverse = true}},
        {"vt100", "W+/N", {.byte = 'x', .bold = true}},
    };
    for (const auto& [kind, notation, expected] : cases) {
        const Performance performance = on_screen(
            [&](const Stage& stage) {
                say(2, 3, "x", notation);
                stage.snapshot("x");
            },
            kind);
        EXPECT_EQ(performance.snapshot("x").at(2, 3), expected) << kind << ' ' << notation;
    }
}

TEST(Screen, EveryPairOfColoursCanBeShownAtOnce) {
    const Performance performance = on_screen(
        [](const Stage& stage) {
            for (int background = 0; background < 8; ++background) {
                for (int foreground = 0; foreground < 16; ++foreground) {
                    say(background, foreground, "x",
                        std::to_string(foreground) + "/" + std::to_string(background));
                }
            }
            stage.snapshot("all");
        },
        "xterm-256color");
    constexpr int in_terminal_order[] = {0, 4, 2, 6, 1, 5, 3, 7};
    for (int background = 0; background < 8; ++background) {
        for (int foreground = 0; foreground < 16; ++foreground) {
            const Cell& cell = performance.snapshot("all").at(background, foreground);
            EXPECT_EQ(cell.background, in_terminal_order[background]);
            EXPECT_EQ(cell.foreground, in_terminal_order[foreground % 8] + foreground / 8 * 8);
        }
    }
}

TEST(Screen, APairForWhichThereIsNoRoomLeftIsWhiteOnBlack) {
    // This terminal has 64 pairs, one of which is its own colours.
    const Performance performance = on_screen([](const Stage& stage) {
        for (int pair = 0; pair < 64; ++pair)
            say(pair / 8, pair % 8, "x", std::to_string(pair % 8) + "/" + std::to_string(pair / 8));
        stage.snapshot("all");
    });
    constexpr int in_terminal_order[] = {0, 4, 2, 6, 1, 5, 3, 7};
    for (int pair = 0; pair < 63; ++pair) {
        const Cell& cell = performance.snapshot("all").at(pair / 8, pair % 8);
        EXPECT_EQ(cell.foreground, in_terminal_order[pair % 8]);
        EXPECT_EQ(cell.background, in_terminal_order[pair / 8]);
    }
    EXPECT_EQ(performance.snapshot("all").at(7, 7), (Cell{.byte = 'x', .foreground = 7, .background = 0}));
}

TEST(Screen, ASavedScreenHasNoMethodsAndNoVariables) {
    const Performance performance = on_screen([](const Stage& stage) {
        const Value saved = savescreen(0, 0, 1, 1);
        host_test::CaughtErrors caught;
        const auto report = [&](const Value& answer) {
            stage.report(test::show(array_of(answer, caught.take_count(), caught.field("gencode"),
                                             caught.field("subcode"), caught.field("description"))));
        };
        Object& object = *saved.object();
        stage.report(test::show(saved));
        report(object.send("Restore", {}));
        report(object.get("Top"));
        object.set("Left", 1);
        report({});
    });
    EXPECT_EQ(performance.report,
              "<object of SCREEN>\n"
              "{NIL, 1, 13, 1004, \"No exported method: Restore\"}\n"
              "{NIL, 1, 16, 1005, \"No exported variable: Top\"}\n"
              "{NIL, 1, 16, 1005, \"No exported variable: Left\"}\n");
}

TEST(Screen, WhatLiesOutsideIsClipped) {
    const Performance performance = on_screen([](const Stage& stage) {
        say(0, -3, "abcdef");
        say(1, -6, "abcdef");
        say(2, 37, "abcdef");
        say(3, 40, "abcdef");
        say(-1, 0, "above");
        say(12, 0, "below");
        say(1e300, -1e300, "far away");
        say(4, -10, std::string(100, 'x'));
        say(11, 39, "!!");
        stage.snapshot("screen");
    });
    EXPECT_EQ(performance.snapshot("screen").text(), "def\n\n" + std::string(37, ' ') + "abc\n\n" +
                                                         std::string(40, 'x') + "\n\n\n\n\n\n\n" +
                                                         std::string(39, ' ') + "!\n");
}

TEST(Screen, TheCursorMovesAlong) {
    const Performance performance = on_screen([](const Stage& stage) {
        say(1, 2, "one");
        devout("two");
        devpos(2, -2);
        devout("abc");
        devout("def");
        stage.snapshot("screen");
    });
    EXPECT_EQ(performance.snapshot("screen").text(), "\n  onetwo\ncdef\n");
}

TEST(Screen, EveryKindOfValueCanBeWritten) {
    const Performance performance = on_screen([](const Stage& stage) {
        const Value values[] = {42, true, false, stod("20070301"sv), Value(), array_of(1)};
        int row = 0;
        for (const Value& value : values) say(row++, 0, value);
        devpos({}, {});
        stage.snapshot("screen");
    });
    EXPECT_EQ(performance.snapshot("screen").text(), "        42\nT\nF\n03/01/07\nNIL\n{ ... }\n");
}

TEST(Screen, ControlCharactersNeverReachTheTerminal) {
    const Performance performance = on_screen([](const Stage& stage) {
        say(1, 0,
            "a\x1B[31mb\0c\td\ne\x7F\x9B"
            "f"sv);
        stage.snapshot("screen");
    });
    EXPECT_EQ(performance.snapshot("screen").text(), "\na [31mb c d e  f\n");
    EXPECT_EQ(performance.bytes.find("\x1B[31mb"), std::string::npos);
}

TEST(Screen, AccentsAreLeftOutOnAUtf8Terminal) {
    const auto shown = [](const char* locale) {
        return on_screen([&](const Stage& stage) {
                   ::setenv("LC_ALL", locale, 1);
                   say(0, 0, "descrição"_l1);
                   stage.snapshot("screen");
               })
            .snapshot("screen")
            .text();
    };
    EXPECT_EQ(shown("C.UTF-8"), "descricao\n");
    EXPECT_EQ(shown("C"), std::string("descrição"_l1) + "\n");
}

TEST(Screen, ASavedScreenComesBackAsItWas) {
    for (const char* kind : {"xterm", "xterm-256color", "linux", "vt100"}) {
        const Performance performance = on_screen(
            [](const Stage& stage) {
                paint();
                stage.snapshot("before");
                const Value saved = savescreen(0, 0, maxrow(), maxcol());
                for (int row = 0; row < rows; ++row) say(row, 0, std::string(columns, '#'), "N/W");
                stage.snapshot("during");
                restscreen(0, 0, maxrow(), maxcol(), saved);
                stage.snapshot("after");
            },
            kind);
        EXPECT_EQ(performance.snapshot("during").line(3), std::string(columns, '#')) << kind;
        EXPECT_EQ(performance.snapshot("before").line(3), "dddddunderlined" + std::string(25, 'd')) << kind;
        EXPECT_TRUE(performance.snapshot("after") == performance.snapshot("before")) << kind;
    }
}

TEST(Screen, APartCanBePutBackInAnotherPlace) {
    const Performance performance = on_screen([](const Stage& stage) {
        say(1, 1, "abc", "R/N");
        say(2, 1, "def");
        const Value saved = savescreen(1, 1, 2, 3);
        restscreen(5, 10, 6, 12, saved);
        restscreen(8, 0, 8, 1, saved);
        restscreen(-1, 38, 20, 99, saved);
        restscreen(9, 9, 3, 3, saved);
        restscreen(40, 0, 50, 5, saved);
        restscreen(0, 0, maxrow(), maxcol(), {});
        restscreen(0, 0, maxrow(), maxcol(), "text");
        restscreen(0, 0, maxrow(), maxcol(), savescreen(5, 5, 2, 2));
        stage.snapshot("screen");
    });
    const TerminalScreen& screen = performance.snapshot("screen");
    EXPECT_EQ(screen.text(), std::string(38, ' ') + "ab\n abc" + std::string(34, ' ') + "de\n def\n\n\n" +
                                 std::string(10, ' ') + "abc\n" + std::string(10, ' ') + "def\n\nab\n");
    EXPECT_EQ(screen.at(5, 10).foreground, 1);
}

TEST(Screen, TheScreenCanBeLeftAndComeBack) {
    const Performance performance = on_screen([](const Stage& stage) {
        say(1, 1, "kept");
        const Value saved = savescreen(0, 0, 3, 3);
        screen_end();
        stage.report(standard_screen() == nullptr ? "left" : "still there");
        say(5, 5, "unseen");
        screen_begin();
        stage.report(standard_screen() == nullptr ? "gone" : "back");
        restscreen(2, 2, 5, 5, saved);
        stage.snapshot("again");
    });
    EXPECT_EQ(performance.report, "left\nback\n");
    EXPECT_EQ(performance.snapshot("again").text(), "\n kept\n\n   kep\n");
    EXPECT_EQ(performance.bytes.find("unseen"), std::string::npos);
}

TEST(Screen, AProgramsOwnCursesScreenCountsToo) {
    const Performance performance = perform(rows, columns, "xterm", [](const Stage& stage) {
        ::initscr();
        ::start_color();
        ::init_pair(1, COLOR_GREEN, COLOR_RED);
        ::mvaddstr(2, 2, "plain");
        ::attron(COLOR_PAIR(1));
        ::mvaddstr(3, 2, "coloured");
        ::refresh();
        stage.snapshot("before");
        screen_begin();
        stage.report(standard_screen() == static_cast<void*>(stdscr) ? "theirs" : "another");
        const Value saved = savescreen(0, 0, maxrow(), maxcol());
        say(3, 4, "over it", "GR/B");
        stage.snapshot("during");
        restscreen(0, 0, maxrow(), maxcol(), saved);
        stage.snapshot("after");
        screen_end();
        stage.report(standard_screen() == nullptr ? "ended" : "left to the program");
        ::endwin();
        stage.report(standard_screen() == nullptr ? "ended" : "left to the program");
        say(1, 1, "unseen");
    });
    EXPECT_EQ(performance.report, "theirs\nleft to the program\nended\n");
    EXPECT_EQ(performance.snapshot("before").at(3, 2), (Cell{.byte = 'c', .foreground = 2, .background = 1}));
    EXPECT_EQ(performance.snapshot("during").at(3, 4), (Cell{.byte = 'o', .foreground = 3, .background = 4}));
    EXPECT_EQ(performance.snapshot("during").at(3, 2), performance.snapshot("before").at(3, 2));
    EXPECT_TRUE(performance.snapshot("after") == performance.snapshot("before"));
    EXPECT_EQ(performance.bytes.find("unseen"), std::string::npos);
}

TEST(Screen, LinesOfOutputGoToTheScreenWhenThereIsOne) {
    const Performance performance = on_screen([](const Stage& stage) {
        const Value values[] = {"a", 1, true, stod("20070301"sv), Value()};
        devpos(2, 5);
        qout(values);
        qout({});
        const Value more[] = {"more"};
        qout(more);
        stage.snapshot("screen");
    });
    EXPECT_EQ(performance.snapshot("screen").text(), "\n\n\na          1 .T. 03/01/07 NIL\n\nmore\n");
}

TEST(Screen, LinesOfOutputAreWrittenPlainlyWithoutOne) {
    const Performance performance = perform(rows, columns, "xterm", [](const Stage&) {
        const Value values[] = {"a\x1B", false};
        qout(values);
        qout({});
    });
    EXPECT_EQ(performance.bytes, "\r\na\x1B .F.\r\n");
}

}  // namespace
}  // namespace zmfb::host
