/// The program that shows on a terminal what does not fit on it.
#pragma once

#include <sys/types.h>

#include <memory>
#include <string>
#include <string_view>

#include "tool/interrupt.h"

namespace zmfb::tool {

/// A pager at work. While it lives, Ctrl-C and the pager's end both end what runs, and not the tool.
class Pager {
  public:
    /// Starts $PAGER, or without one less, or more; nothing when PAGER is empty or "cat", and when there is
    /// none. Throws Failure.
    static std::unique_ptr<Pager> start();
    ~Pager();
    Pager(const Pager&) = delete;
    Pager& operator=(const Pager&) = delete;

    /// Hands it more text; what is written behind its end is dropped.
    void write(std::string_view text);
    /// Waits until the person has left it. Throws Failure when the program could not be run.
    void close();

  private:
    Pager(std::string command, pid_t process, int pipe)
        : command_(std::move(command)), process_(process), pipe_(pipe) {}
    int wait();

    ControlC ends_what_runs_{ControlC::Second::does_the_same};
    std::string command_;
    pid_t process_;
    int pipe_;
};

}  // namespace zmfb::tool
