/// Clients that stand between our code and the library, to learn what it sends or to keep some of it back.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "bench/support/bare_session.h"
#include "sql/client.h"

namespace zmfb::bench {

/// A statement with the parameter block of the transaction it ran in.
struct Sent {
    std::string text;
    std::string block;
    bool is_query = false;
};

/// Notes every statement while it lives, and forwards it.
class Recorder : public sql::Client {
  public:
    Recorder() : before_(sql::set_client(this)) {}
    ~Recorder() override { sql::set_client(before_); }

    [[nodiscard]] const std::vector<Sent>& sent() const { return sent_; }

    ISC_STATUS start_transaction(ISC_STATUS* status, isc_tr_handle* transaction, isc_db_handle* database,
                                 unsigned short length, const char* block) override;
    ISC_STATUS prepare(ISC_STATUS* status, isc_db_handle* database, isc_tr_handle* transaction,
                       const char* statement, const char* text, XSQLDA* output) override;
    ISC_STATUS execute_immediate(ISC_STATUS* status, isc_db_handle* database, isc_tr_handle* transaction,
                                 const char* text) override;

  private:
    sql::Client* before_;
    std::string block_;
    std::vector<Sent> sent_;
};

/// Sends the same statements in the same transactions with the bare client, and reads the rows. Returns what
/// touch() makes of them.
std::uint64_t replay(BareSession& session, const std::vector<Sent>& sent);

/// Keeps statements back while it lives: those that `is_kept_back` picks count as done.
class Holdback : public sql::Client {
  public:
    explicit Holdback(std::function<bool(std::string_view)> is_kept_back)
        : before_(sql::set_client(this)), is_kept_back_(std::move(is_kept_back)) {}
    ~Holdback() override { sql::set_client(before_); }

    [[nodiscard]] const std::vector<std::string>& kept_back() const { return kept_back_; }

    ISC_STATUS execute_immediate(ISC_STATUS* status, isc_db_handle* database, isc_tr_handle* transaction,
                                 const char* text) override;

  private:
    sql::Client* before_;
    std::function<bool(std::string_view)> is_kept_back_;
    std::vector<std::string> kept_back_;
};

}  // namespace zmfb::bench
