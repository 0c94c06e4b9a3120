/// Clients of engines of other versions.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "sql/client.h"

namespace zmfb::test {

/// Answers the question for the engine's version with a text of its own, or refuses it, and notes the updates
/// of system tables. Everything else goes to the real engine. In use while it lives.
class OtherEngine : public sql::Client {
  public:
    /// `version` "" refuses the question.
    explicit OtherEngine(std::string version)
        : version_(std::move(version)), before_(sql::set_client(this)) {}
    ~OtherEngine() override { sql::set_client(before_); }

    /// Takes the updates for done instead of sending them.
    OtherEngine& that_updates_system_tables() {
        updates_ = true;
        return *this;
    }

    int questions = 0;
    std::vector<std::string> updates;

    ISC_STATUS prepare(ISC_STATUS* status, isc_db_handle* database, isc_tr_handle* transaction,
                       const char* statement, const char* text, XSQLDA* output) override {
        std::string sent = text;
        if (sent.find("ENGINE_VERSION") != std::string::npos) {
            ++questions;
            sent = version_.empty() ? "select unknown_function() from rdb$database"
                                    : "select '" + version_ + "' from rdb$database";
        }
        return Client::prepare(status, database, transaction, statement, sent.c_str(), output);
    }

    ISC_STATUS execute_immediate(ISC_STATUS* status, isc_db_handle* database, isc_tr_handle* transaction,
                                 const char* text) override {
        if (!std::string_view(text).starts_with("update rdb$")) {
            return Client::execute_immediate(status, database, transaction, text);
        }
        updates.emplace_back(text);
        if (!updates_) return Client::execute_immediate(status, database, transaction, text);
        status[0] = isc_arg_gds;
        status[1] = 0;
        status[2] = isc_arg_end;
        return 0;
    }

  private:
    std::string version_;
    bool updates_ = false;
    sql::Client* before_;
};

}  // namespace zmfb::test
