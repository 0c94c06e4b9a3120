/// The full-screen terminal (curses), and plain output.
///
/// A program is in full-screen mode from screen_begin() to screen_end(), or while it has a curses screen of
/// its own; outside it every operation here but qout() and inkey() does nothing at all, and nothing reaches
/// the terminal. What is written shows at once. Control characters show as blanks; on a UTF-8 terminal
/// accented letters show without their accents.
#pragma once

#include "value.h"

#pragma GCC visibility push(default)

namespace zmfb::host {

/// Goes over to the full screen; nothing happens when there is one, when the standard input or output is no
/// terminal, or when curses does not know the terminal. While it is on, the terminal is given back before
/// the program ends by exit, by an exception that nobody catches, or by a signal that it neither handles nor
/// ignores; what it writes behind that, the default error block's message too, stands on the terminal as it
/// was. Of a curses screen of its own a program takes care itself; only the default error block ends it.
void screen_begin();
/// Leaves the full screen that screen_begin() made; a later screen_begin() comes back to it as it was.
void screen_end();
/// The curses standard screen pointer, null when the application does not use the full screen.
void* standard_screen();

/// MAXROW(): the last row, from 0; 24 without a full screen.
Value maxrow();
/// MAXCOL(): the last column, from 0; 79 without a full screen.
Value maxcol();
/// SAVESCREEN(top, left, bottom, right): the region's characters with their colours and attributes, as an
/// object; clipped at the edges; NIL without a full screen.
Value savescreen(const Value& top, const Value& left, const Value& bottom, const Value& right);
/// RESTSCREEN: puts back what savescreen() gave, at the same place or another, as far as the region reaches;
/// any other value restores nothing.
void restscreen(const Value& top, const Value& left, const Value& bottom, const Value& right,
                const Value& saved);
/// DEVPOS(row, col): where the next devout() writes.
void devpos(const Value& row, const Value& col);
/// DEVOUT(value, colour): writes a value, clipped at the edges; colours in the notation
/// "foreground/background" such as "BG/N".
void devout(const Value& value, const Value& colour = {});
/// QOUT(values...): a line end and the values on the standard output.
void qout(Args values);
/// INKEY([seconds]): waits up to that long for a key, for ever when it is 0, not at all without it, and
/// returns the key's code, 0 when none came. Without a full screen it only waits the seconds given and reads
/// no key, so 0 does not wait either.
Value inkey(const Value& seconds = {});

}  // namespace zmfb::host

#pragma GCC visibility pop
