/// Firebird's client without anything of ours in between, to prepare and to check what our own code does.
#pragma once

#include <ibase.h>

#include <string>
#include <vector>

namespace zmfb::test {

using Row = std::vector<std::string>;
using Rows = std::vector<Row>;

/// An attachment as SYSDBA; detached at the end. Every failure throws std::runtime_error with the engine's
/// message.
class BareClient {
  public:
    /// `options` are further items of the database parameter block.
    explicit BareClient(const std::string& database, const std::string& options = {});
    BareClient(const BareClient&) = delete;
    BareClient& operator=(const BareClient&) = delete;
    ~BareClient();

    /// Runs a statement in a transaction of its own.
    void execute(const std::string& statement);
    /// The rows of a query, every value as the text that the engine itself makes of it, without trailing
    /// blanks; NULL is the text "NULL".
    Rows rows(const std::string& query);

    isc_db_handle* handle() { return &database_; }

  private:
    isc_db_handle database_{};
};

}  // namespace zmfb::test
