// The plainest loop over the client's object interface: rows are fetched into one message and read where they
// lie.
#include <firebird/Interface.h>

#include <memory>
#include <vector>

#include "bench/sql/commands.h"

namespace zmfb::bench {

namespace {

using namespace Firebird;

// Where the numbers stand that tell whether all rows have come.
constexpr unsigned id_column = 0;
constexpr unsigned credit_column = 3;

// What the interface hands out, given back when it goes.
template <class T>
struct LetGo {
    void operator()(T* object) const { object->release(); }
};
template <class T>
using Held = std::unique_ptr<T, LetGo<T>>;

IMaster* master() { return fb_get_master_interface(); }

class ObjectSession {
  public:
    ObjectSession(ThrowStatusWrapper& status, const std::string& database) {
        const std::string block = attachment_block();
        const Held<IProvider> provider(master()->getDispatcher());
        attachment_.reset(provider->attachDatabase(&status, database.c_str(),
                                                   static_cast<unsigned>(block.size()),
                                                   reinterpret_cast<const unsigned char*>(block.data())));
        transaction_.reset(
            attachment_->startTransaction(&status, static_cast<unsigned>(read_block.size()),
                                          reinterpret_cast<const unsigned char*>(read_block.data())));
    }
    Held<IStatement> prepare(ThrowStatusWrapper& status, const std::string& sql) {
        return Held<IStatement>(attachment_->prepare(&status, transaction_.get(), 0, sql.c_str(),
                                                     SQL_DIALECT_V6, IStatement::PREPARE_PREFETCH_METADATA));
    }
    Held<IResultSet> open(ThrowStatusWrapper& status, IStatement& statement) {
        return Held<IResultSet>(
            statement.openCursor(&status, transaction_.get(), nullptr, nullptr, nullptr, 0));
    }

  private:
    Held<IAttachment> attachment_;
    Held<ITransaction> transaction_;
};

// The columns of a message as the other loop has them, so that both read values alike.
std::vector<XSQLVAR> columns_of(ThrowStatusWrapper& status, IMessageMetadata& message, unsigned char* row) {
    std::vector<XSQLVAR> columns(message.getCount(&status));
    for (unsigned i = 0; i < columns.size(); ++i) {
        columns[i].sqltype = static_cast<ISC_SHORT>(message.getType(&status, i) | 1U);
        columns[i].sqllen = static_cast<ISC_SHORT>(message.getLength(&status, i));
        columns[i].sqldata = reinterpret_cast<ISC_SCHAR*>(row + message.getOffset(&status, i));
        columns[i].sqlind = reinterpret_cast<ISC_SHORT*>(row + message.getNullOffset(&status, i));
    }
    return columns;
}

json select_object(Worker& worker, const json& request) {
    const std::string sql = request.at("sql");
    ThrowStatusWrapper status(master()->getStatus());
    ObjectSession session(status, worker.database);
    std::uint64_t rows = 0, touched = 0;
    std::int64_t ids = 0, credits = 0;
    const double before = processor_seconds();
    const double seconds = seconds_of([&] {
        const Held<IStatement> statement = session.prepare(status, sql);
        const Held<IMessageMetadata> message(statement->getOutputMetadata(&status));
        std::vector<unsigned char> row(message->getMessageLength(&status));
        const std::vector<XSQLVAR> columns = columns_of(status, *message, row.data());
        const Held<IResultSet> cursor = session.open(status, *statement);
        while (cursor->fetchNext(&status, row.data()) == IStatus::RESULT_OK) {
            ++rows;
            touched += touch(columns);
            ids += value_at<std::int32_t>(columns[id_column]);
            if (!is_null(columns[credit_column])) credits += value_at<std::int32_t>(columns[credit_column]);
        }
    });
    const double processor = processor_seconds() - before;
    status.dispose();
    return {{"seconds", seconds}, {"processor", processor}, {"rows", rows},
            {"id", ids},          {"credit", credits},      {"touched", touched}};
}

constexpr Command commands[] = {
    {.name = "select.object", .run = select_object},
};

}  // namespace

std::span<const Command> object_commands() { return commands; }

}  // namespace zmfb::bench
