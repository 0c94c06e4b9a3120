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
    ~Witness() override;

    [[nodiscard]] const Moment& moment() const { return moment_; }
    /// Rows fetched in each transaction asked for.
    [[nodiscard]] const std::vector<int>& rows_by_transaction() const { return rows_; }
    /// All calls asked for whose outcome is reported.
    [[nodiscard]] int calls() const;

    /// Statements prepared and not released, blobs opened and not closed, databases attached and not
    /// detached. A call made to fail counts as if it had been made where it gives back.
    [[nodiscard]] int prepared() const { return prepared_; }
    [[nodiscard]] int blobs() const { return blobs_; }
    [[nodiscard]] int attachments() const { return attachments_; }

    ISC_STATUS attach_database(ISC_STATUS* status, const char* name, isc_db_handle* database, short length,
                               const char* block) override;
    ISC_STATUS create_database(ISC_STATUS* status, const char* name, isc_db_handle* database, short length,
                               const char* block) override;
    ISC_STATUS detach_database(ISC_STATUS* status, isc_db_handle* database) override;
    ISC_STATUS start_transaction(ISC_STATUS* status, isc_tr_handle* transaction, isc_db_handle* database,
                                 unsigned short length, const char* block) override;
    ISC_STATUS commit_transaction(ISC_STATUS* status, isc_tr_handle* transaction) override;
    ISC_STATUS rollback_transaction(ISC_STATUS* status, isc_tr_handle* transaction) override;
    ISC_STATUS prepare(ISC_STATUS* status, isc_db_handle* database, isc_tr_handle* transaction,
                       const char* statement, const char* text, XSQLDA* output) override;
    ISC_STATUS describe(ISC_STATUS* status, const char* statement, XSQLDA* output) override;
    ISC_STATUS declare(ISC_STATUS* status, const char* statement, const char* cursor) override;
    ISC_STATUS open(ISC_STATUS* status, isc_tr_handle* transaction, const char* cursor) override;
    ISC_STATUS fetch(ISC_STATUS* status, const char* cursor, XSQLDA* output) override;
    ISC_STATUS close(ISC_STATUS* status, const char* cursor) override;
    ISC_STATUS release(ISC_STATUS* status, const char* statement) override;
    ISC_STATUS execute_immediate(ISC_STATUS* status, isc_db_handle* database, isc_tr_handle* transaction,
                                 const char* text) override;
    ISC_STATUS open_blob(ISC_STATUS* status, isc_db_handle* database, isc_tr_handle* transaction,
                         isc_blob_handle* blob, ISC_QUAD* id) override;
    ISC_STATUS blob_info(ISC_STATUS* status, isc_blob_handle* blob, short item_size, const char* items,
                         short answer_size, char* answer) override;
    ISC_STATUS get_segment(ISC_STATUS* status, isc_blob_handle* blob, unsigned short* got,
                           unsigned short size, char* bytes) override;
    ISC_STATUS close_blob(ISC_STATUS* status, isc_blob_handle* blob) override;

  private:
    /// Notes the moment when `outcome` is that of the failure asked for; returns `outcome`.
    ISC_STATUS note(ISC_STATUS outcome);
    ISC_STATUS note_blob(ISC_STATUS outcome);
    [[nodiscard]] bool made(ISC_STATUS outcome) const { return outcome == 0; }

    Moment now_;
    Moment moment_;
    std::vector<int> rows_;
    int prepared_ = 0;
    int blobs_ = 0;
    int attachments_ = 0;
    std::vector<isc_db_handle> not_detached_;
};

}  // namespace zmfb::test
