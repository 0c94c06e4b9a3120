/// The fixture of a test that needs a database.
#pragma once

#include <optional>
#include <string>

#include "tests/support/bare_client.h"
#include "tests/support/runtime.h"
#include "zmfbconn/connection.h"

namespace zmfb::test {

/// Gives each test a fresh database with the driver's functions and the system tables in it, a copy
/// of one that is made once per process. It lies on the embedded engine or, where the run says so, on a
/// private server.
class Database : public Runtime {
  protected:
    Database();
    ~Database() override;

    /// The name to attach with.
    [[nodiscard]] const std::string& database() const { return database_; }
    /// An object attached to it, the same one for the whole test. What attaching logged and raised is
    /// forgotten.
    zmFBConn& connection();
    /// One more object attached to it.
    zmFBConn connect();
    /// Releases the object of connection(), which detaches it.
    void disconnect() { connection_.reset(); }

    /// Calls a method of connection().
    template <class... Arguments>
    host::Value call(std::string_view method, Arguments&&... arguments) {
        return connection().call(method, std::forward<Arguments>(arguments)...);
    }

    /// Puts the functions of the module into it.
    void declare_module() const;

    /// Runs a statement without anything of ours in between; throws when it fails.
    void execute(const std::string& statement) const { BareClient(database_).execute(statement); }
    /// The rows of a query, read without anything of ours in between: texts without trailing blanks, NULL as
    /// "NULL".
    [[nodiscard]] Rows rows(const std::string& query) const { return BareClient(database_).rows(query); }

  private:
    std::string database_;
    std::optional<zmFBConn> connection_;
};

}  // namespace zmfb::test
