#include "sql/transaction.h"

#include <algorithm>
#include <vector>

#include "sql/attachments.h"
#include "sql/sessions.h"
#include "sql/state.h"

namespace zmfb::sql {

namespace {

Status start(isc_db_handle* database, isc_tr_handle* transaction, std::span<const char> block) {
    if (Status admitted = admit(*database); !admitted.ok()) return admitted;
    std::vector<char> unwaiting;
    if (is_writing()) {
        unwaiting.assign(block.begin(), block.end());
        std::replace(unwaiting.begin(), unwaiting.end(), char{isc_tpb_wait}, char{isc_tpb_nowait});
        block = unwaiting;
    }
    client().start_transaction(state().status, transaction, database,
                               static_cast<unsigned short>(block.size()), block.data());
    return outcome();
}

}  // namespace

Transaction::Transaction(isc_db_handle database, std::span<const char> block)
    : database_(database), started_(start(&database_, &handle_, block)) {}

Status Transaction::execute(const char* statement) {
    client().execute_immediate(state().status, &database_, &handle_, statement);
    return outcome();
}

Status Transaction::commit() {
    client().commit_transaction(state().status, &handle_);
    return outcome();
}

void Transaction::roll_back() {
    if (handle_ == isc_tr_handle()) return;
    client().rollback_transaction(state().status, &handle_);
    handle_ = isc_tr_handle();
}

}  // namespace zmfb::sql
