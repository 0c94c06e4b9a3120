/// The way to the object interface of the Firebird client library, as sql/client.h is to its calls by handle:
/// each call that is made has one virtual function here, which forwards it. A test puts an object of a
/// derived class in its place.
///
/// The status comes first and holds the errors of a call that failed. The functions return 0, or the first
/// code of the failure. What is handed out belongs to the caller: what ends it takes it back when it
/// succeeds; let_go() does else. Calls that both ways have are called the same.
#pragma once

#include <ibase.h>

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Firebird {
class IAttachment;
class IBlob;
class IMessageMetadata;
class IResultSet;
class IStatement;
class IStatus;
class ITransaction;
}  // namespace Firebird

namespace zmfb::sql {

/// One value of a message, as a statement describes it.
struct MessageItem {
    std::string_view field;  ///< the names live as long as the description
    std::string_view alias;
    unsigned type = 0;  ///< without the flag that it may be NULL
    int subtype = 0;
    unsigned length = 0;  ///< in bytes
    int scale = 0;
    unsigned character_set = 0;
    bool nullable = false;
    unsigned offset = 0;  ///< in the message
    unsigned null_offset = 0;
};

/// How one value of a message is to be sent instead.
struct MessageChange {
    unsigned index;
    unsigned type;
    unsigned length;
    unsigned character_set;
};

class ObjectClient {
  public:
    ObjectClient() = default;
    ObjectClient(const ObjectClient&) = delete;
    ObjectClient& operator=(const ObjectClient&) = delete;
    virtual ~ObjectClient() = default;

    /// Whether the library has an object interface: from 3.0 on.
    virtual bool available();
    /// A status to hold errors in, for ever.
    static Firebird::IStatus* make_status();
    static const ISC_STATUS* errors(const Firebird::IStatus* status);
    static std::string sqlstate(const Firebird::IStatus* status);

    static void retain(Firebird::IAttachment* object);
    static void retain(Firebird::ITransaction* object);
    static void let_go(Firebird::IAttachment* object);
    static void let_go(Firebird::ITransaction* object);
    static void let_go(Firebird::IStatement* object);
    static void let_go(Firebird::IMessageMetadata* object);
    static void let_go(Firebird::IResultSet* object);
    static void let_go(Firebird::IBlob* object);

    virtual ISC_STATUS attach_database(Firebird::IStatus* status, const char* name,
                                       Firebird::IAttachment** attachment, unsigned length,
                                       const char* block);
    virtual ISC_STATUS detach_database(Firebird::IStatus* status, Firebird::IAttachment* attachment);
    /// The handle by which the other calls know it.
    virtual ISC_STATUS database_handle(ISC_STATUS* status, isc_db_handle* handle,
                                       Firebird::IAttachment* attachment);
    virtual ISC_STATUS transaction_handle(ISC_STATUS* status, isc_tr_handle* handle,
                                          Firebird::ITransaction* transaction);

    virtual ISC_STATUS start_transaction(Firebird::IStatus* status, Firebird::IAttachment* attachment,
                                         Firebird::ITransaction** transaction, std::span<const char> block);
    virtual ISC_STATUS commit_transaction(Firebird::IStatus* status, Firebird::ITransaction* transaction);
    virtual ISC_STATUS rollback_transaction(Firebird::IStatus* status, Firebird::ITransaction* transaction);

    virtual ISC_STATUS prepare(Firebird::IStatus* status, Firebird::IAttachment* attachment,
                               Firebird::ITransaction* transaction, Firebird::IStatement** statement,
                               std::string_view text);
    /// An isc_info_sql_stmt_ number.
    virtual ISC_STATUS statement_type(Firebird::IStatus* status, Firebird::IStatement* statement,
                                      unsigned* type);
    virtual ISC_STATUS has_cursor(Firebird::IStatus* status, Firebird::IStatement* statement, bool* answer);
    virtual ISC_STATUS input_message(Firebird::IStatus* status, Firebird::IStatement* statement,
                                     Firebird::IMessageMetadata** message);
    virtual ISC_STATUS output_message(Firebird::IStatus* status, Firebird::IStatement* statement,
                                      Firebird::IMessageMetadata** message);
    virtual ISC_STATUS release(Firebird::IStatus* status, Firebird::IStatement* statement);

    /// The calls that read a description count as one: they read what is in memory already.
    virtual ISC_STATUS describe(Firebird::IStatus* status, Firebird::IMessageMetadata* message,
                                std::vector<MessageItem>* items, unsigned* length);
    /// So do those that make another one of it.
    virtual ISC_STATUS change_message(Firebird::IStatus* status, Firebird::IMessageMetadata* message,
                                      std::span<const MessageChange> changes,
                                      Firebird::IMessageMetadata** changed);

    /// Runs a statement; its row, if it gives one, goes to `row`, laid out as `output` says.
    virtual ISC_STATUS execute(Firebird::IStatus* status, Firebird::IStatement* statement,
                               Firebird::ITransaction* transaction, Firebird::IMessageMetadata* input,
                               void* values, Firebird::IMessageMetadata* output, void* row);
    virtual ISC_STATUS affected_records(Firebird::IStatus* status, Firebird::IStatement* statement,
                                        std::uint64_t* count);
    virtual ISC_STATUS open(Firebird::IStatus* status, Firebird::IStatement* statement,
                            Firebird::ITransaction* transaction, Firebird::IMessageMetadata* input,
                            void* values, Firebird::IMessageMetadata* output, Firebird::IResultSet** rows);
    /// 100 when there is no more row.
    virtual ISC_STATUS fetch(Firebird::IStatus* status, Firebird::IResultSet* rows, void* row);
    virtual ISC_STATUS close(Firebird::IStatus* status, Firebird::IResultSet* rows);

    virtual ISC_STATUS create_blob(Firebird::IStatus* status, Firebird::IAttachment* attachment,
                                   Firebird::ITransaction* transaction, Firebird::IBlob** blob, ISC_QUAD* id,
                                   std::span<const char> block);
    virtual ISC_STATUS open_blob(Firebird::IStatus* status, Firebird::IAttachment* attachment,
                                 Firebird::ITransaction* transaction, Firebird::IBlob** blob, ISC_QUAD* id,
                                 std::span<const char> block);
    virtual ISC_STATUS blob_info(Firebird::IStatus* status, Firebird::IBlob* blob,
                                 std::span<const char> items, std::span<char> answer);
    /// As many bytes as there are at hand, at least one; 100 at the end.
    virtual ISC_STATUS get_segment(Firebird::IStatus* status, Firebird::IBlob* blob, std::span<char> bytes,
                                   unsigned* got);
    virtual ISC_STATUS put_segment(Firebird::IStatus* status, Firebird::IBlob* blob, std::string_view bytes);
    virtual ISC_STATUS close_blob(Firebird::IStatus* status, Firebird::IBlob* blob);
    virtual ISC_STATUS cancel_blob(Firebird::IStatus* status, Firebird::IBlob* blob);
};

/// An object of the interface that is released when it goes out of scope.
struct Release {
    template <class Object>
    void operator()(Object* object) const {
        ObjectClient::let_go(object);
    }
};
template <class Object>
using Held = std::unique_ptr<Object, Release>;

/// The object interface in use.
ObjectClient& object_client();

/// Puts `replacement` in use, or the library's own for a null pointer; returns the one before, null for the
/// library's.
ObjectClient* set_object_client(ObjectClient* replacement);

}  // namespace zmfb::sql
