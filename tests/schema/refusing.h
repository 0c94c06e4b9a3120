/// A client that refuses some statements.
#pragma once

#include <string>
#include <string_view>

#include "sql/client.h"

namespace zmfb::test {

/// Refuses the statements that have a text in them, by sending one that no engine takes. In use while it
/// lives.
class Refusing : public sql::Client {
  public:
    explicit Refusing(std::string text) : text_(std::move(text)), before_(sql::set_client(this)) {}
    ~Refusing() override { sql::set_client(before_); }

    ISC_STATUS execute_immediate(ISC_STATUS* status, isc_db_handle* database, isc_tr_handle* transaction,
                                 const char* text) override {
        const bool refused = std::string_view(text).find(text_) != std::string_view::npos;
        return Client::execute_immediate(status, database, transaction, refused ? "no statement" : text);
    }

  private:
    std::string text_;
    sql::Client* before_;
};

}  // namespace zmfb::test
