#include "conn/methods.h"
#include "host/number.h"
#include "host/screen.h"
#include "host/text.h"
#include "zmfbconn/connection.h"

namespace zmfb::conn {

namespace {

constexpr int box_width = 43;

constexpr std::string_view title = "      *** Connecting to Firebird ***       ";
constexpr std::string_view blank_line = "                                           ";
// Its left half is written over by the request to wait.
constexpr std::string_view driver_line = "                          driver ZMRDDFIRE ";
constexpr std::string_view please_wait = "Please wait...";

static_assert(title.size() == box_width && blank_line.size() == box_width && driver_line.size() == box_width);

Value version_line() { return host::padl("zmfbconn " + std::string(library_version()), box_width - 1) + " "; }

// Writes at a place counted up and left from the bottom right corner.
void write_from_corner(int up, int left, const Value& text, std::string_view colour) {
    host::devpos(host::maxrow() - up, host::maxcol() - left);
    host::devout(text, colour);
}

}  // namespace

Value iscurseson(Self&, Args) { return host::standard_screen() != nullptr; }

Value showgreetscr(Self& self, Args) {
    if (!ask(self, "iscurseson")) return {};
    var(self, Var::oldscreen) = host::savescreen(0, 0, host::maxrow(), host::maxcol());
    write_from_corner(4, 50, title, "BG/N");
    write_from_corner(3, 50, blank_line, "BG/B");
    write_from_corner(2, 50, driver_line, "BG/B");
    write_from_corner(1, 50, version_line(), "BG/B");
    write_from_corner(2, 47, please_wait, "GR/B");
    return {};
}

Value hidegreetscr(Self& self, Args) {
    if (!ask(self, "iscurseson")) return {};
    host::restscreen(0, 0, host::maxrow(), host::maxcol(), var(self, Var::oldscreen));
    return {};
}

}  // namespace zmfb::conn
