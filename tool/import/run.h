/// One file's import.
#pragma once

#include <set>
#include <string>

#include "tool/import/plan.h"
#include "tool/import/rejects.h"
#include "tool/session.h"
#include "tool/transfer/manifest.h"

namespace zmfb::tool {

/// What becomes of a file with values that are none.
enum class OnBadValue { refuse, use_default, set_aside };

struct ImportOptions {
    bool dry_run = false;
    bool skip_deleted = false;
    bool all_records = false;
    bool decimal_comma = false;
    bool replace = false;
    bool append = false;
    bool yes = false;
    bool incomplete = false;
    std::string encoding;
    WantedNames names;
    OnBadValue on_bad_value = OnBadValue::refuse;
    std::string set_aside;             ///< the file for such records; "" for TABLE.bad.dbf
    std::optional<Manifest> manifest;  ///< of the export that the files come from
};

/// What files of one run share.
struct ImportedSoFar {
    ImportedSoFar(std::string rejects_path, Renames renames)
        : rejects(std::move(rejects_path)), unused_renames(std::move(renames)) {}
    RejectsFile rejects;
    EngineFacts engine;
    std::set<std::string> tables;  ///< names of the tables, planned or made
    Renames unused_renames;        ///< of fields that no file has had
};

/// A file as the table at the end of a run shows it.
struct ImportedFile {
    std::string file, table;
    std::uint64_t records = 0;
    std::uint64_t changes = 0;     ///< of names
    std::uint64_t bad_values = 0;  ///< refused, or replaced
    bool refused = false;
};

/// Imports a file, whole or not at all, after it was looked through; with dry_run says only what would come
/// of it. `told` is filled as far as it comes. Throws Failure.
void import_file(Session& session, const ImportOptions& options, const std::string& file,
                 ImportedSoFar& so_far, ImportedFile& told);

}  // namespace zmfb::tool
