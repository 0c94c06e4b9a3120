/// A Firebird client whose single calls can be made to fail.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "sql/client.h"

namespace zmfb::test {

enum class ClientCall : std::size_t {
    attach_database,
    create_database,
    detach_database,
    database_info,
    start_transaction,
    commit_transaction,
    rollback_transaction,
    prepare,
    describe,
    declare,
    open,
    fetch,
    close,
    release,
    execute_immediate,
    open_blob,
    blob_info,
    get_segment,
    close_blob,
};
inline constexpr std::size_t client_call_count = static_cast<std::size_t>(ClientCall::close_blob) + 1;
std::string name_of(ClientCall call);

/// Takes the place of the client library from its making to its end, counts every call and forwards it, but
/// for those that fail() names: these are not made and report the failure instead.
class FaultyClient : public sql::Client {
  public:
    /// Something that goes wrong below the engine: SQLCODE -902.
    static constexpr ISC_STATUS io_error = isc_io_error;
    /// Firebird's text for that SQLCODE.
    static const std::string& io_error_text();

    FaultyClient() : before_(sql::set_client(this)) {}
    ~FaultyClient() override { sql::set_client(before_); }

    /// Lets call number `nth` of that kind from now on fail, once.
    void fail(ClientCall call, int nth = 1, ISC_STATUS code = io_error);
    /// The same with an I/O error that names this file.
    void fail_on_file(ClientCall call, const std::string& file);
    /// Whether every failure asked for has happened.
    [[nodiscard]] bool all_failed() const;
    /// How often a call of that kind was asked for.
    [[nodiscard]] int count(ClientCall call) const { return counts_[static_cast<std::size_t>(call)]; }
    /// Transactions started through this client that were neither committed nor rolled back.
    [[nodiscard]] int open_transactions() const { return open_transactions_; }
    /// Parameter blocks given back less parameter blocks made.
    [[nodiscard]] int open_blocks() const { return open_blocks_; }
    /// The transaction parameter blocks seen, in order.
    [[nodiscard]] const std::vector<std::string>& transaction_blocks() const { return transaction_blocks_; }

    void expand_dpb(char** block, short* length, const char* user, const char* password,
                    const char* role) override;
    void free_block(char* block) override;
    ISC_STATUS attach_database(ISC_STATUS* status, const char* name, isc_db_handle* database, short length,
                               const char* block) override;
    ISC_STATUS create_database(ISC_STATUS* status, const char* name, isc_db_handle* database, short length,
                               const char* block) override;
    ISC_STATUS detach_database(ISC_STATUS* status, isc_db_handle* database) override;
    ISC_STATUS database_info(ISC_STATUS* status, isc_db_handle* database, short item_size, const char* items,
                             short answer_size, char* answer) override;
    ISC_STATUS start_transaction(ISC_STATUS* status, isc_tr_handle* transaction, isc_db_handle* database,
                                 unsigned short length, const char* block) override;
    ISC_STATUS commit_transaction(ISC_STATUS* status, isc_tr_handle* transaction) override;
    ISC_STATUS rollback_transaction(ISC_STATUS* status, isc_tr_handle* transaction) override;
    ISC_STATUS prepare(ISC_STATUS* status, isc_db_handle* database, isc_tr_handle* transaction,
                       const char* statement, const char* text, XSQLDA* output) override;
    ISC_STATUS describe(ISC_STATUS* status, const char* statement, XSQLDA* output) override;
    ISC_STATUS declare(ISC_STATUS* status, const char* statement, const char* cursor) override;
    ISC_STATUS open(ISC_STATUS* status, isc_tr_handle* transaction, const char* cursor) override;
    ISC_STATUS fetch(ISC_STATUS* status, const char* cursor, XSQLDA* output) override;
    ISC_STATUS close(ISC_STATUS* status, const char* cursor) override;
    ISC_STATUS release(ISC_STATUS* status, const char* statement) override;
    ISC_STATUS execute_immediate(ISC_STATUS* status, isc_db_handle* database, isc_tr_handle* transaction,
                                 const char* text) override;
    ISC_STATUS open_blob(ISC_STATUS* status, isc_db_handle* database, isc_tr_handle* transaction,
                         isc_blob_handle* blob, ISC_QUAD* id) override;
    ISC_STATUS blob_info(ISC_STATUS* status, isc_blob_handle* blob, short item_size, const char* items,
                         short answer_size, char* answer) override;
    ISC_STATUS get_segment(ISC_STATUS* status, isc_blob_handle* blob, unsigned short* got,
                           unsigned short size, char* bytes) override;
    ISC_STATUS close_blob(ISC_STATUS* status, isc_blob_handle* blob) override;

  protected:
    /// Told of each call before it is made or fails, and of its outcome: 0, the code it was made to fail
    /// with, or the client's own.
    virtual void asked(ClientCall) {}
    virtual void answered(ClientCall, ISC_STATUS /*outcome*/) {}

  private:
    struct Fault {
        ClientCall call;
        int left;
        ISC_STATUS code;
        std::string file = {};
    };

    // Counts the call; how it is to fail, null when it is to be made.
    const Fault* due(ClientCall call);
    template <class Make>
    ISC_STATUS pass(ClientCall call, ISC_STATUS* status, const Make& make);

    sql::Client* before_;
    std::array<int, client_call_count> counts_{};
    std::vector<Fault> faults_;
    std::vector<std::string> transaction_blocks_;
    int open_transactions_ = 0;
    int open_blocks_ = 0;
};

}  // namespace zmfb::test
