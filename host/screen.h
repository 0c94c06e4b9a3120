/// The full-screen terminal (curses), and plain output.
///
/// A program is in full-screen mode from screen_begin() to screen_end(); outside it every operation here but
/// qout() and inkey() does nothing at all, and nothing reaches the terminal.
#pragma once

#include "host/value.h"

namespace zmfb::host {

void screen_begin();
void screen_end();
/// The curses standard screen pointer, null when the application does not use the full screen.
void* standard_screen();

/// MAXROW(), MAXCOL(): last row and column, from 0; 24 and 79 without a full screen.
Value maxrow();
Value maxcol();
/// SAVESCREEN(top, left, bottom, right): the region's characters and attributes as a value; clipped at the
/// edges.
Value savescreen(const Value& top, const Value& left, const Value& bottom, const Value& right);
/// RESTSCREEN: puts back what savescreen() gave for a region of that size; NIL restores nothing.
void restscreen(const Value& top, const Value& left, const Value& bottom, const Value& right,
                const Value& saved);
/// DEVPOS(row, col) and DEVOUT(value, colour): where and what to write, clipped at the edges; colours in the
/// notation "foreground/background" such as "BG/N".
void devpos(const Value& row, const Value& col);
void devout(const Value& value, const Value& colour = {});
/// QOUT(values...): a line end and the values on the standard output.
void qout(Args values);
/// INKEY([seconds]): waits up to that long for a key and returns its code, 0 when none came. Without a full
/// screen it only waits.
Value inkey(const Value& seconds = {});

}  // namespace zmfb::host
