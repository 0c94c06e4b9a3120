#include "zmfbconn/transaction.h"

#include <fmt/format.h>

#include "sql/typed/failure.h"
#include "sql/typed/statement.h"

namespace zmfb {

Transaction::Transaction(zmFBConn& connection, Access access)
    : work_(std::make_shared<typed::Work>(typed::Session::of(connection), access == Access::read_only)) {}

Transaction Transaction::batch(zmFBConn& connection) {
    return Transaction(typed::Session::of(connection)->batch());
}

Transaction::~Transaction() {
    if (work_ != nullptr && owns_) work_->give_up();
}

void Transaction::commit() { work_->commit(); }

void Transaction::roll_back() { work_->roll_back(); }

bool Transaction::active() const { return work_ != nullptr && work_->active(); }

Statement Transaction::prepare(std::string_view sql) {
    return Statement(std::make_shared<typed::Prepared>(work_, sql));
}

void set_database_encoding(zmFBConn& connection, std::string_view name) {
    const auto session = typed::Session::of(connection);
    auto encoding = typed::Encoding::named(std::string(name));
    if (encoding == nullptr)
        typed::refuse(typed::no_such_set, fmt::format("{} is no set of one byte a character", name));
    session->set_encoding(std::move(encoding));
}

}  // namespace zmfb
