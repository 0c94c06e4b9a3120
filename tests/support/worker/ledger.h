/// What workers say they changed in a table, beside the table itself: the sum of a column, and how many
/// records.
///
/// A change is two lines, each appended by one write: before it what it is going to be, after it that it was
/// made or not. Of a process that was killed the last change may lack the second line: it was made, or not.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace zmfb::test {

/// A change, of the sum of the amounts and of the number of records.
struct Change {
    std::int64_t amount = 0;
    std::int64_t records = 0;
    bool operator==(const Change&) const = default;
};

/// The ledger of one process, a file of its own.
class Ledger {
  public:
    explicit Ledger(std::string file) : file_(std::move(file)) {}
    /// Each throws std::runtime_error when the line cannot be written.
    void begin(const Change& change) const;
    void end(bool made) const;

  private:
    void write(const std::string& line) const;
    std::string file_;
};

/// What the ledgers add up to.
struct Account {
    Change made;                     ///< the sum of what was made for sure
    std::vector<Change> unfinished;  ///< of processes that were killed: made or not
    long changes = 0;                ///< how many were made for sure
};

/// Adds a ledger to an account.
void add_ledger(const std::string& file, Account& account);

/// Whether a table whose amounts and records have changed by `seen` has what the account says, each
/// unfinished change made or not.
bool accounts_for(const Account& account, const Change& seen);

}  // namespace zmfb::test
