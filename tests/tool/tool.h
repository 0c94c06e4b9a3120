/// The tool, run as a process.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/process.h"
#include "tests/support/runtime.h"

namespace zmfb::test {

/// Runs zmfb in an environment that has nothing of Firebird's: no FIREBIRD, no user, no password; the private
/// environment that it makes lies in the folder of this test process. In a run on a server the databases are
/// there, and the environment has the user and the password.
class Tool : public Runtime {
  protected:
    Tool();
    /// Runs zmfb with these words.
    Finished zmfb(std::vector<std::string> words, const std::string& input = "",
                  const std::vector<std::string>& environment = {}) const;
    /// The words of that command, as on a terminal; with these settings of the environment besides. The
    /// history of a shell is kept below the folder "state" of the test.
    [[nodiscard]] std::vector<std::string> command(const std::vector<std::string>& words,
                                                   const std::vector<std::string>& settings = {}) const;
    /// The same beside the test.
    [[nodiscard]] std::unique_ptr<Started> start(const std::vector<std::string>& words,
                                                 const std::string& input = "") const;
    /// The same in another current folder.
    Finished zmfb_in(const std::string& folder, std::vector<std::string> words) const;
    /// The same, started by a shell that does this first: sets limits, ignores signals, opens files.
    Finished zmfb_after(const std::string& preparation, const std::vector<std::string>& words) const;
    [[nodiscard]] std::unique_ptr<Started> start_after(const std::string& preparation,
                                                       const std::vector<std::string>& words) const;
    /// Words of a command that run what follows as another user, and the number of that user.
    [[nodiscard]] static std::vector<std::string> as_user(int user);
    /// Why no other user can run the tool here; "" when as_user() does.
    [[nodiscard]] static std::string why_no_other_user();
    /// What names a file of this test as a database: its path, on a server in a run on one.
    [[nodiscard]] std::string as_database(const std::string& name) const;
    /// A database of this test, not made yet.
    [[nodiscard]] std::string new_database() const { return as_database("test.fdb"); }
    /// The same, made with "zmfb create".
    std::string database() const;
    /// zmfb --db <database> and these words.
    Finished on(const std::string& database, const std::vector<std::string>& words,
                const std::string& input = "") const;
    /// zmfb exec, which is expected to succeed.
    void exec(const std::string& database, const std::string& statement) const;
    /// Whether it has a table of that name.
    [[nodiscard]] bool has_table(const std::string& database, const std::string& table) const;
    /// Waits until it has, for a while; what makes it must not have come to its end before.
    void wait_for_table(const std::string& database, const std::string& table) const;
    /// A query of a table that does not come to its end.
    [[nodiscard]] static std::string endless_query(const std::string& table);
    /// What `work` answers while another process is at work on the database with these words, which is killed
    /// then.
    Finished while_another(const std::string& database, std::vector<std::string> words,
                           const std::function<Finished()>& work) const;
    /// Has the database refuse to `create table`, `drop sequence` or the like whatever has these letters in
    /// its name.
    void forbid(const std::string& database, const std::string& change,
                const std::string& letters = "") const;

  private:
    [[nodiscard]] std::vector<std::string> command_after(const std::string& preparation,
                                                         const std::vector<std::string>& words) const;
};

/// The lines of a text, without their ends.
std::vector<std::string> lines(const std::string& text);

}  // namespace zmfb::test
