#include "sql/attach.h"

#include "sql/attachments.h"
#include "sql/client.h"
#include "sql/parameter_block.h"
#include "sql/state.h"

namespace zmfb::sql {

namespace {

constexpr int bad_parameters = -901;

int attach_slot(std::string_view database, std::string_view user, std::string_view password,
                std::string_view role) {
    if (const char* reason = objection_to(database, user, password, role))
        return refuse(bad_parameters, reason);
    require_not_cancelled();
    const ParameterBlock block(user, password, role);
    client().attach_database(state().status, std::string(database).c_str(), &state().slot, block.size(),
                             block.data());
    return sqlcode();
}

// An attachment with an open transaction refuses to go and loses the transaction all the same.
void end_batch_of(isc_db_handle database) {
    ClassState& shared = state();
    if (shared.batch == isc_tr_handle() || shared.batch_database != database) return;
    client().rollback_transaction(shared.status, &shared.batch);
    shared.batch = isc_tr_handle();
}

}  // namespace

Attachment attach(std::string_view database, std::string_view user, std::string_view password,
                  std::string_view role) {
    Attachment result;
    result.slot_address = &state().slot;
    state().slot = isc_db_handle();
    result.sqlcode = attach_slot(database, user, password, role);
    if (result.sqlcode == 0) {
        result.handle = number_of(state().slot);
        add_attachment(state().slot, database);
    } else {
        result.message = sqlcode_message(result.sqlcode);
    }
    state().slot = isc_db_handle();
    return result;
}

int detach(double handle) {
    isc_db_handle database = handle_of(handle);
    end_batch_of(database);
    remove_attachment(database);
    client().detach_database(state().status, &database);
    return sqlcode();
}

}  // namespace zmfb::sql
