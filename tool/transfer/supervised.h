/// Work done in processes of its own, so that whatever becomes of one of them is told and undone.
///
/// A worker can be killed, run out of memory or stand on a disk that is full. So the tool works in a child
/// process and only watches it: the process that watches undoes what the child began, through an attachment
/// of its own. A child whose parent dies is told to end. No process forks after it has attached, since the
/// engine does not live through a fork.
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
    bool returned = false;  ///< `work` did, with this status; what it had to tell was told
    /// Else why it did not, unless a signal to this process ended it; without a message when the child could
    /// not say it any more.
    Failure failure = {};
};

/// Takes in a line that the child sent.
using OnReport = std::function<void(std::string_view)>;

/// Runs `work` in a child process, with a session of its own, and watches it. What it throws is not told but
/// comes back.
Ended supervise(const Options& options, const std::function<Exit(Session&, const Reports&)>& work,
                const OnReport& on_report);

/// Runs `work` for each name, in a process of its own which may attach; signals are passed on to it. Goes on
/// after one that failed, not after one that was interrupted (which ends with 128 and more). Returns the
/// status of the last that did not go well.
Exit for_each_apart(const std::vector<std::string>& names,
                    const std::function<Exit(const std::string&)>& work);

}  // namespace zmfb::tool
