/// What is known of a file while it is imported.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "tool/import/belongings.h"
#include "tool/import/dbf_source.h"
#include "tool/import/plan.h"
#include "tool/import/rejects.h"
#include "tool/import/report.h"
#include "tool/import/run.h"
#include "tool/session.h"
#include "tool/transfer/manifest.h"
#include "zmfbconn/dbf/records.h"

namespace zmfb::tool {

struct FileImport {
    /// Opens the file. All that is given has to live as long. Throws Failure.
    FileImport(Session& session, const ImportOptions& options, const std::string& path, ImportedSoFar& so_far,
               ImportedFile& told);

    /// "a.dbf was not imported", or would not be.
    [[nodiscard]] std::string not_imported() const;
    [[nodiscard]] bool sets_aside() const { return options.on_bad_value == OnBadValue::set_aside; }
    /// Whether its records are added to those of a table.
    [[nodiscard]] bool is_added() const { return plan.table_exists && options.append; }
    [[nodiscard]] bool is_left_out(const dbf::Records& records) const {
        return options.skip_deleted && records.deleted();
    }
    /// Visits each record, and shows how far it has come as `doing`.
    void for_each_record(const char* doing, const std::function<void(const dbf::Records&)>& visit) const;

    Session& session;
    zmFBConn& connection;
    const ImportOptions& options;
    ImportedSoFar& so_far;
    ImportedFile& told;
    Rejects rejects;
    DbfSource source;
    ImportPlan plan;
    ImportReport report;
    const ManifestFile* exported = nullptr;  ///< what is known of the file when it was exported
    std::vector<Name> views;                 ///< those that go with the table that is there
    std::vector<std::uint64_t> aside;        ///< the numbers of the records that are set aside
    Belongings belongings;                   ///< of the table that is there
};

}  // namespace zmfb::tool
