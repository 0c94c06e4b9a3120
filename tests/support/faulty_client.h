/// A Firebird client whose single calls can be made to fail.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "sql/client.h"
#include "sql/object_client.h"

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
    database_handle,
    transaction_handle,
    statement_type,
    has_cursor,
    input_message,
    output_message,
    change_message,
    execute,
    affected_records,
    create_blob,
    put_segment,
    cancel_blob,
};
inline constexpr std::size_t client_call_count = static_cast<std::size_t>(ClientCall::cancel_blob) + 1;
std::string name_of(ClientCall call);

/// Takes the place of the client library from its making to its end, counts every call and forwards it, but
/// for those that fail() names: these are not made and report the failure instead. Calls by handle and calls
/// of the object interface that do the same count as one.
class FaultyClient : public sql::Client, public sql::ObjectClient {
  public:
    /// Something that goes wrong below the engine: SQLCODE -902.
    static constexpr ISC_STATUS io_error = isc_io_error;
    /// Firebird's text for that SQLCODE.
    static const std::string& io_error_text();

    FaultyClient() : before_(sql::set_client(this)), objects_before_(sql::set_object_client(this)) {
        transaction_blocks_.reserve(room_for_notes);
    }
    ~FaultyClient() override {
        sql::set_client(before_);
        sql::set_object_client(objects_before_);
    }

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

    ISC_STATUS attach_database(Firebird::IStatus* status, const char* name,
                               Firebird::IAttachment** attachment, unsigned length,
                               const char* block) override;
    ISC_STATUS detach_database(Firebird::IStatus* status, Firebird::IAttachment* attachment) override;
    ISC_STATUS database_handle(ISC_STATUS* status, isc_db_handle* handle,
                               Firebird::IAttachment* attachment) override;
    ISC_STATUS transaction_handle(ISC_STATUS* status, isc_tr_handle* handle,
                                  Firebird::ITransaction* transaction) override;
    ISC_STATUS start_transaction(Firebird::IStatus* status, Firebird::IAttachment* attachment,
                                 Firebird::ITransaction** transaction, std::span<const char> block) override;
    ISC_STATUS commit_transaction(Firebird::IStatus* status, Firebird::ITransaction* transaction) override;
    ISC_STATUS rollback_transaction(Firebird::IStatus* status, Firebird::ITransaction* transaction) override;
    ISC_STATUS prepare(Firebird::IStatus* status, Firebird::IAttachment* attachment,
                       Firebird::ITransaction* transaction, Firebird::IStatement** statement,
                       std::string_view text) override;
    ISC_STATUS statement_type(Firebird::IStatus* status, Firebird::IStatement* statement,
                              unsigned* type) override;
    ISC_STATUS has_cursor(Firebird::IStatus* status, Firebird::IStatement* statement, bool* answer) override;
    ISC_STATUS input_message(Firebird::IStatus* status, Firebird::IStatement* statement,
                             Firebird::IMessageMetadata** message) override;
    ISC_STATUS output_message(Firebird::IStatus* status, Firebird::IStatement* statement,
                              Firebird::IMessageMetadata** message) override;
    ISC_STATUS release(Firebird::IStatus* status, Firebird::IStatement* statement) override;
    ISC_STATUS describe(Firebird::IStatus* status, Firebird::IMessageMetadata* message,
                        std::vector<sql::MessageItem>* items, unsigned* length) override;
    ISC_STATUS change_message(Firebird::IStatus* status, Firebird::IMessageMetadata* message,
                              std::span<const sql::MessageChange> changes,
                              Firebird::IMessageMetadata** changed) override;
    ISC_STATUS execute(Firebird::IStatus* status, Firebird::IStatement* statement,
                       Firebird::ITransaction* transaction, Firebird::IMessageMetadata* input, void* values,
                       Firebird::IMessageMetadata* output, void* row) override;
    ISC_STATUS affected_records(Firebird::IStatus* status, Firebird::IStatement* statement,
                                std::uint64_t* count) override;
    ISC_STATUS open(Firebird::IStatus* status, Firebird::IStatement* statement,
                    Firebird::ITransaction* transaction, Firebird::IMessageMetadata* input, void* values,
                    Firebird::IMessageMetadata* output, Firebird::IResultSet** rows) override;
    ISC_STATUS fetch(Firebird::IStatus* status, Firebird::IResultSet* rows, void* row) override;
    ISC_STATUS close(Firebird::IStatus* status, Firebird::IResultSet* rows) override;
    ISC_STATUS create_blob(Firebird::IStatus* status, Firebird::IAttachment* attachment,
                           Firebird::ITransaction* transaction, Firebird::IBlob** blob, ISC_QUAD* id,
                           std::span<const char> block) override;
    ISC_STATUS open_blob(Firebird::IStatus* status, Firebird::IAttachment* attachment,
                         Firebird::ITransaction* transaction, Firebird::IBlob** blob, ISC_QUAD* id,
                         std::span<const char> block) override;
    ISC_STATUS blob_info(Firebird::IStatus* status, Firebird::IBlob* blob, std::span<const char> items,
                         std::span<char> answer) override;
    ISC_STATUS get_segment(Firebird::IStatus* status, Firebird::IBlob* blob, std::span<char> bytes,
                           unsigned* got) override;
    ISC_STATUS put_segment(Firebird::IStatus* status, Firebird::IBlob* blob, std::string_view bytes) override;
    ISC_STATUS close_blob(Firebird::IStatus* status, Firebird::IBlob* blob) override;
    ISC_STATUS cancel_blob(Firebird::IStatus* status, Firebird::IBlob* blob) override;

  protected:
    /// Notes on so many transactions are taken without allocating, where allocations are counted.
    static constexpr std::size_t room_for_notes = 4096;
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
    // Makes the call, or has the failure put into the status.
    template <class Status, class Make>
    ISC_STATUS pass(ClientCall call, Status* status, const Make& make) {
        asked(call);
        const Fault* const fault = due(call);
        if (fault != nullptr) put_failure(status, *fault);
        const ISC_STATUS outcome = fault == nullptr ? make() : fault->code;
        answered(call, outcome);
        return outcome;
    }
    static std::vector<ISC_STATUS> vector_of(const Fault& fault);
    static void put_failure(ISC_STATUS* status, const Fault& fault);
    static void put_failure(Firebird::IStatus* status, const Fault& fault);

    sql::Client* before_;
    sql::ObjectClient* objects_before_;
    std::array<int, client_call_count> counts_{};
    std::vector<Fault> faults_;
    std::vector<std::string> transaction_blocks_;
    int open_transactions_ = 0;
    int open_blocks_ = 0;
};

}  // namespace zmfb::test
