/// Ending what the engine does for this process, for programs that watch for signals.
///
/// Once it has attached, the client library has handlers of its own for SIGINT and SIGTERM, which shut the
/// engine down and keep the process. A program that is to end on them in order blocks them before its first
/// attach, in all threads, and has one thread wait for them (sigwait) that calls cancel().
#pragma once

#include <exception>

#pragma GCC visibility push(default)

namespace zmfb {

/// Thrown by what would begin something in a database between cancel() and resume(); it passes through every
/// method without harm. What belongs to a transaction throws SqlError (HY008) instead.
class Cancelled : public std::exception {
  public:
    /// That it was cancelled, in English.
    [[nodiscard]] const char* what() const noexcept override { return "the operation was cancelled"; }
};

/// Lets every statement that would begin throw Cancelled until resume(), and from the second call on lets the
/// one that runs fail ("operation was cancelled"). To be called from any thread, again and again, some 50 ms
/// apart, until the thread of the objects has come back: a server that finds a cancellation right behind the
/// statement it is for loses it, and all that follow. Returns whether a database is attached; attaching
/// itself, detaching, and the locks and registrations that work areas give back go on.
bool cancel();

/// Lets statements be run again, to undo things; a cancellation that came too late for the statement it was
/// for hits none of them. To be called from the thread of the objects.
void resume();

/// While one lives statements are begun as if nothing was cancelled, and those that run are left alone: to
/// give back what others wait for. In the thread of the objects.
class Undisturbed {
  public:
    Undisturbed();
    Undisturbed(const Undisturbed&) = delete;
    Undisturbed& operator=(const Undisturbed&) = delete;
    ~Undisturbed();
};

}  // namespace zmfb

#pragma GCC visibility pop
