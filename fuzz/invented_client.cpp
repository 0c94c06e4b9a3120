#include "fuzz/invented_client.h"

#include <firebird/Interface.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <type_traits>
#include <utility>

#include "fuzz/fuzz.h"
#include "sql/new_types.h"

namespace zmfb::fuzz {

using namespace Firebird;

namespace {

constexpr ISC_STATUS no_more = 100;
constexpr std::uintptr_t database_number = 3, batch_number = 4, transaction_number = 5;

int referred = 0;

// All that is handed out is one of these. Nothing but the count of references is asked of it directly: the
// rest goes through the functions of the client.
class Object : public IReferenceCountedImpl<Object, ThrowStatusWrapper> {
  public:
    Object() { ++referred; }
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;
    ~Object() override { --referred; }
    void addRef() override { ++references_; }
    int release() override {
        require(references_ > 0, "nothing is given back twice");
        if (--references_ > 0) return 1;
        delete this;
        return 0;
    }

  private:
    int references_ = 1;
};

struct Statement final : Object {
    InventedStatement is;
};
struct Metadata final : Object {
    explicit Metadata(InventedMessage message) : is(std::move(message)) {}
    InventedMessage is;
};
struct ResultSet final : Object {
    ResultSet(InventedStatement& statement, IMessageMetadata* metadata) : of(statement), layout(metadata) {}
    InventedStatement& of;
    IMessageMetadata* layout;
};
struct Blob final : Object {
    explicit Blob(std::string bytes) : content(std::move(bytes)) {}
    std::string content;
    std::size_t read = 0;
};

template <class Interface>
Interface* handed_out(Object* made) {
    return reinterpret_cast<Interface*>(static_cast<IReferenceCounted*>(made));
}
template <class Made, class Interface>
Made& behind(Interface* object) {
    return static_cast<Made&>(static_cast<Object&>(*reinterpret_cast<IReferenceCounted*>(object)));
}

// Handles are numbers or pointers, as the client's header has them.
template <class Handle>
Handle handle_of(std::uintptr_t number) {
    if constexpr (std::is_pointer_v<Handle>) {
        return reinterpret_cast<Handle>(number);
    } else {
        return static_cast<Handle>(number);
    }
}

// Nothing but NULL: so a statement without a cursor says that it has no row.
void clear_row(const InventedMessage& message, void* row) {
    constexpr std::int16_t null = -1;
    std::memset(row, 0, message.length());
    for (const sql::MessageItem& item : message.items())
        std::memcpy(static_cast<std::byte*>(row) + item.null_offset, &null, sizeof null);
}

std::span<std::byte> row_of(const InventedMessage& message, void* row) {
    return {static_cast<std::byte*>(row), message.length()};
}

}  // namespace

InventedClient::InventedClient()
    : before_(sql::set_client(this)), objects_before_(sql::set_object_client(this)) {}

InventedClient::~InventedClient() {
    sql::set_client(before_);
    sql::set_object_client(objects_before_);
}

int InventedClient::referred_to() { return referred; }

ISC_STATUS InventedClient::answer(ISC_STATUS* status, std::string_view call) {
    status[0] = isc_arg_gds;
    status[1] = failure(call);
    status[2] = isc_arg_end;
    return status[1];
}

ISC_STATUS InventedClient::answer(IStatus* status, std::string_view call) {
    ISC_STATUS errors[3] = {};
    const ISC_STATUS code = answer(errors, call);
    if (code != 0) status->setErrors(errors);
    return code;
}

void InventedClient::prefix_lock(char* path, const char* file) { std::strcpy(path, file); }

ISC_STATUS InventedClient::attach_database(IStatus* status, const char*, IAttachment** attachment, unsigned,
                                           const char*) {
    const ISC_STATUS code = answer(status, "attach");
    if (code == 0) *attachment = handed_out<IAttachment>(new Object);
    return code;
}

ISC_STATUS InventedClient::detach_database(IStatus* status, IAttachment* attachment) {
    const ISC_STATUS code = answer(status, "detach");
    if (code == 0) let_go(attachment);
    return code;
}

ISC_STATUS InventedClient::database_handle(ISC_STATUS* status, isc_db_handle* handle,
                                           IAttachment* attachment) {
    const ISC_STATUS code = answer(status, "database_handle");
    if (code != 0) return code;
    *handle = handle_of<isc_db_handle>(database_number);
    attached_ = attachment;
    return 0;
}

// By handle it always goes: what a program cannot give back is not to be told from what it forgot.
ISC_STATUS InventedClient::detach_database(ISC_STATUS* status, isc_db_handle* database) {
    if (*database == handle_of<isc_db_handle>(database_number) && attached_ != nullptr)
        let_go(std::exchange(attached_, nullptr));
    *database = isc_db_handle();
    status[0] = isc_arg_gds;
    status[1] = 0;
    status[2] = isc_arg_end;
    return 0;
}

// As engines of before Firebird 4 answer: they have no types that came with it.
ISC_STATUS InventedClient::database_info(ISC_STATUS* status, isc_db_handle*, short, const char* items,
                                         short answer_size, char* answer_text) {
    constexpr std::size_t number_at = 3;
    std::memset(answer_text, 0, static_cast<std::size_t>(answer_size));
    answer_text[0] = items[0];
    answer_text[number_at] = sql::structure_of_3;
    return answer(status, "database_info");
}

ISC_STATUS InventedClient::start_transaction(ISC_STATUS* status, isc_tr_handle* transaction, isc_db_handle*,
                                             unsigned short, const char*) {
    const ISC_STATUS code = answer(status, "start");
    if (code != 0) return code;
    *transaction = handle_of<isc_tr_handle>(transaction_number);
    ++open_transactions_;
    return 0;
}

// A rollback by handle always goes: there is no other way to end one.
ISC_STATUS InventedClient::end(ISC_STATUS* status, isc_tr_handle* transaction, std::string_view how) {
    const bool is_batch = *transaction == handle_of<isc_tr_handle>(batch_number);
    const bool is_open = *transaction != isc_tr_handle();
    if (const ISC_STATUS code = answer(status, how); code != 0 && how == "commit") return code;
    status[1] = 0;
    *transaction = isc_tr_handle();
    if (is_batch) {
        transaction_is(how);
        let_go(std::exchange(batch_, nullptr));
    } else if (is_open) {
        --open_transactions_;
    }
    return 0;
}

ISC_STATUS InventedClient::commit_transaction(ISC_STATUS* status, isc_tr_handle* transaction) {
    return end(status, transaction, "commit");
}

ISC_STATUS InventedClient::rollback_transaction(ISC_STATUS* status, isc_tr_handle* transaction) {
    return end(status, transaction, "rollback");
}

ISC_STATUS InventedClient::prepare(ISC_STATUS* status, isc_db_handle*, isc_tr_handle*, const char*,
                                   const char*, XSQLDA*) {
    status[0] = isc_arg_gds;
    status[1] = isc_dsql_relation_err;
    status[2] = isc_arg_end;
    return status[1];
}

ISC_STATUS InventedClient::execute_immediate(ISC_STATUS* status, isc_db_handle*, isc_tr_handle*,
                                             const char*) {
    return answer(status, "execute_immediate");
}

ISC_STATUS InventedClient::transaction_handle(ISC_STATUS* status, isc_tr_handle* handle,
                                              ITransaction* transaction) {
    const ISC_STATUS code = answer(status, "transaction_handle");
    if (code != 0) return code;
    *handle = handle_of<isc_tr_handle>(batch_number);
    batch_ = transaction;
    return 0;
}

ISC_STATUS InventedClient::start_transaction(IStatus* status, IAttachment*, ITransaction** transaction,
                                             std::span<const char>) {
    const ISC_STATUS code = answer(status, "start");
    if (code != 0) return code;
    *transaction = handed_out<ITransaction>(new Object);
    transaction_is("begin");
    return 0;
}

ISC_STATUS InventedClient::end(IStatus* status, ITransaction* transaction, std::string_view how) {
    const ISC_STATUS code = answer(status, how);
    if (code != 0) return code;
    transaction_is(how);
    if (transaction == batch_) batch_ = nullptr;
    let_go(transaction);
    return 0;
}

ISC_STATUS InventedClient::commit_transaction(IStatus* status, ITransaction* transaction) {
    return end(status, transaction, "commit");
}

ISC_STATUS InventedClient::rollback_transaction(IStatus* status, ITransaction* transaction) {
    return end(status, transaction, "rollback");
}

ISC_STATUS InventedClient::prepare(IStatus* status, IAttachment*, ITransaction* transaction,
                                   IStatement** statement, std::string_view text) {
    auto made = std::make_unique<Statement>();
    made->is.text = text;
    made->is.in_batch = transaction == batch_;
    describe_statement(made->is);
    const ISC_STATUS code = answer(status, "prepare");
    if (code == 0) *statement = handed_out<IStatement>(made.release());
    return code;
}

ISC_STATUS InventedClient::statement_type(IStatus* status, IStatement* statement, unsigned* type) {
    *type = behind<Statement>(statement).is.type;
    return answer(status, "statement_type");
}

ISC_STATUS InventedClient::has_cursor(IStatus* status, IStatement* statement, bool* result) {
    *result = behind<Statement>(statement).is.has_cursor;
    return answer(status, "has_cursor");
}

ISC_STATUS InventedClient::input_message(IStatus* status, IStatement* statement, IMessageMetadata** message) {
    const ISC_STATUS code = answer(status, "input_message");
    if (code == 0)
        *message = handed_out<IMessageMetadata>(new Metadata(behind<Statement>(statement).is.input));
    return code;
}

ISC_STATUS InventedClient::output_message(IStatus* status, IStatement* statement,
                                          IMessageMetadata** message) {
    const ISC_STATUS code = answer(status, "output_message");
    if (code == 0)
        *message = handed_out<IMessageMetadata>(new Metadata(behind<Statement>(statement).is.output));
    return code;
}

ISC_STATUS InventedClient::release(IStatus* status, IStatement* statement) {
    const ISC_STATUS code = answer(status, "release");
    if (code == 0) let_go(statement);
    return code;
}

ISC_STATUS InventedClient::describe(IStatus* status, IMessageMetadata* message,
                                    std::vector<sql::MessageItem>* items, unsigned* length) {
    const InventedMessage& described = behind<Metadata>(message).is;
    *items = described.items();
    *length = described.length();
    return answer(status, "describe");
}

ISC_STATUS InventedClient::change_message(IStatus* status, IMessageMetadata* message,
                                          std::span<const sql::MessageChange> changes,
                                          IMessageMetadata** changed) {
    const ISC_STATUS code = answer(status, "change_message");
    if (code != 0) return code;
    auto* const made = new Metadata(behind<Metadata>(message).is);
    made->is.change(changes);
    *changed = handed_out<IMessageMetadata>(made);
    return 0;
}

ISC_STATUS InventedClient::put_row(IStatus* status, InventedStatement& statement, IMessageMetadata* output,
                                   void* row) {
    const ISC_STATUS code = answer(status, "fetch");
    if (code != 0) return code;
    const InventedMessage& layout = behind<Metadata>(output).is;
    clear_row(layout, row);
    ++statement.rows;
    return fill_row(statement, layout, row_of(layout, row)) ? 0 : no_more;
}

ISC_STATUS InventedClient::execute(IStatus* status, IStatement* statement, ITransaction*,
                                   IMessageMetadata* input, void* values, IMessageMetadata* output,
                                   void* row) {
    InventedStatement& run = behind<Statement>(statement).is;
    run.rows = 0;
    const InventedMessage& sent = behind<Metadata>(input).is;
    ran(sent, row_of(sent, values));
    if (const ISC_STATUS code = answer(status, "execute"); code != 0 || output == nullptr) return code;
    const ISC_STATUS code = put_row(status, run, output, row);
    return code == no_more ? 0 : code;
}

ISC_STATUS InventedClient::affected_records(IStatus* status, IStatement* statement, std::uint64_t* count) {
    *count = behind<Statement>(statement).is.text.size() % 7;
    return answer(status, "affected_records");
}

ISC_STATUS InventedClient::open(IStatus* status, IStatement* statement, ITransaction*,
                                IMessageMetadata* input, void* values, IMessageMetadata* output,
                                IResultSet** rows) {
    InventedStatement& run = behind<Statement>(statement).is;
    run.rows = 0;
    const InventedMessage& sent = behind<Metadata>(input).is;
    ran(sent, row_of(sent, values));
    const ISC_STATUS code = answer(status, "open");
    if (code == 0) *rows = handed_out<IResultSet>(new ResultSet(run, output));
    return code;
}

ISC_STATUS InventedClient::fetch(IStatus* status, IResultSet* rows, void* row) {
    ResultSet& set = behind<ResultSet>(rows);
    return put_row(status, set.of, set.layout, row);
}

ISC_STATUS InventedClient::close(IStatus* status, IResultSet* rows) {
    const ISC_STATUS code = answer(status, "close");
    if (code == 0) let_go(rows);
    return code;
}

ISC_STATUS InventedClient::create_blob(IStatus* status, IAttachment*, ITransaction*, IBlob** blob,
                                       ISC_QUAD* id, std::span<const char>) {
    const ISC_STATUS code = answer(status, "create_blob");
    if (code != 0) return code;
    *blob = handed_out<IBlob>(new Blob(""));
    *id = {.gds_quad_high = 1, .gds_quad_low = 2};
    return 0;
}

ISC_STATUS InventedClient::open_blob(IStatus* status, IAttachment*, ITransaction*, IBlob** blob, ISC_QUAD* id,
                                     std::span<const char>) {
    const ISC_STATUS code = answer(status, "open_blob");
    if (code == 0) *blob = handed_out<IBlob>(new Blob(content_of(*id)));
    return code;
}

// The item, the size of the number in two bytes, and the number, low bytes first.
ISC_STATUS InventedClient::blob_info(IStatus* status, IBlob* blob, std::span<const char> items,
                                     std::span<char> answered) {
    const std::size_t length = behind<Blob>(blob).content.size();
    constexpr std::size_t size = 4, head = 3;
    require(answered.size() >= head + size, "there is room for a length");
    answered[0] = items[0];
    answered[1] = size;
    for (std::size_t i = 0; i < size; ++i) answered[head + i] = static_cast<char>(length >> (8 * i));
    return answer(status, "blob_info");
}

ISC_STATUS InventedClient::get_segment(IStatus* status, IBlob* blob, std::span<char> bytes, unsigned* got) {
    if (const ISC_STATUS code = answer(status, "get_segment"); code != 0) return code;
    Blob& is = behind<Blob>(blob);
    if (is.read == is.content.size()) return no_more;
    const std::size_t most = std::min(bytes.size(), segment_size());
    const std::string_view piece = std::string_view(is.content).substr(is.read, most);
    std::ranges::copy(piece, bytes.begin());
    is.read += piece.size();
    *got = static_cast<unsigned>(piece.size());
    return 0;
}

ISC_STATUS InventedClient::put_segment(IStatus* status, IBlob* blob, std::string_view bytes) {
    behind<Blob>(blob).content += bytes;
    return answer(status, "put_segment");
}

ISC_STATUS InventedClient::close_blob(IStatus* status, IBlob* blob) {
    const ISC_STATUS code = answer(status, "close_blob");
    if (code == 0) let_go(blob);
    return code;
}

ISC_STATUS InventedClient::cancel_blob(IStatus* status, IBlob* blob) {
    const ISC_STATUS code = answer(status, "cancel_blob");
    if (code == 0) let_go(blob);
    return code;
}

}  // namespace zmfb::fuzz
