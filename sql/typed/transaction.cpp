#include "zmfbconn/transaction.h"

#include <fmt/format.h>

#include "sql/typed/failure.h"
#include "sql/typed/statement.h"

namespace zmfb {

Transaction::Transaction(zmFBConn& connection, Access access, Isolation isolation)
    : work_(std::make_shared<typed::Work>(typed::Session::of(connection), access, isolation)) {}

Transaction Transaction::batch(zmFBConn& connection) {
    return Transaction(typed::Session::of(connection)->batch());
}

Transaction::~Transaction() {
    if (work_ != nullptr && owns_) work_->give_up();
}

const std::shared_ptr<typed::Work>& Transaction::work() const {
    if (work_ == nullptr) typed::refuse(typed::ended, "The transaction was moved elsewhere");
    return work_;
}

void Transaction::commit() { work()->commit(); }

void Transaction::roll_back() { work()->roll_back(); }

bool Transaction::active() const { return work_ != nullptr && work_->active(); }

Statement Transaction::prepare(std::string_view sql, TextForm form) {
    return Statement(std::make_shared<typed::Prepared>(work(), sql, form));
}

void set_database_encoding(zmFBConn& connection, std::string_view name) {
    const auto session = typed::Session::of(connection);
    if (session->encoding().name() == name) return;
    auto encoding = typed::Encoding::named(std::string(name));
    if (encoding == nullptr)
        typed::refuse(typed::no_such_set, fmt::format("{} is no set of one byte a character", name));
    session->set_encoding(std::move(encoding));
}

}  // namespace zmfb
