/// The program that shows on a terminal what does not fit on it.
#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>

#include "tool/interrupt.h"

namespace zmfb::tool {

/// A pager at work; its functions throw Failure. While it lives, Ctrl-C and the pager's end both end what
/// runs, and not the tool.
class Pager {
  public:
    /// The command of $PAGER, or without one less, or more; "" when PAGER is empty or "cat", and when there
    /// is none.
    static std::string command();
    explicit Pager(std::string command);
    ~Pager();
    Pager(const Pager&) = delete;
    Pager& operator=(const Pager&) = delete;

    /// Hands it more text; what is written behind its end is dropped.
    void write(std::string_view text);
    /// Waits until the person has left it. Throws Failure when the program could not be run, and one without
    /// a message when Ctrl-C has ended it.
    void close();

  private:
    int wait();

    ControlC ends_what_runs_{ControlC::Second::does_the_same};
    std::string command_;
    pid_t process_ = -1;
    int pipe_ = -1;
};

}  // namespace zmfb::tool
