#include "bench/support/stand_in_client.h"

#include <algorithm>

namespace zmfb::bench {

ISC_STATUS Recorder::start_transaction(ISC_STATUS* status, isc_tr_handle* transaction,
                                       isc_db_handle* database, unsigned short length, const char* block) {
    block_.assign(block, length);
    return Client::start_transaction(status, transaction, database, length, block);
}

ISC_STATUS Recorder::prepare(ISC_STATUS* status, isc_db_handle* database, isc_tr_handle* transaction,
                             const char* statement, const char* text, XSQLDA* output) {
    sent_.push_back({.text = text, .block = block_, .is_query = true});
    return Client::prepare(status, database, transaction, statement, text, output);
}

ISC_STATUS Recorder::execute_immediate(ISC_STATUS* status, isc_db_handle* database,
                                       isc_tr_handle* transaction, const char* text) {
    sent_.push_back({.text = text, .block = block_, .is_query = false});
    return Client::execute_immediate(status, database, transaction, text);
}

std::uint64_t replay(BareSession& session, const std::vector<Sent>& sent) {
    std::uint64_t touched = 0;
    for (const Sent& one : sent) {
        if (one.is_query) {
            session.query(one.text, one.block, [&](std::span<const XSQLVAR> row) { touched += touch(row); });
        } else {
            session.execute(one.text, one.block);
        }
    }
    return touched;
}

ISC_STATUS Holdback::execute_immediate(ISC_STATUS* status, isc_db_handle* database,
                                       isc_tr_handle* transaction, const char* text) {
    if (!is_kept_back_(text)) return Client::execute_immediate(status, database, transaction, text);
    kept_back_.emplace_back(text);
    std::fill_n(status, ISC_STATUS_LENGTH, ISC_STATUS{});
    status[0] = isc_arg_gds;
    return 0;
}

}  // namespace zmfb::bench
