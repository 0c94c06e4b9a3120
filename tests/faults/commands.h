/// Commands of the tool that are made to fail on the way, and what they may leave then.
#pragma once

#include <string>
#include <vector>

#include "tests/tool/tool.h"

namespace zmfb::test {

/// The status of a command that SIGKILL ended.
inline constexpr int killed = 128 + 9;

/// A command and how to see what came of it.
struct FaultyCommand {
    std::string name;
    std::vector<std::string> words;
    /// Commands before it, which make what it finds the same.
    std::vector<std::vector<std::string>> prepare = {};
    std::vector<std::string> looks = {};  ///< a command that shows what it changes; none for one that reads
    std::string kept = {};                ///< a file that it replaces
    bool same_output = false;             ///< whether it prints the same whenever it goes well
};

/// A database with the table PEOPLE of 300 records, DBF files, and the commands.
class CommandsThatFail : public Tool {
  protected:
    CommandsThatFail();

    [[nodiscard]] const std::vector<FaultyCommand>& commands() const { return commands_; }
    [[nodiscard]] const std::string& path() const { return path_; }

    /// Makes what the command finds.
    void prepare(const FaultyCommand& command) const;
    /// What is there of what it changes; `was_killed`: with what the next one of its kind takes away left
    /// out.
    [[nodiscard]] std::string state(const FaultyCommand& command, bool was_killed = false) const;
    /// Expects that it has said why it failed, and that nothing ended it.
    static void expect_words(const FaultyCommand& command, const Finished& ended);
    /// The same, and that what is there is what was before or comes after it, or is told as unfinished or
    /// loaded, which the next import of that name sees to; after it, when it said that it went well. One
    /// that was killed need not have said anything.
    void expect_all_or_nothing(const FaultyCommand& command, const Finished& ended, const std::string& before,
                               const std::string& after) const;

  private:
    [[nodiscard]] std::string matrix_of_a_change() const;
    void add_commands_that_read();
    void add_commands_that_write();

    std::string path_ = database();
    std::vector<FaultyCommand> commands_;
};

/// Which of `count` occurrences are made to fail: so many, the first and the last among them, or as many as
/// the environment variable says for the long run.
std::vector<int> some_of(int count, int some);

}  // namespace zmfb::test
