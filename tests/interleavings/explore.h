/// Walks the interleavings of sessions.
#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace zmfb::test {

/// The sessions that were let go, in order: their numbers.
using Schedule = std::vector<std::size_t>;

/// One point of a run at which a session was chosen.
struct Chosen {
    std::size_t session = 0;
    std::vector<std::size_t> others;  ///< that could have been chosen instead
    /// Whether taking another one breaks off a session that could have gone on.
    bool breaks_off = false;
};

/// What a run gave.
struct Ran {
    std::vector<Chosen> choices;
    std::string outcome;
    int blocked = 0;       ///< steps that had to wait for another session
    bool followed = true;  ///< whether the sessions of the schedule were ready in their turn
};

/// What a walk gave.
struct Walked {
    std::map<std::string, Schedule> outcomes;  ///< each with the first schedule that led to it
    long runs = 0;
    long blocked = 0;       ///< steps that had to wait
    long not_followed = 0;  ///< runs that went another way than was meant
    int most_breaks = 0;    ///< how often sessions were broken off, at most
    bool whole = false;     ///< whether no interleaving was left out
};

/// Runs every schedule, those that break off sessions least often first, until there are no more or `limit`
/// were run. `run` follows a schedule to its end and goes on from there: with the session that it was at as
/// long as that can go on, then with the first one that can.
Walked walk_interleavings(const std::function<Ran(const Schedule& begin)>& run, long limit);

}  // namespace zmfb::test
