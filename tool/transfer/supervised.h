/// Work done in processes of its own, so that Ctrl-C can end it at any point.
///
/// A call into the engine cannot be interrupted. So the tool works in a child process and only watches it: on
/// Ctrl-C the child is killed, and a process that is not caught in a call undoes what the child began. No
/// process forks after it has attached, since the engine does not live through a fork.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "tool/session.h"

namespace zmfb::tool {

/// The child's way to tell its watcher what it has begun.
class Reports {
  public:
    explicit Reports(int descriptor) : descriptor_(descriptor) {}
    /// Sends a line; it has arrived when this returns, whatever happens to the child then.
    void send(std::string_view line) const;

  private:
    int descriptor_;
};

/// How supervised work ended.
struct Ended {
    Exit status = Exit::failed;
    int signal = 0;  ///< the one that interrupted it: SIGINT, SIGTERM or SIGHUP; 0 when it came to its end
};

struct Supervision {
    /// Takes in a line that the child sent.
    std::function<void(std::string_view)> on_report;
    /// Called several times a second while the child works. May be empty.
    std::function<void()> on_tick;
};

/// Runs `work` in a child process, with a session of its own, and watches it. Failures are printed there.
Ended supervise(const Options& options, const std::function<Exit(Session&, const Reports&)>& work,
                const Supervision& supervision);

/// Runs `work` for each name, in a process of its own which may attach; SIGINT and SIGTERM are passed on to
/// it. Goes on after one that failed, not after one that was interrupted (which ends with 128 and more).
/// Returns the status of the last that did not go well.
Exit for_each_apart(const std::vector<std::string>& names,
                    const std::function<Exit(const std::string&)>& work);

}  // namespace zmfb::tool
