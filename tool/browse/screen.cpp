#include "tool/browse/screen.h"

// The macros of the library have names like clear and move.
#define NCURSES_NOMACROS 1
#define NCURSES_WIDECHAR 1
#include <curses.h>
#include <fmt/format.h>
#include <langinfo.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <clocale>
#include <cstdlib>
#include <string>
#include <utility>

#include "tool/browse/cell_text.h"
#include "tool/interrupt.h"
#include "tool/terminal.h"

namespace zmfb::tool::browse {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

SCREEN* terminal = nullptr;
bool has_colour_pairs = false;

// Numbers of keys that the library has none for, behind its own.
enum Further : int { ctrl_home = KEY_MAX + 1, ctrl_end, ctrl_page_up, ctrl_page_down };

// As terminals send them that their descriptions do not tell of.
constexpr std::pair<const char*, int> sequences[] = {
    {"\033[1;5H", ctrl_home},      {"\033[1;5F", ctrl_end}, {"\033[5;5~", ctrl_page_up},
    {"\033[6;5~", ctrl_page_down}, {"\033[H", KEY_HOME},    {"\033OH", KEY_HOME},
    {"\033[1~", KEY_HOME},         {"\033[F", KEY_END},     {"\033OF", KEY_END},
    {"\033[4~", KEY_END},          {"\033[11~", KEY_F(1)},  {"\033OP", KEY_F(1)},
};

Key function_key(int code) {
    if (code >= KEY_F(1) && code <= KEY_F(10))
        return static_cast<Key>(static_cast<std::uint32_t>(Key::f1) +
                                static_cast<std::uint32_t>(code - KEY_F(1)));
    switch (code) {
        case KEY_UP:
            return Key::up;
        case KEY_DOWN:
            return Key::down;
        case KEY_LEFT:
            return Key::left;
        case KEY_RIGHT:
            return Key::right;
        case KEY_PPAGE:
            return Key::page_up;
        case KEY_NPAGE:
            return Key::page_down;
        case KEY_HOME:
            return Key::home;
        case KEY_END:
            return Key::end;
        case ctrl_home:
        case ctrl_page_up:
            return Key::top;
        case ctrl_end:
        case ctrl_page_down:
            return Key::bottom;
        case KEY_IC:
            return Key::insert;
        case KEY_DC:
            return Key::remove;
        case KEY_ENTER:
            return Key::enter;
        case KEY_BACKSPACE:
            return Key::backspace;
        case KEY_RESIZE:
            return Key::resized;
        default:
            return Key::other;
    }
}

Key character_key(wint_t character) {
    if (character == '\r') return Key::enter;
    if (character == '\b') return Key::backspace;
    const Key typed = key(static_cast<char32_t>(character));
    constexpr Key others[] = {Key::tab, Key::enter, Key::escape, Key::backspace};
    const bool known = is_character(typed) || std::ranges::find(others, typed) != std::end(others);
    return known ? typed : Key::other;
}

enum Pair : short { bar_pair = 1, head_pair, cell_pair, memo_pair, changed_pair, problem_pair };

void begin_colours() {
    has_colour_pairs = output_has_colours() && has_colors() && start_color() != ERR;
    if (!has_colour_pairs) return;
    use_default_colors();
    init_pair(bar_pair, COLOR_WHITE, COLOR_BLUE);
    init_pair(head_pair, COLOR_CYAN, -1);
    init_pair(cell_pair, COLOR_BLACK, COLOR_CYAN);
    init_pair(memo_pair, COLOR_GREEN, -1);
    init_pair(changed_pair, COLOR_BLACK, COLOR_YELLOW);
    init_pair(problem_pair, COLOR_RED, -1);
}

struct Painted {
    attr_t attributes;
    short pair;
};

Painted painted(Look look) {
    const bool coloured = has_colour_pairs;
    switch (look) {
        case Look::plain:
            break;
        case Look::bar:
            return {coloured ? A_NORMAL : A_REVERSE, bar_pair};
        case Look::head:
            return {A_BOLD, head_pair};
        case Look::row:
            return {A_BOLD, 0};
        case Look::cell:
            return {coloured ? A_NORMAL : A_REVERSE, cell_pair};
        case Look::null:
            return {A_DIM, 0};
        case Look::memo:
            return {A_NORMAL, memo_pair};
        case Look::changed:
            return {coloured ? A_NORMAL : A_REVERSE | A_BOLD, changed_pair};
        case Look::problem:
            return {A_BOLD, problem_pair};
    }
    return {A_NORMAL, 0};
}

std::wstring wide(std::string_view utf8) {
    std::wstring text(utf8.size(), L'\0');
    std::mbstate_t state{};
    std::string ended(utf8);
    const char* from = ended.c_str();
    const std::size_t size = std::mbsrtowcs(text.data(), &from, text.size(), &state);
    text.resize(size == static_cast<std::size_t>(-1) ? 0 : size);
    return text;
}

}  // namespace

void Screen::require_terminal() {
    if (isatty(STDIN_FILENO) == 0 || !output_is_terminal())
        throw Failure{Exit::usage,
                      "browse shows tables on a terminal, which standard input and output are not", "",
                      "zmfb query writes rows to files and pipes"};
}

Screen::Screen() {
    require_terminal();
    std::setlocale(LC_CTYPE, "");
    if (std::string_view(nl_langinfo(CODESET)) != "UTF-8") std::setlocale(LC_CTYPE, "C.UTF-8");
    terminal = newterm(nullptr, stdout, stdin);
    if (terminal == nullptr) {
        const char* const kind = std::getenv("TERM");
        throw Failure{Exit::usage,
                      fmt::format("there is no terminal of the kind \"{}\"", kind == nullptr ? "" : kind), "",
                      "TERM names the kind; most terminals understand xterm"};
    }
    constexpr int escape_delay = 50;  // milliseconds, in which the rest of a key's sequence has to follow
    set_escdelay(escape_delay);
    cbreak();
    noecho();
    keypad(stdscr, TRUE);
    for (const auto& [sequence, code] : sequences) define_key(sequence, code);
    begin_colours();
    curs_set(0);
    before_being_ended([] { endwin(); });
}

Screen::~Screen() {
    before_being_ended(nullptr);
    endwin();
    delscreen(std::exchange(terminal, nullptr));
}

int Screen::rows() const { return getmaxy(stdscr); }
int Screen::columns() const { return getmaxx(stdscr); }

bool Screen::is_large_enough() {
    if (rows() >= least_rows && columns() >= least_columns) return true;
    clear();
    const std::string words = fmt::format("{} x {} is too small:", columns(), rows());
    put(0, 0, columns(), words);
    put(1, 0, columns(), fmt::format("make it {} x {}", least_columns, least_rows));
    return false;
}

void Screen::clear() {
    werase(stdscr);
    curs_set(0);
}

void Screen::put(int row, int column, int width, std::string_view text, Look look) {
    const int room = std::min(width, columns() - column);
    if (row >= rows() || room <= 0) return;
    const Painted paint = painted(look);
    wattr_set(stdscr, paint.attributes, has_colour_pairs ? paint.pair : short{0}, nullptr);
    wmove(stdscr, row, column);
    waddwstr(stdscr, wide(fitted(text, room)).c_str());
    wattr_set(stdscr, A_NORMAL, 0, nullptr);
}

void Screen::cursor_at(int row, int column) {
    wmove(stdscr, row, column);
    curs_set(1);
}

void Screen::show() { wrefresh(stdscr); }

// In steps: a change of size may be told to another thread.
bool Screen::wait_for_input(milliseconds wait) const {
    constexpr milliseconds step(200);
    pollfd input{STDIN_FILENO, POLLIN, 0};
    const Waiting waiting;
    require_uninterrupted();
    const int ready = ::poll(&input, 1, static_cast<int>(std::clamp(wait, milliseconds(0), step).count()));
    require_uninterrupted();
    if (ready <= 0) return false;
    if ((input.revents & (POLLHUP | POLLERR | POLLNVAL)) != 0)
        throw Failure{Exit::failed, "the terminal has gone"};
    return true;
}

Key Screen::read(milliseconds wait) {
    constexpr int rest_of_a_character = 50;  // milliseconds
    const auto until = steady_clock::now() + wait;
    bool has_input = false;
    for (;;) {
        wint_t typed = 0;
        wtimeout(stdscr, has_input ? rest_of_a_character : 0);
        const int kind = wget_wch(stdscr, &typed);
        if (kind == KEY_CODE_YES) return function_key(static_cast<int>(typed));
        if (kind == OK) return character_key(typed);
        const auto left = std::chrono::duration_cast<milliseconds>(until - steady_clock::now());
        if (left.count() < 0) return Key::none;
        has_input = wait_for_input(left);
    }
}

void Screen::without(const std::function<void()>& work) {
    endwin();
    work();
    fmt::print("\nEnter goes back.");
    std::fflush(stdout);
    while (!wait_for_input(milliseconds(1000))) {
    }
    tcflush(STDIN_FILENO, TCIFLUSH);
    wclear(stdscr);
    wrefresh(stdscr);
}

}  // namespace zmfb::tool::browse
