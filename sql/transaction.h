/// A transaction that lives inside one call.
#pragma once

#include <array>
#include <span>

#include "sql/client.h"
#include "zmfbconn/status.h"

namespace zmfb::sql {

/// Parameter blocks of transactions.
inline constexpr std::array<char, 5> update_block = {isc_tpb_version1, isc_tpb_write, isc_tpb_read_committed,
                                                     isc_tpb_wait, isc_tpb_no_rec_version};
inline constexpr std::array<char, 4> batch_block = {isc_tpb_version1, isc_tpb_write, isc_tpb_concurrency,
                                                    isc_tpb_wait};
inline constexpr std::array<char, 4> query_block = {isc_tpb_version1, isc_tpb_read, isc_tpb_concurrency,
                                                    isc_tpb_wait};

/// Starts when made and is rolled back when it goes out of scope uncommitted, by an exception too. Each step
/// returns how its call ended.
///
/// The batch transaction that an application may have left open is not touched, nor one of its own
/// (zmfbconn/transaction.h): this one runs beside it. It then does not wait for locks, since the one that it
/// would wait for cannot end meanwhile.
class Transaction {
  public:
    Transaction(isc_db_handle database, std::span<const char> block);
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    ~Transaction() { roll_back(); }

    /// How its start ended.
    const Status& started() const { return started_; }
    Status execute(const char* statement);
    Status commit();
    /// Whatever comes of it is left aside.
    void roll_back();

    isc_db_handle* database() { return &database_; }
    isc_tr_handle* handle() { return &handle_; }

  private:
    isc_db_handle database_;
    isc_tr_handle handle_{};
    Status started_;
};

}  // namespace zmfb::sql
