/// A client library whose answers are made up, for what transactions of programs ask of it: the calls of the
/// object interface, and those by handle that go with them.
///
/// As the library does, it lays rows out as it has described them, and counts who refers to what it hands
/// out.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "sql/client.h"
#include "sql/object_client.h"

namespace zmfb::fuzz {

/// A message: its values, and how they lie in it.
class InventedMessage {
  public:
    /// One more value. Types that have a length of their own have that.
    void add(sql::MessageItem item);
    /// The same values, these others.
    void change(std::span<const sql::MessageChange> changes);

    [[nodiscard]] const std::vector<sql::MessageItem>& items() const { return items_; }
    [[nodiscard]] unsigned length() const { return length_; }

  private:
    void lay_out();

    std::vector<sql::MessageItem> items_;
    unsigned length_ = 0;
};

/// What a statement is.
struct InventedStatement {
    std::string text;
    bool in_batch = false;  ///< prepared in the transaction that methods share
    unsigned type = 0;      ///< an isc_info_sql_stmt_ number
    bool has_cursor = false;
    InventedMessage input, output;
    unsigned rows = 0;  ///< fetched so far
};

class InventedClient : public sql::Client, public sql::ObjectClient {
  public:
    InventedClient();
    ~InventedClient() override;

    /// How many transactions that were begun by handle are open.
    [[nodiscard]] int open_transactions() const { return open_transactions_; }
    /// How many of the objects that were handed out somebody refers to, transactions among them.
    static int referred_to();

    // The calls by handle of the same names, which nothing here makes, are the library's own.
    using sql::Client::attach_database;
    using sql::Client::close;
    using sql::Client::describe;
    using sql::Client::fetch;
    using sql::Client::open;
    using sql::Client::release;

    void prefix_lock(char* path, const char* file) override;
    ISC_STATUS detach_database(ISC_STATUS* status, isc_db_handle* database) override;
    ISC_STATUS database_info(ISC_STATUS* status, isc_db_handle* database, short item_size, const char* items,
                             short answer_size, char* answer) override;
    ISC_STATUS start_transaction(ISC_STATUS* status, isc_tr_handle* transaction, isc_db_handle* database,
                                 unsigned short length, const char* block) override;
    ISC_STATUS commit_transaction(ISC_STATUS* status, isc_tr_handle* transaction) override;
    ISC_STATUS rollback_transaction(ISC_STATUS* status, isc_tr_handle* transaction) override;
    /// Queries of methods fail.
    ISC_STATUS prepare(ISC_STATUS* status, isc_db_handle* database, isc_tr_handle* transaction,
                       const char* statement, const char* text, XSQLDA* output) override;
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
    /// The code that a call fails with; 0 for one that goes well. Called once for each call.
    virtual ISC_STATUS failure(std::string_view call) = 0;
    /// Completes a statement of that text.
    virtual void describe_statement(InventedStatement& statement) = 0;
    /// Told of the values that a statement runs with, laid out as `input` says.
    virtual void ran(const InventedMessage& /*input*/, std::span<const std::byte> /*values*/) {}
    /// Fills one more row, all NULL, laid out as `message` says; .F. when there is none.
    virtual bool fill_row(const InventedStatement& statement, const InventedMessage& message,
                          std::span<std::byte> row) = 0;
    /// The content of a blob.
    virtual std::string content_of(ISC_QUAD id) = 0;
    /// How many bytes of it come at once, at most.
    virtual std::size_t segment_size() { return 1000; }
    /// Told of transactions of the object interface, and the batch as it ends by handle; `how` is "begin",
    /// "commit" or "rollback".
    virtual void transaction_is(std::string_view /*how*/) {}

  private:
    ISC_STATUS answer(ISC_STATUS* status, std::string_view call);
    ISC_STATUS answer(Firebird::IStatus* status, std::string_view call);
    ISC_STATUS end(ISC_STATUS* status, isc_tr_handle* transaction, std::string_view how);
    ISC_STATUS end(Firebird::IStatus* status, Firebird::ITransaction* transaction, std::string_view how);
    ISC_STATUS put_row(Firebird::IStatus* status, InventedStatement& statement,
                       Firebird::IMessageMetadata* output, void* row);

    sql::Client* before_;
    sql::ObjectClient* objects_before_;
    Firebird::IAttachment* attached_ = nullptr;
    Firebird::ITransaction* batch_ = nullptr;
    int open_transactions_ = 0;
};

}  // namespace zmfb::fuzz
