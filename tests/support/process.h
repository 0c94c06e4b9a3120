/// Programs run as processes of their own.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace zmfb::test {

/// What a program that has ended left behind.
struct Finished {
    int status = -1;  ///< its exit status; 128 + the signal when one ended it
    std::string out;
    std::string err;
};

/// A program that runs beside the test. It is ended with this object, if it has not ended by then.
class Started {
  public:
    /// As run() does; standard input stays open, with nothing more to come, until end().
    explicit Started(const std::vector<std::string>& command, const std::string& input = "",
                     const std::vector<std::string>& environment = {});
    ~Started();
    Started(const Started&) = delete;
    Started& operator=(const Started&) = delete;

    [[nodiscard]] pid_t pid() const { return child_; }
    void send(int signal) const;
    /// Waits until it waits for something, or works hard: until it has used no time of a processor for a
    /// while, or a good deal.
    void settle() const;
    /// Waits for its end, two minutes at most; throws then.
    Finished end();

  private:
    pid_t child_ = -1;
    int in_ = -1;
    int out_ = -1;
    int err_ = -1;
};

/// Runs a program (looked up in PATH when its name has no "/") with `input` on its standard input and waits
/// for its end. `environment` are further "NAME=value" settings. A program that cannot be started ends with
/// 127.
Finished run(const std::vector<std::string>& command, const std::string& input = "",
             const std::vector<std::string>& environment = {});

}  // namespace zmfb::test
