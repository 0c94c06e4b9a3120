#include "sql/object_client.h"

#include <dlfcn.h>
#include <firebird/Interface.h>

#include <memory>

namespace zmfb::sql {

using namespace Firebird;

namespace {

constexpr unsigned dialect = SQL_DIALECT_V6;
constexpr ISC_STATUS no_more = 100;

ObjectClient library;
ObjectClient* current = &library;

// The functions that a library before 3.0 does not have: it has to load all the same.
template <class Function>
Function* function_of(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_DEFAULT, name));
}

IMaster* master() {
    static IMaster* const found = [] {
        auto* const get = function_of<IMaster*()>("fb_get_master_interface");
        return get == nullptr ? nullptr : get();
    }();
    return found;
}

// Makes calls, up to the first that fails, and tells what came of it.
template <class Calls>
ISC_STATUS outcome(IStatus* status, const Calls& calls) {
    ThrowStatusWrapper checked(status);
    try {
        calls(&checked);
    } catch (const FbException&) {
        return status->getErrors()[1];
    }
    return 0;
}

const unsigned char* bytes_of(const char* text) { return reinterpret_cast<const unsigned char*>(text); }

unsigned size_of(std::span<const char> bytes) { return static_cast<unsigned>(bytes.size()); }

MessageItem read_item(ThrowStatusWrapper* status, IMessageMetadata* message, unsigned index) {
    MessageItem item;
    item.type = message->getType(status, index);
    item.subtype = message->getSubType(status, index);
    item.length = message->getLength(status, index);
    item.scale = message->getScale(status, index);
    item.character_set = message->getCharSet(status, index);
    item.nullable = message->isNullable(status, index) != 0;
    item.offset = message->getOffset(status, index);
    item.null_offset = message->getNullOffset(status, index);
    if (const char* const field = message->getField(status, index)) item.field = field;
    if (const char* const alias = message->getAlias(status, index)) item.alias = alias;
    return item;
}

}  // namespace

ObjectClient& object_client() { return *current; }

ObjectClient* set_object_client(ObjectClient* replacement) {
    ObjectClient* before = current == &library ? nullptr : current;
    current = replacement != nullptr ? replacement : &library;
    return before;
}

bool ObjectClient::available() { return master() != nullptr; }

IStatus* ObjectClient::make_status() { return master()->getStatus(); }

const ISC_STATUS* ObjectClient::errors(const IStatus* status) { return status->getErrors(); }

std::string ObjectClient::sqlstate(const IStatus* status) {
    char text[6] = {};
    fb_sqlstate(text, status->getErrors());
    return text;
}

void ObjectClient::retain(IAttachment* object) { object->addRef(); }
void ObjectClient::retain(ITransaction* object) { object->addRef(); }
void ObjectClient::let_go(IAttachment* object) { object->release(); }
void ObjectClient::let_go(ITransaction* object) { object->release(); }
void ObjectClient::let_go(IStatement* object) { object->release(); }
void ObjectClient::let_go(IMessageMetadata* object) { object->release(); }
void ObjectClient::let_go(IResultSet* object) { object->release(); }
void ObjectClient::let_go(IBlob* object) { object->release(); }

ISC_STATUS ObjectClient::attach_database(IStatus* status, const char* name, IAttachment** attachment,
                                         unsigned length, const char* block) {
    return outcome(status, [&](ThrowStatusWrapper* checked) {
        *attachment = master()->getDispatcher()->attachDatabase(checked, name, length, bytes_of(block));
    });
}

ISC_STATUS ObjectClient::detach_database(IStatus* status, IAttachment* attachment) {
    return outcome(status, [&](ThrowStatusWrapper* checked) { attachment->detach(checked); });
}

ISC_STATUS ObjectClient::database_handle(ISC_STATUS* status, isc_db_handle* handle, IAttachment* attachment) {
    return function_of<decltype(fb_get_database_handle)>("fb_get_database_handle")(status, handle,
                                                                                   attachment);
}

ISC_STATUS ObjectClient::transaction_handle(ISC_STATUS* status, isc_tr_handle* handle,
                                            ITransaction* transaction) {
    return function_of<decltype(fb_get_transaction_handle)>("fb_get_transaction_handle")(status, handle,
                                                                                         transaction);
}

ISC_STATUS ObjectClient::start_transaction(IStatus* status, IAttachment* attachment,
                                           ITransaction** transaction, std::span<const char> block) {
    return outcome(status, [&](ThrowStatusWrapper* checked) {
        *transaction = attachment->startTransaction(checked, size_of(block), bytes_of(block.data()));
    });
}

ISC_STATUS ObjectClient::commit_transaction(IStatus* status, ITransaction* transaction) {
    return outcome(status, [&](ThrowStatusWrapper* checked) { transaction->commit(checked); });
}

ISC_STATUS ObjectClient::rollback_transaction(IStatus* status, ITransaction* transaction) {
    return outcome(status, [&](ThrowStatusWrapper* checked) { transaction->rollback(checked); });
}

ISC_STATUS ObjectClient::prepare(IStatus* status, IAttachment* attachment, ITransaction* transaction,
                                 IStatement** statement, std::string_view text) {
    return outcome(status, [&](ThrowStatusWrapper* checked) {
        *statement = attachment->prepare(checked, transaction, static_cast<unsigned>(text.size()),
                                         text.data(), dialect, IStatement::PREPARE_PREFETCH_METADATA);
    });
}

ISC_STATUS ObjectClient::statement_type(IStatus* status, IStatement* statement, unsigned* type) {
    return outcome(status, [&](ThrowStatusWrapper* checked) { *type = statement->getType(checked); });
}

ISC_STATUS ObjectClient::has_cursor(IStatus* status, IStatement* statement, bool* answer) {
    return outcome(status, [&](ThrowStatusWrapper* checked) {
        *answer = (statement->getFlags(checked) & IStatement::FLAG_HAS_CURSOR) != 0;
    });
}

ISC_STATUS ObjectClient::input_message(IStatus* status, IStatement* statement, IMessageMetadata** message) {
    return outcome(status,
                   [&](ThrowStatusWrapper* checked) { *message = statement->getInputMetadata(checked); });
}

ISC_STATUS ObjectClient::output_message(IStatus* status, IStatement* statement, IMessageMetadata** message) {
    return outcome(status,
                   [&](ThrowStatusWrapper* checked) { *message = statement->getOutputMetadata(checked); });
}

ISC_STATUS ObjectClient::release(IStatus* status, IStatement* statement) {
    return outcome(status, [&](ThrowStatusWrapper* checked) { statement->free(checked); });
}

ISC_STATUS ObjectClient::describe(IStatus* status, IMessageMetadata* message, std::vector<MessageItem>* items,
                                  unsigned* length) {
    return outcome(status, [&](ThrowStatusWrapper* checked) {
        const unsigned count = message->getCount(checked);
        for (unsigned i = 0; i < count; ++i) items->push_back(read_item(checked, message, i));
        *length = message->getMessageLength(checked);
    });
}

ISC_STATUS ObjectClient::change_message(IStatus* status, IMessageMetadata* message,
                                        std::span<const MessageChange> changes, IMessageMetadata** changed) {
    return outcome(status, [&](ThrowStatusWrapper* checked) {
        const auto let_go = [](IMetadataBuilder* builder) { builder->release(); };
        const std::unique_ptr<IMetadataBuilder, decltype(let_go)> builder(message->getBuilder(checked),
                                                                          let_go);
        for (const MessageChange& change : changes) {
            builder->setType(checked, change.index, change.type);
            builder->setLength(checked, change.index, change.length);
            builder->setCharSet(checked, change.index, change.character_set);
        }
        *changed = builder->getMetadata(checked);
    });
}

ISC_STATUS ObjectClient::execute(IStatus* status, IStatement* statement, ITransaction* transaction,
                                 IMessageMetadata* input, void* values, IMessageMetadata* output, void* row) {
    return outcome(status, [&](ThrowStatusWrapper* checked) {
        statement->execute(checked, transaction, input, values, output, row);
    });
}

ISC_STATUS ObjectClient::affected_records(IStatus* status, IStatement* statement, std::uint64_t* count) {
    return outcome(status,
                   [&](ThrowStatusWrapper* checked) { *count = statement->getAffectedRecords(checked); });
}

ISC_STATUS ObjectClient::open(IStatus* status, IStatement* statement, ITransaction* transaction,
                              IMessageMetadata* input, void* values, IMessageMetadata* output,
                              IResultSet** rows) {
    return outcome(status, [&](ThrowStatusWrapper* checked) {
        *rows = statement->openCursor(checked, transaction, input, values, output, 0);
    });
}

ISC_STATUS ObjectClient::fetch(IStatus* status, IResultSet* rows, void* row) {
    int result = 0;
    const ISC_STATUS code =
        outcome(status, [&](ThrowStatusWrapper* checked) { result = rows->fetchNext(checked, row); });
    return code == 0 && result == IStatus::RESULT_NO_DATA ? no_more : code;
}

ISC_STATUS ObjectClient::close(IStatus* status, IResultSet* rows) {
    return outcome(status, [&](ThrowStatusWrapper* checked) { rows->close(checked); });
}

ISC_STATUS ObjectClient::create_blob(IStatus* status, IAttachment* attachment, ITransaction* transaction,
                                     IBlob** blob, ISC_QUAD* id, std::span<const char> block) {
    return outcome(status, [&](ThrowStatusWrapper* checked) {
        *blob = attachment->createBlob(checked, transaction, id, size_of(block), bytes_of(block.data()));
    });
}

ISC_STATUS ObjectClient::open_blob(IStatus* status, IAttachment* attachment, ITransaction* transaction,
                                   IBlob** blob, ISC_QUAD* id, std::span<const char> block) {
    return outcome(status, [&](ThrowStatusWrapper* checked) {
        *blob = attachment->openBlob(checked, transaction, id, size_of(block), bytes_of(block.data()));
    });
}

ISC_STATUS ObjectClient::blob_info(IStatus* status, IBlob* blob, std::span<const char> items,
                                   std::span<char> answer) {
    return outcome(status, [&](ThrowStatusWrapper* checked) {
        blob->getInfo(checked, size_of(items), bytes_of(items.data()), size_of(answer),
                      reinterpret_cast<unsigned char*>(answer.data()));
    });
}

ISC_STATUS ObjectClient::get_segment(IStatus* status, IBlob* blob, std::span<char> bytes, unsigned* got) {
    int result = 0;
    const ISC_STATUS code = outcome(status, [&](ThrowStatusWrapper* checked) {
        result = blob->getSegment(checked, size_of(bytes), bytes.data(), got);
    });
    return code == 0 && result == IStatus::RESULT_NO_DATA ? no_more : code;
}

ISC_STATUS ObjectClient::put_segment(IStatus* status, IBlob* blob, std::string_view bytes) {
    return outcome(status, [&](ThrowStatusWrapper* checked) {
        blob->putSegment(checked, static_cast<unsigned>(bytes.size()), bytes.data());
    });
}

ISC_STATUS ObjectClient::close_blob(IStatus* status, IBlob* blob) {
    return outcome(status, [&](ThrowStatusWrapper* checked) { blob->close(checked); });
}

ISC_STATUS ObjectClient::cancel_blob(IStatus* status, IBlob* blob) {
    return outcome(status, [&](ThrowStatusWrapper* checked) { blob->cancel(checked); });
}

}  // namespace zmfb::sql
