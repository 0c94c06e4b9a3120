/// A client that makes single calls fail and tells at which point of a query or statement that was.
#pragma once

#include <string>
#include <vector>

#include "tests/support/faulty_client.h"

namespace zmfb::test {

/// Where a transaction stood when a call of it failed.
struct Moment {
    bool happened = false;
    int transaction = 0;     ///< how many transactions had been asked for by then
    bool described = false;  ///< the columns of the query were known
    int rows = 0;            ///< rows of the query that had come
};

/// Counts what is taken and given back, besides what FaultyClient counts.
///
/// A rollback that is to fail is made all the same and then said to have failed: one that is never made would
/// leave a transaction behind that nobody could end.
class Witness : public FaultyClient {
  public:
    Witness() { rows_.reserve(room_for_notes); }
    ~Witness() override;

    [[nodiscard]] const Moment& moment() const { return moment_; }
    /// Rows fetched in each transaction asked for.
    [[nodiscard]] const std::vector<int>& rows_by_transaction() const { return rows_; }
    /// All calls asked for whose outcome is reported.
    [[nodiscard]] int calls() const;

    /// Statements prepared and not released, databases attached and not detached. A call made to fail counts
    /// as if it had been made where it gives back.
    [[nodiscard]] int prepared() const { return prepared_; }
    [[nodiscard]] int attachments() const { return attachments_; }

    ISC_STATUS detach_database(ISC_STATUS* status, isc_db_handle* database) override;
    ISC_STATUS rollback_transaction(ISC_STATUS* status, isc_tr_handle* transaction) override;

  protected:
    void asked(ClientCall call) override;
    void answered(ClientCall call, ISC_STATUS outcome) override;

  private:
    Moment now_;
    Moment moment_;
    std::vector<int> rows_;
    int prepared_ = 0;
    int attachments_ = 0;
    std::vector<isc_db_handle> not_detached_;
};

}  // namespace zmfb::test
