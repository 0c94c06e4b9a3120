/// A talk with a program on a terminal.
#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>
#include <vector>

namespace zmfb::test {

/// Starts a program on a pseudo-terminal of its own, 24 rows by 80 columns, TERM=xterm. The program is ended
/// with this object, if it has not ended by then.
class Dialogue {
  public:
    explicit Dialogue(const std::vector<std::string>& command);
    ~Dialogue();
    Dialogue(const Dialogue&) = delete;
    Dialogue& operator=(const Dialogue&) = delete;

    [[nodiscard]] pid_t pid() const { return process_; }
    void type(std::string_view keys);
    /// Waits until the program has written `text` since the last text that was waited for. Returns what came
    /// up to its end; throws when it does not come within a minute.
    std::string expect(std::string_view text);
    /// The same for the prompt of a line editor: waits until it takes single keys, too, which it does a
    /// moment after it has shown the prompt.
    std::string expect_prompt(std::string_view text);
    /// Waits for the end of the program and returns its exit status, 128 + the signal when one ended it.
    int end();

  private:
    bool read_some(int milliseconds);

    int terminal_ = -1;
    pid_t process_ = -1;
    std::string unread_;
};

}  // namespace zmfb::test
