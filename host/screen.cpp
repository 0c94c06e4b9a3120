#include "host/screen.h"

// The classic curses functions only, and no access to its structures: they are the same in every curses
// library, so that whichever one the program itself is linked with serves here too.
#define NCURSES_NOMACROS
#include <curses.h>
#include <langinfo.h>
#include <locale.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <bitset>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <string>

#include "host/colour.h"
#include "host/date.h"
#include "host/error.h"
#include "host/leaving.h"
#include "host/number.h"

namespace zmfb::host {
namespace {

bool begun_here = false;
SCREEN* own_screen = nullptr;

struct Position {
    std::int64_t row = 0;
    std::int64_t column = 0;
};
Position cursor;

// The part of a region that lies on the screen.
struct Region {
    int top, left, bottom, right;
    [[nodiscard]] bool empty() const { return bottom < top || right < left; }
};

std::int64_t integer_or(const Value& value, std::int64_t otherwise) {
    return value.is(Kind::numeric) ? value.integer() : otherwise;
}

int last_row() { return getmaxy(stdscr) - 1; }
int last_column() { return getmaxx(stdscr) - 1; }

Region clipped(const Value& top, const Value& left, const Value& bottom, const Value& right) {
    const auto rows = static_cast<std::int64_t>(last_row());
    const auto columns = static_cast<std::int64_t>(last_column());
    return {static_cast<int>(std::clamp<std::int64_t>(integer_or(top, 0), 0, rows + 1)),
            static_cast<int>(std::clamp<std::int64_t>(integer_or(left, 0), 0, columns + 1)),
            static_cast<int>(std::clamp<std::int64_t>(integer_or(bottom, rows), -1, rows)),
            static_cast<int>(std::clamp<std::int64_t>(integer_or(right, columns), -1, columns))};
}

// The cells of a region, kept in a window of curses' own, with whatever attributes they have.
class SavedRegion final : public Object {
  public:
    explicit SavedRegion(const Region& region)
        : rows_(region.bottom - region.top + 1), columns_(region.right - region.left + 1) {
        if (region.empty()) return;
        cells_ = newpad(rows_, columns_);
        if (cells_ != nullptr)
            copywin(stdscr, cells_, region.top, region.left, 0, 0, rows_ - 1, columns_ - 1, FALSE);
    }
    ~SavedRegion() override {
        if (cells_ != nullptr) delwin(cells_);
    }

    void put_back(const Region& region) const {
        if (cells_ == nullptr || region.empty()) return;
        const int bottom = std::min(region.bottom, region.top + rows_ - 1);
        const int right = std::min(region.right, region.left + columns_ - 1);
        copywin(cells_, stdscr, 0, 0, region.top, region.left, bottom, right, FALSE);
    }

    [[nodiscard]] std::string_view class_name() const override { return "SCREEN"; }
    Value send(std::string_view name, Args) override {
        return runtime_error(GenCode::no_method, Subcode::no_method,
                             "No exported method: " + std::string(name));
    }
    Value get(std::string_view name) override {
        return runtime_error(GenCode::no_variable, Subcode::no_variable,
                             "No exported variable: " + std::string(name));
    }
    void set(std::string_view name, const Value&) override { get(name); }

  private:
    int rows_;
    int columns_;
    WINDOW* cells_ = nullptr;
};

// The pair of curses for two of its colours: one that has them already, or one that nobody uses, taken from
// the end of the table because programs count theirs from its beginning. 0 when there is none left.
int pair_of(int foreground, int background) {
    constexpr int most_in_an_attribute = 256;
    static std::bitset<most_in_an_attribute> taken;
    for (int pair = std::min(COLOR_PAIRS, most_in_an_attribute) - 1; pair > 0; --pair) {
        const auto number = static_cast<short>(pair);
        short has_foreground = 0;
        short has_background = 0;
        if (pair_content(number, &has_foreground, &has_background) == ERR) continue;
        const bool unused = !taken[static_cast<std::size_t>(pair)] && has_foreground == has_background;
        if (unused) {
            taken.set(static_cast<std::size_t>(pair));
            const auto wanted = static_cast<short>(foreground);
            return init_pair(number, wanted, static_cast<short>(background)) == ERR ? 0 : pair;
        }
        if (has_foreground == foreground && has_background == background) return pair;
    }
    return 0;
}

// Curses counts red as 1 and blue as 4.
int curses_colour(int colour) { return (colour & ~5) | (colour & 1) << 2 | (colour & 4) >> 2; }

chtype attribute_of(const Colour& colour) {
    constexpr int bright = 8;
    chtype attribute = A_NORMAL;
    if (colour.blink) attribute |= A_BLINK;
    if (colour.underline) attribute |= A_UNDERLINE;
    if (colour.hidden) attribute |= A_INVIS;
    if (colour.inverse) attribute |= A_REVERSE;
    int foreground = colour.foreground;
    int background = colour.background;
    if (COLORS <= 0) {
        if (background % bright != 0 && !colour.inverse) attribute |= A_REVERSE;
        return foreground >= bright ? attribute | A_BOLD : attribute;
    }
    if (COLORS < 16) {
        if (foreground >= bright) attribute |= A_BOLD;
        foreground %= bright;
        background %= bright;
    }
    return attribute |
           static_cast<chtype>(COLOR_PAIR(pair_of(curses_colour(foreground), curses_colour(background))));
}

bool terminal_is_utf8() {
    locale_t from_environment = ::newlocale(LC_CTYPE_MASK, "", nullptr);
    if (from_environment == nullptr) return false;
    const bool utf8 = std::string_view(::nl_langinfo_l(CODESET, from_environment)) == "UTF-8";
    ::freelocale(from_environment);
    return utf8;
}

// What stands for a byte on the terminal. Control characters never reach it. A UTF-8 terminal could not show
// a single byte of ISO-8859-1, so there an accented letter loses its accent.
unsigned char shown(unsigned char byte) {
    constexpr std::string_view plain =
        " !cLoY|S\"ca<--R-o+23'uP.,1o>123?"
        "AAAAAAACEEEEIIIIDNOOOOOxOUUUUYTs"
        "aaaaaaaceeeeiiiidnooooo/ouuuuyty";
    static const bool utf8 = terminal_is_utf8();
    if (byte < ' ' || (byte >= 0x7F && byte < 0xA0)) return ' ';
    return byte < 0xA0 || !utf8 ? byte : static_cast<unsigned char>(plain[byte - 0xA0U]);
}

std::string display_text(const Value& value, std::string_view yes, std::string_view no) {
    switch (value.kind()) {
        case Kind::character:
            return std::string(value.text());
        case Kind::numeric:
            return str(value).string();
        case Kind::date:
            return dtoc(value).string();
        case Kind::logical:
            return std::string(value.logical() ? yes : no);
        case Kind::nil:
            return "NIL";
        default:
            return "{ ... }";
    }
}

// Writes at the cursor, of which the part on the screen shows, and moves the cursor along.
void write(std::string_view text, chtype attribute) {
    const Position start = cursor;
    cursor.column += static_cast<std::int64_t>(text.size());
    if (start.row < 0 || start.row > last_row()) return;
    const std::int64_t first = std::max<std::int64_t>(start.column, 0);
    const std::int64_t behind = std::min<std::int64_t>(cursor.column, last_column() + 1);
    if (first < behind) ::move(static_cast<int>(start.row), static_cast<int>(first));
    for (std::int64_t column = first; column < behind; ++column) {
        const char byte = text[static_cast<std::size_t>(column - start.column)];
        addch(shown(static_cast<unsigned char>(byte)) | attribute);
    }
    ::move(static_cast<int>(start.row),
           static_cast<int>(std::clamp<std::int64_t>(cursor.column, 0, last_column())));
    refresh();
}

int xbase_key(int key) {
    if (key >= KEY_F(2) && key <= KEY_F(10)) return -(key - KEY_F(1));
    switch (key) {
        case '\n':
        case KEY_ENTER:
            return 13;
        case KEY_F(1):
            return 28;
        case KEY_F(11):
            return -40;
        case KEY_F(12):
            return -41;
        case KEY_UP:
            return 5;
        case KEY_DOWN:
            return 24;
        case KEY_LEFT:
            return 19;
        case KEY_RIGHT:
            return 4;
        case KEY_HOME:
            return 1;
        case KEY_END:
            return 6;
        case KEY_PPAGE:
            return 18;
        case KEY_NPAGE:
            return 3;
        case KEY_IC:
            return 22;
        case KEY_DC:
            return 7;
        case 127:
        case KEY_BACKSPACE:
            return 8;
        case KEY_BTAB:
            return 271;
        default:
            return key < KEY_MIN ? key : 0;
    }
}

using Clock = std::chrono::steady_clock;

void pause_until(Clock::time_point until) {
    const auto left = std::chrono::duration_cast<std::chrono::nanoseconds>(until - Clock::now()).count();
    if (left <= 0) return;
    timespec wait{static_cast<time_t>(left / 1000000000), static_cast<long>(left % 1000000000)};
    while (::nanosleep(&wait, &wait) != 0 && errno == EINTR) {
    }
}

// The keys are read through a pad: reading from one neither redraws the screen nor touches the waiting time
// that the program has set for the standard screen. It is not ncurses that waits: that goes by the time of
// day, which may be set back meanwhile. A program's own curses screen may have its keys from elsewhere, and a
// terminal may have gone: where there is something to read, but no key, that is not asked for again at once.
int wait_for_key(Clock::time_point until) {
    constexpr std::chrono::milliseconds longest_step(100);
    static WINDOW* const keys = newpad(1, 1);
    keypad(keys, TRUE);
    wtimeout(keys, 0);
    pollfd input{STDIN_FILENO, POLLIN, 0};
    for (bool in_vain = false;;) {
        const int key = wgetch(keys);
        if (key != ERR && xbase_key(key) != 0) return xbase_key(key);
        const Clock::time_point now = Clock::now();
        if (now >= until) return 0;
        const auto step = std::min(std::chrono::ceil<std::chrono::milliseconds>(until - now), longest_step);
        if (in_vain) pause_until(now + step);
        in_vain = !in_vain && ::poll(&input, 1, static_cast<int>(step.count())) > 0;
    }
}

}  // namespace

void screen_begin() {
    if (standard_screen() != nullptr || ::isatty(STDIN_FILENO) == 0 || ::isatty(STDOUT_FILENO) == 0) return;
    watch_ways_out();  // before newterm(), which would take some signals for good
    if (own_screen == nullptr) {
        own_screen = newterm(nullptr, stdout, stdin);
        if (own_screen == nullptr) return leave_ways_out();
        cbreak();
        noecho();
        nonl();
        set_escdelay(50);
        if (has_colors()) start_color();
        use_legacy_coding(1);
    }
    begun_here = true;
    cursor = {};
    clearok(stdscr, TRUE);
    refresh();
}

// The screen is left, not taken down: regions saved from it may live on.
void screen_end() {
    if (!begun_here) return;
    begun_here = false;
    endwin();
    leave_ways_out();
}

void* standard_screen() { return stdscr == nullptr || isendwin() ? nullptr : stdscr; }

Value maxrow() { return standard_screen() == nullptr ? 24 : last_row(); }

Value maxcol() { return standard_screen() == nullptr ? 79 : last_column(); }

Value savescreen(const Value& top, const Value& left, const Value& bottom, const Value& right) {
    if (standard_screen() == nullptr) return {};
    return Value(new SavedRegion(clipped(top, left, bottom, right)));
}

void restscreen(const Value& top, const Value& left, const Value& bottom, const Value& right,
                const Value& saved) {
    const auto* region = dynamic_cast<SavedRegion*>(saved.object());
    if (region == nullptr || standard_screen() == nullptr) return;
    region->put_back(clipped(top, left, bottom, right));
    refresh();
}

void devpos(const Value& row, const Value& col) {
    constexpr std::int64_t far = 1000000;
    cursor.row = std::clamp(integer_or(row, 0), -far, far);
    cursor.column = std::clamp(integer_or(col, 0), -far, far);
}

void devout(const Value& value, const Value& colour) {
    if (standard_screen() == nullptr) return;
    const chtype attribute = colour.is(Kind::character) ? attribute_of(parse_colour(colour.text()))
                                                        : static_cast<chtype>(A_NORMAL);
    write(display_text(value, "T", "F"), attribute);
}

void qout(Args values) {
    std::string line;
    for (const Value& value : values.all()) {
        if (&value != values.all().data()) line += ' ';
        line += display_text(value, ".T.", ".F.");
    }
    if (standard_screen() != nullptr) {
        cursor = {std::min<std::int64_t>(cursor.row + 1, last_row()), 0};
        write(line, A_NORMAL);
        return;
    }
    line.insert(line.begin(), '\n');
    std::fwrite(line.data(), 1, line.size(), stdout);
    std::fflush(stdout);
}

Value inkey(const Value& seconds) {
    constexpr double longest = 1e8;
    const double wait = seconds.is(Kind::numeric) ? seconds.number() : -1.0;
    const bool full_screen = standard_screen() != nullptr;
    const auto pause = std::chrono::duration<double>(wait > 0 ? std::min(wait, longest) : 0.0);
    const auto until = Clock::now() + std::chrono::duration_cast<Clock::duration>(pause);
    if (full_screen) return wait_for_key(wait == 0.0 ? Clock::time_point::max() : until);
    pause_until(until);
    return 0;
}

}  // namespace zmfb::host
