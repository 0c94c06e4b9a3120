/// Being told to end: Ctrl-C, SIGTERM, SIGHUP.
///
/// These signals are blocked in every thread, those of the engine too, and one thread waits for them: so the
/// client library's own handlers, which would shut the engine down, never run. When one comes, what the tool
/// waits for ends, the engine is told to give up what it does, and nothing is begun in a database any more:
/// the command unwinds, undoes what it can, and the process ends with 128 and the number of the signal. One
/// that has not ended after a while is ended by that thread. A signal that was ignored when the tool was
/// started stays ignored.
#pragma once

#include <sys/types.h>

#include <cerrno>

#include "tool/session.h"

namespace zmfb::tool {

/// Begins to wait for the signals: the first thing that a process does, and the first thing of one that was
/// forked.
void watch_signals();
/// The same for a child: it is also told to end when its parent, the process `parent`, dies in any way.
void watch_signals_of_child(pid_t parent);

/// What is told of a command that was ended.
inline constexpr const char* interrupted_message = "interrupted";

/// The signal that this process is to end on; 0 for none.
int ending_signal();
/// The status to end with then.
Exit ending_status();
/// Whether what runs is to end: also on a Ctrl-C that does not end the tool.
bool interrupted();
/// Throws Failure when it is.
void require_uninterrupted();

/// What is done before the process is ended without coming back to what it runs, by the thread that ends it;
/// nullptr for nothing. It gives back what the system does not: a terminal.
void before_being_ended(void (*give_back)());

/// From now on statements are run again, to undo things or to look at what is done; a process that is to end
/// is given a minute for that.
void begin_undoing();

/// While it lives, Ctrl-C ends what runs, and not the tool.
class ControlC {
  public:
    /// What becomes of one more Ctrl-C. Where it does the same, so does the end of a child process.
    enum class Second { ends_the_tool, is_noted, does_the_same };

    explicit ControlC(Second second = Second::ends_the_tool);
    ~ControlC();
    ControlC(const ControlC&) = delete;
    ControlC& operator=(const ControlC&) = delete;

  private:
    int before_;
};

/// While it lives, a system call of the main thread that waits ends with EINTR when what runs is to end.
class Waiting {
  public:
    Waiting();
    ~Waiting();
    Waiting(const Waiting&) = delete;
    Waiting& operator=(const Waiting&) = delete;
};

/// Makes a system call that may wait for others. Throws Failure when what runs is to end meanwhile.
template <class Call>
auto wait_for(const Call& call) {
    const Waiting waiting;
    for (;;) {
        require_uninterrupted();
        const auto result = call();
        if (result >= 0 || errno != EINTR) return result;
    }
}

}  // namespace zmfb::tool
