/// Giving the terminal back when a program ends while its full screen is on.
#pragma once

namespace zmfb::host {

/// Ends the curses screen, so that what is written next stands on a terminal as it was; nothing when there is
/// none, or when it is the watched one of the process that this one was forked from.
void give_terminal_back();

/// From here on give_terminal_back() comes first when this process ends: by exit or quick_exit, by an
/// exception that nobody catches, or by a signal that the program neither handles nor ignores. It ends as it
/// would have.
void watch_ways_out();
/// Leaves the ways out as they were before watch_ways_out().
void leave_ways_out();

}  // namespace zmfb::host
