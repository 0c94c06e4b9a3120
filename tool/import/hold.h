/// One import at a time for a table.
#pragma once

#include <optional>
#include <string>

#include "zmfbconn/transaction.h"

namespace zmfb::tool {

/// While it lives, nobody else can drop the table that an import fills. It ends with the process, however
/// that ends.
class ImportHold {
  public:
    /// Throws SqlError when there is no such table.
    ImportHold(zmFBConn& connection, const std::string& table);
    void release();

  private:
    std::optional<Transaction> reading_;
    std::optional<Statement> held_;  // what is prepared has the table in use
};

/// Who fills the table, for people: "process 4711 of user ANNA"; "" when nobody is seen to. The engine shows
/// this user's own programs, to the database's owner those of all. Throws SqlError.
std::string who_fills(zmFBConn& connection, const std::string& table);

/// What is told of a table that another import fills.
std::string another_import(const std::string& table, const std::string& who);

}  // namespace zmfb::tool
