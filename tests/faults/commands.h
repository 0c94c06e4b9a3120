/// Commands of the tool that are made to fail on the way, and what they may leave then.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>
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
    std::string kept = {};                ///< a file that is there, in the folder of all that it writes
    bool same_output = false;             ///< whether it prints the same whenever it goes well
    /// What brings that to its end which it left half done: what it changes it changes in steps.
    std::vector<std::string> again = {};
    std::string database = {};         ///< the name of another one than most have
    std::string files = ".fdb";        ///< part of the names of the files whose disk goes wrong
    std::string settings = {};         ///< what a shell does first
    bool only_over_a_network = false;  ///< the power would take one of its processes alone
    bool only_on_a_disk = false;       ///< a server is asked nothing that others do not ask it
    bool takes_no_notice = false;      ///< it goes well without these files, too
};

/// A database with the table PEOPLE of 300 records, another one, DBF files, and the commands.
class CommandsThatFail : public Tool {
  protected:
    CommandsThatFail();

    [[nodiscard]] const std::vector<FaultyCommand>& commands() const { return commands_; }
    /// Throws std::out_of_range when there is none of that name.
    [[nodiscard]] const FaultyCommand& the(std::string_view name) const {
        const auto found = std::ranges::find(commands_, name, &FaultyCommand::name);
        return commands_.at(static_cast<std::size_t>(found - commands_.begin()));
    }
    /// The database of most of them, and that of one.
    [[nodiscard]] const std::string& path() const { return path_; }
    [[nodiscard]] std::string database_of(const FaultyCommand& command) const;
    /// Its file, which a server has, too, on this machine.
    [[nodiscard]] std::string file_of(const FaultyCommand& command) const;

    /// Makes what the command finds.
    void prepare(const FaultyCommand& command) const;
    /// Keeps its database, if it has one by now, and makes what it finds again, with that: quicker.
    void keep_prepared(const FaultyCommand& command) const;
    void begin_again(const FaultyCommand& command) const;
    /// What is there of what it changes; `was_killed`: with what the next one of its kind takes away left
    /// out.
    [[nodiscard]] std::string state(const FaultyCommand& command, bool was_killed = false) const;
    /// Whether it has printed what it prints when nothing goes wrong, but for the time.
    static bool same_output(const Finished& one, const Finished& other);
    /// Expects that it has said why it failed, and that nothing ended it.
    static void expect_words(const FaultyCommand& command, const Finished& ended);
    /// The same, and that what is there is what was before or comes after it, or is told as unfinished or
    /// loaded, which the next import of that name sees to; after it, when it said that it went well. What is
    /// changed in steps the doctor may name, or `again` completes. One that was killed need not have said
    /// anything.
    void expect_all_or_nothing(const FaultyCommand& command, const Finished& ended, const std::string& before,
                               const std::string& after) const;

  private:
    [[nodiscard]] std::string matrix_of_a_change(const std::string& table) const;
    [[nodiscard]] std::vector<std::string> names_that_begin_with(const std::string& beginning) const;
    [[nodiscard]] std::string files_beside(const FaultyCommand& command, bool was_killed) const;
    [[nodiscard]] bool comes_to_its_end(const FaultyCommand& command, const std::string& after,
                                        bool was_killed) const;
    void add_commands_that_read();
    void add_commands_that_write();
    void add_imports();
    void add_commands_that_write_files();
    void add_commands_on_structures();

    std::string path_ = database();
    std::vector<FaultyCommand> commands_;
};

/// Which of `count` occurrences are made to fail: one, which moves with `turn` from the first to the last, or
/// as many as the environment variable says for the long run, the first and the last among them.
std::vector<int> some_of(int count, int turn);

}  // namespace zmfb::test
